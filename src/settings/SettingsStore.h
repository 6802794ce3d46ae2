#pragma once

#include "AppSettings.h"

#include "device/DiskRecord.h"

#include <QList>
#include <QObject>
#include <QString>

/// The owner of the process-wide settings (appSettings(), diskSettingsList()) and of the
/// language table (languageTable()). Those stay plain values that every part reads; changes
/// go through this object, which says so by signals, and it knows where the settings file
/// and the event log live. Used on the GUI thread (or the command-line tool's main thread) only.
class SettingsStore : public QObject
{
    Q_OBJECT
public:
    /// The one store of the process.
    static SettingsStore &instance();

    /// Keeps Korvane.ini and KV_f.log in \a folder from now on (created when missing). False,
    /// with the reason in \a error and nothing changed, when the folder cannot hold them.
    bool setHomeFolder(const QString &folder, QString *error);
    /// Takes the home folder KORVANE_HOME names, when it is set, by the rule of setHomeFolder();
    /// true when it is unset or was taken.
    bool useHomeFromEnvironment(QString *error);
    /// The home folder, or empty when the files live where the executable's rule puts them.
    QString homeFolder() const { return m_home; }

    /// Full path of the settings file for this process.
    QString settingsFilePath() const;
    /// Full path of the event log file for this process.
    QString eventLogPath() const;

    /// Reads the settings file over the values held now and tells everyone. False when nothing
    /// was read; \a message gets what the user should hear (empty for a plain missing file).
    bool load(QString *message = nullptr);
    /// Writes the settings and one line per disk of \a disks; false, with the reason, when it could not.
    bool save(const QList<DiskRecord> &disks, QString *error = nullptr);
    /// Puts new preferences in force and tells everyone. The language is switched separately (setLanguage()).
    void apply(const AppSettings &settings);
    /// Loads the texts of \a languageIndex; on success the settings hold the index and everyone is
    /// told. False, with the current language kept, when the language file cannot be used.
    bool setLanguage(int languageIndex);

signals:
    /// The preferences were read or changed (intervals, limits, notifications, ...).
    void settingsChanged();
    /// The language table was replaced.
    void languageChanged();

private:
    SettingsStore() = default;

    QString m_home;
};
