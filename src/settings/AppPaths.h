#pragma once

#include <QString>

/// Where the program keeps its own files. Both files live beside the executable when that folder is
/// writable (a portable install), else in the user's per-application folders; the environment
/// variable KORVANE_HOME names one folder that overrides both choices.
class AppPaths
{
public:
    /// Name of the environment variable that overrides the folder of both files.
    static constexpr const char *HomeVariable = "KORVANE_HOME";
    /// File name of the settings file.
    static constexpr const char *SettingsFileName = "Korvane.ini";
    /// File name of the event log.
    static constexpr const char *EventLogFileName = "KV_f.log";

    /// Folder of the running executable, with "/" separators and a trailing "/"; empty without an application object.
    static QString executableDirectory();

    /// Full path of the settings file for this process.
    static QString settingsFilePath();
    /// Full path of the event log file for this process.
    static QString eventLogPath();

    /// Settings file path as if the executable lived in exeDir (the rule behind settingsFilePath()).
    static QString settingsFilePath(const QString &exeDir);
    /// Event log path as if the executable lived in exeDir (the rule behind eventLogPath()).
    static QString eventLogPath(const QString &exeDir);
};
