#include "AppSettings.h"

#include "SettingsFile.h"
#include "SettingsStore.h"

#include <algorithm>
#include <limits>

int AppSettings::defaultStyleIndex(const QStringList &styleKeys, const QString &nativeStyle)
{
    if (const int index = styleKeys.indexOf(QStringLiteral("WindowsVista")); index >= 0)
        return index;
    // Where there is no such style, the one the desktop chose plays its part: the program looks
    // native unless the user picks another. Style names are matched without case by the toolkit.
    for (int index = 0; index < styleKeys.size() && !nativeStyle.isEmpty(); ++index) {
        if (styleKeys.at(index).compare(nativeStyle, Qt::CaseInsensitive) == 0)
            return index;
    }
    return 1;
}

void AppSettings::setDefaults(const QStringList &styleKeys, const QString &nativeStyle)
{
    // Only the saved keys: the run-time values come from the command line and must survive.
    AppSettings defaults;
    defaults.StyleType = defaultStyleIndex(styleKeys, nativeStyle);
    defaults.showMainWindow = showMainWindow;
    defaults.detailLogEnabled = detailLogEnabled;
    defaults.winPEMode = winPEMode;
    defaults.is64BitBuild = is64BitBuild;
    defaults.executableDirectory = executableDirectory;
    *this = defaults;
}

bool AppSettings::isSmtpConfigured() const
{
    return !SMTP_from.isEmpty() && !SMTP_to.isEmpty() && !SMTP_server.isEmpty();
}

int AppSettings::displayTemperature(int celsius) const
{
    return temp_celsius == 0 ? celsius : celsius * 9 / 5 + 32;
}

qint64 AppSettings::intervalMs(int count, int unit)
{
    qint64 factor = 60000;
    if (unit == 0)
        factor = 1000;
    else if (unit == 2)
        factor = 3600000;
    // A timer counts milliseconds in an int: a longer interval would wrap and never fire,
    // so it is held at the longest one the timer can count (about 24.8 days).
    return std::min<qint64>(qint64(count) * factor, std::numeric_limits<int>::max());
}

AppSettings &appSettings()
{
    static AppSettings settings;
    return settings;
}

QList<DiskSettings> &diskSettingsList()
{
    static QList<DiskSettings> list;
    return list;
}

void setDefaults(const QStringList &styleKeys, const QString &nativeStyle)
{
    appSettings().setDefaults(styleKeys, nativeStyle);
}

bool loadSettings()
{
    return SettingsStore::instance().load();
}

bool saveSettings(const QList<DiskRecord> &disks)
{
    return SettingsStore::instance().save(disks);
}

void applyDiskSettings(QList<DiskRecord> &disks, int diskIndex)
{
    if (diskIndex >= 0 && diskIndex < disks.size())
        SettingsFile::applyDiskSettings(diskSettingsList(), disks[diskIndex]);
}
