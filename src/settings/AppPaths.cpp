#include "AppPaths.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QStandardPaths>

#include <filesystem>
#include <system_error>

#ifdef Q_OS_WIN
#include "windows/ModuleFolder.h"
#endif

namespace {

// Creates \a folder and its parents; false, with the system's reason, when that fails.
bool makeFolder(const QString &folder, QString *error)
{
    std::error_code ec;
    std::filesystem::create_directories(std::filesystem::path(QFile::encodeName(folder).toStdString()), ec);
    if (!ec)
        return true;
    if (error)
        *error = QStringLiteral("cannot create the folder %1: %2")
                     .arg(QDir::toNativeSeparators(folder), QString::fromLocal8Bit(ec.message()));
    return false;
}

// The folder for one of our files: the home folder when one is set, else the executable's folder
// when we may write there, else the per-user folder of that kind (created, since nothing else will).
QString chooseFolder(const QString &exeDir, const QString &home, QStandardPaths::StandardLocation fallback)
{
    if (!home.isEmpty())
        return QDir::cleanPath(QDir::fromNativeSeparators(home));
    if (!exeDir.isEmpty()) {
        const QFileInfo info(exeDir);
        if (info.isDir() && info.isWritable())
            return QDir::cleanPath(QDir::fromNativeSeparators(exeDir));
    }
    const QString folder = QStandardPaths::writableLocation(fallback);
    // A folder that cannot be made shows up when the file in it cannot be written.
    makeFolder(folder, nullptr);
    return folder;
}

QString fileIn(const QString &folder, const char *name)
{
    return QDir(folder).filePath(QString::fromLatin1(name));
}

} // namespace

QString AppPaths::executableDirectory()
{
#ifdef Q_OS_WIN
    // The folder start-up has always taken (each character cut to its low byte), so that every
    // program of the installation finds the same files.
    return QDir::fromNativeSeparators(QString::fromStdWString(ModuleFolder::lowByteDirectory()));
#else
    if (!QCoreApplication::instance())
        return QString();
    QString dir = QDir::fromNativeSeparators(QCoreApplication::applicationDirPath());
    if (!dir.endsWith(QLatin1Char('/')))
        dir += QLatin1Char('/');
    return dir;
#endif
}

QString AppPaths::settingsFilePath(const QString &exeDir, const QString &home)
{
    return fileIn(chooseFolder(exeDir, home, QStandardPaths::AppConfigLocation), SettingsFileName);
}

QString AppPaths::eventLogPath(const QString &exeDir, const QString &home)
{
    return fileIn(chooseFolder(exeDir, home, QStandardPaths::AppDataLocation), EventLogFileName);
}

bool AppPaths::prepareHomeFolder(const QString &folder, QString *error)
{
    auto fail = [error](const QString &why) {
        if (error)
            *error = why;
        return false;
    };
    if (folder.isEmpty())
        return fail(QStringLiteral("the home folder needs a name"));
    const QFileInfo info(folder);
    if (info.exists() && !info.isDir())
        return fail(QStringLiteral("%1 is not a folder").arg(QDir::toNativeSeparators(folder)));
    return info.exists() || makeFolder(folder, error);
}
