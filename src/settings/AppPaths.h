#pragma once

#include <QString>

/// Where the program keeps its own files. Both files live beside the executable when that folder is
/// writable (a portable install), else in the user's per-application folders; a home folder chosen
/// by the user (SettingsStore: `--home`, KORVANE_HOME) overrides both choices.
class AppPaths
{
public:
    /// Name of the environment variable that names the home folder.
    static constexpr const char *HomeVariable = "KORVANE_HOME";
    /// File name of the settings file.
    static constexpr const char *SettingsFileName = "Korvane.ini";
    /// File name of the event log.
    static constexpr const char *EventLogFileName = "KV_f.log";

    /// Folder of the running executable, with "/" separators and a trailing "/"; empty without an application object.
    /// On Windows it comes from the module's file name, each character cut to its low byte as start-up takes it.
    static QString executableDirectory();

    /// Settings file path: in \a home when it is not empty, else by the executable rule for \a exeDir.
    static QString settingsFilePath(const QString &exeDir, const QString &home = QString());
    /// Event log path: in \a home when it is not empty, else by the executable rule for \a exeDir.
    static QString eventLogPath(const QString &exeDir, const QString &home = QString());

    /// Makes sure \a folder can be the home folder: an existing folder, or one that could be
    /// created (it is). False, with the reason in \a error, for an empty name, something that
    /// is not a folder (a file, /dev/null) or a folder that cannot be created.
    static bool prepareHomeFolder(const QString &folder, QString *error);
};
