#include "SettingsStore.h"

#include "AppPaths.h"
#include "LanguageTable.h"
#include "SettingsFile.h"

#include "device/UserPath.h"

#include <QDir>

namespace {

// The folder start-up settled on: the running executable's, or at a hidden start the one the
// autostart entry names. A process that settles none (korvanectl) goes by its own executable's.
QString executableFolder()
{
    const QString &folder = appSettings().executableDirectory;
    return folder.isEmpty() ? AppPaths::executableDirectory() : folder;
}

} // namespace

SettingsStore &SettingsStore::instance()
{
    static SettingsStore store;
    return store;
}

bool SettingsStore::setHomeFolder(const QString &folder, QString *error)
{
    if (!AppPaths::prepareHomeFolder(folder, error))
        return false;
    m_home = QDir(folder).absolutePath();
    return true;
}

bool SettingsStore::useHomeFromEnvironment(QString *error)
{
    const QByteArray raw = qgetenv(AppPaths::HomeVariable);
    if (raw.isEmpty())
        return true;
    QString why;
    const QString folder = UserPath::fromLocalBytes(raw, true, &why);
    if (folder.isEmpty() || !setHomeFolder(folder, &why)) {
        if (error)
            *error = QStringLiteral("%1=%2: %3")
                         .arg(QLatin1String(AppPaths::HomeVariable), UserPath::displayName(raw), why);
        return false;
    }
    return true;
}

QString SettingsStore::settingsFilePath() const
{
    return AppPaths::settingsFilePath(executableFolder(), m_home);
}

QString SettingsStore::eventLogPath() const
{
    return AppPaths::eventLogPath(executableFolder(), m_home);
}

bool SettingsStore::load(QString *message)
{
    if (message)
        message->clear();
    const bool read = SettingsFile::load(settingsFilePath(), appSettings(), diskSettingsList(), message);
    emit settingsChanged();
    return read;
}

bool SettingsStore::save(const QList<DiskRecord> &disks, QString *error)
{
    const QString path = settingsFilePath();
    if (SettingsFile::save(path, appSettings(), disks))
        return true;
    if (error)
        *error = QStringLiteral("cannot write the settings file %1").arg(QDir::toNativeSeparators(path));
    return false;
}

void SettingsStore::apply(const AppSettings &settings)
{
    // The language index belongs to setLanguage(): only a table that loaded may be recorded.
    const int language = appSettings().LanguageType;
    appSettings() = settings;
    appSettings().LanguageType = language;
    emit settingsChanged();
}

bool SettingsStore::setLanguage(int languageIndex)
{
    if (!LanguageTable::loadLanguage(languageIndex))
        return false;
    appSettings().LanguageType = languageIndex;
    emit languageChanged();
    return true;
}
