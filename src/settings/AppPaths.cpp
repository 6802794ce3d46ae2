#include "AppPaths.h"

#include <QCoreApplication>
#include <QDir>
#include <QFileInfo>
#include <QStandardPaths>

namespace {

// The folder for one of our files: KORVANE_HOME when set, else the executable's folder when we may
// write there, else the per-user folder of that kind (created, since nothing else will).
QString chooseFolder(const QString &exeDir, QStandardPaths::StandardLocation fallback)
{
    const QString home = qEnvironmentVariable(AppPaths::HomeVariable);
    if (!home.isEmpty()) {
        QDir().mkpath(home);
        return QDir::cleanPath(QDir::fromNativeSeparators(home));
    }
    if (!exeDir.isEmpty()) {
        const QFileInfo info(exeDir);
        if (info.isDir() && info.isWritable())
            return QDir::cleanPath(QDir::fromNativeSeparators(exeDir));
    }
    const QString folder = QStandardPaths::writableLocation(fallback);
    QDir().mkpath(folder);
    return folder;
}

QString fileIn(const QString &folder, const char *name)
{
    return QDir(folder).filePath(QString::fromLatin1(name));
}

} // namespace

QString AppPaths::executableDirectory()
{
    if (!QCoreApplication::instance())
        return QString();
    QString dir = QDir::fromNativeSeparators(QCoreApplication::applicationDirPath());
    if (!dir.endsWith(QLatin1Char('/')))
        dir += QLatin1Char('/');
    return dir;
}

QString AppPaths::settingsFilePath()
{
    return settingsFilePath(executableDirectory());
}

QString AppPaths::eventLogPath()
{
    return eventLogPath(executableDirectory());
}

QString AppPaths::settingsFilePath(const QString &exeDir)
{
    return fileIn(chooseFolder(exeDir, QStandardPaths::AppConfigLocation), SettingsFileName);
}

QString AppPaths::eventLogPath(const QString &exeDir)
{
    return fileIn(chooseFolder(exeDir, QStandardPaths::AppDataLocation), EventLogFileName);
}
