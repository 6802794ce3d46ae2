#include "LocalFile.h"

#include <QFile>
#include <QFileInfo>

#ifdef Q_OS_UNIX
#include <sys/stat.h>
#endif

namespace LocalFile {

namespace {

QString danglingLink(const QString &path)
{
    return QStringLiteral("a symbolic link to %1, which does not exist").arg(QFileInfo(path).symLinkTarget());
}

QString notRegularBecause(const QString &kind)
{
    return QStringLiteral("%1, not a regular file").arg(kind);
}

} // namespace

#ifdef Q_OS_UNIX

QString notRegular(const QString &path)
{
    const QByteArray name = QFile::encodeName(path);
    struct stat link {};
    if (::lstat(name.constData(), &link) != 0)
        return QString(); // nothing there, or out of reach: opening it will say which
    struct stat target {};
    if (::stat(name.constData(), &target) != 0)
        return S_ISLNK(link.st_mode) ? danglingLink(path) : QString();
    const mode_t mode = target.st_mode;
    if (S_ISREG(mode))
        return QString();
    if (S_ISDIR(mode))
        return notRegularBecause(QStringLiteral("a directory"));
    if (S_ISFIFO(mode))
        return notRegularBecause(QStringLiteral("a FIFO (named pipe)"));
    if (S_ISCHR(mode))
        return notRegularBecause(QStringLiteral("a character device"));
    if (S_ISBLK(mode))
        return notRegularBecause(QStringLiteral("a block device"));
    if (S_ISSOCK(mode))
        return notRegularBecause(QStringLiteral("a socket"));
    return notRegularBecause(QStringLiteral("a special file"));
}

#else

QString notRegular(const QString &path)
{
    const QFileInfo info(path);
    if (info.isSymLink() && !info.exists())
        return danglingLink(path);
    if (!info.exists() || info.isFile())
        return QString();
    return notRegularBecause(info.isDir() ? QStringLiteral("a directory") : QStringLiteral("a special file"));
}

#endif

} // namespace LocalFile
