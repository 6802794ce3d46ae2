#include "LineAppender.h"

#include "device/LocalFile.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>

#ifdef Q_OS_UNIX
#include <cerrno>
#include <csignal>
#include <cstring>
#include <fcntl.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>
#endif

namespace LineAppender {

namespace {

Result failed(bool endsMidLine, const QString &error)
{
    return Result{false, endsMidLine, error};
}

QString cannotOpen(const QString &path, const QString &why)
{
    return QStringLiteral("Cannot open %1 for appending: %2").arg(path, why);
}

} // namespace

#ifdef Q_OS_UNIX

namespace {

// A process over its file size limit is killed by SIGXFSZ unless the signal is ignored; a
// library that writes files must see EFBIG instead. A handler the program installed is kept.
void ignoreFileSizeSignal()
{
    static const bool ignored = [] {
        struct sigaction current {};
        if (::sigaction(SIGXFSZ, nullptr, &current) == 0 && current.sa_handler == SIG_DFL)
            ::signal(SIGXFSZ, SIG_IGN);
        return true;
    }();
    Q_UNUSED(ignored);
}

QString openFailure(const QString &path, int error)
{
    // With O_CREAT the file itself may be missing; only its folder cannot be.
    if (error == ENOENT)
        return cannotOpen(path, QStringLiteral("the folder %1 does not exist")
                                    .arg(QDir::toNativeSeparators(QFileInfo(path).absolutePath())));
    return cannotOpen(path, QString::fromLocal8Bit(std::strerror(error)));
}

QString writeFailure(const QString &path, int error)
{
    const QString system = QString::fromLocal8Bit(std::strerror(error));
    if (error == ENOSPC || error == EDQUOT)
        return QStringLiteral("Cannot write %1: the disk is full (%2)").arg(path, system);
    if (error == EFBIG)
        return QStringLiteral("Cannot write %1: it has reached the file size limit of this process (%2)").arg(path, system);
    return QStringLiteral("Cannot write %1: %2").arg(path, system);
}

// A write that stopped short sets no errno: a file at the size limit is the one cause we can
// tell apart, anything else is a full disk.
int shortWriteCause(int fd)
{
    struct stat info {};
    struct rlimit limit {};
    if (::fstat(fd, &info) == 0 && ::getrlimit(RLIMIT_FSIZE, &limit) == 0 && limit.rlim_cur != RLIM_INFINITY
        && rlim_t(info.st_size) >= limit.rlim_cur)
        return EFBIG;
    return ENOSPC;
}

int openForAppend(const QByteArray &name)
{
    // O_NONBLOCK: should a FIFO take the file's place after the check, the open still returns.
    // Read access lets us look at the last byte; a file we may only write to is still written.
    const int flags = O_APPEND | O_CREAT | O_NONBLOCK | O_CLOEXEC;
    const int fd = ::open(name.constData(), O_RDWR | flags, 0666);
    if (fd >= 0 || errno != EACCES)
        return fd;
    return ::open(name.constData(), O_WRONLY | flags, 0666);
}

// Whether the file ends inside a line; \a fallback when its last byte cannot be read.
bool endsMidLine(int fd, const struct stat &info, bool fallback)
{
    if (info.st_size == 0)
        return false;
    char last = 0;
    return ::pread(fd, &last, 1, info.st_size - 1) == 1 ? last != '\n' : fallback;
}

} // namespace

Result append(const QString &path, const QByteArray &line, bool endedMidLine)
{
    ignoreFileSizeSignal();
    if (const QString what = LocalFile::notRegular(path); !what.isEmpty())
        return failed(endedMidLine, QStringLiteral("Cannot write %1: it is %2").arg(path, what));

    const int fd = openForAppend(QFile::encodeName(path));
    if (fd < 0)
        return failed(endedMidLine, openFailure(path, errno));
    struct stat info {};
    if (::fstat(fd, &info) != 0 || !S_ISREG(info.st_mode)) {
        ::close(fd);
        return failed(endedMidLine, QStringLiteral("Cannot write %1: it is not a regular file").arg(path));
    }

    const bool cut = endsMidLine(fd, info, endedMidLine);
    const QByteArray bytes = cut ? '\n' + line : line;
    ssize_t n = 0;
    do
        n = ::write(fd, bytes.constData(), size_t(bytes.size()));
    while (n < 0 && errno == EINTR);
    int error = n < 0 ? errno : 0;
    if (n >= 0 && n < bytes.size())
        error = shortWriteCause(fd);
    if (::close(fd) != 0 && !error && errno != EINTR)
        error = errno;
    if (error)
        return failed(n > 0 ? bytes.at(n - 1) != '\n' : cut, writeFailure(path, error));
    return Result{true, false, QString()};
}

#else

Result append(const QString &path, const QByteArray &line, bool endedMidLine)
{
    if (const QString what = LocalFile::notRegular(path); !what.isEmpty())
        return failed(endedMidLine, QStringLiteral("Cannot write %1: it is %2").arg(path, what));
    QFile file(path);
    if (!file.open(QIODevice::ReadWrite | QIODevice::Append | QIODevice::Unbuffered))
        return failed(endedMidLine, cannotOpen(path, file.errorString()));
    bool cut = endedMidLine;
    if (file.size() == 0)
        cut = false;
    else if (file.seek(file.size() - 1))
        cut = file.read(1) != "\n";
    const QByteArray bytes = cut ? '\n' + line : line;
    const qint64 n = file.write(bytes);
    if (n != bytes.size())
        return failed(n > 0 ? bytes.at(n - 1) != '\n' : cut,
                      QStringLiteral("Cannot write %1: %2").arg(path, file.errorString()));
    return Result{true, false, QString()};
}

#endif

} // namespace LineAppender
