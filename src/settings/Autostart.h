#pragma once

#include <QString>

/// Starting Korvane with the user's session, hidden in the tray ("hide"). On Linux this is an
/// XDG autostart entry, korvane.desktop in the autostart folder of the user's configuration.
namespace Autostart {

/// Result codes of setAutostart().
enum Result : int {
    Done = 0,
    FolderUnavailable = 101, ///< the autostart folder cannot be created
    WriteFailed = 102,       ///< the entry cannot be written
    RemoveFailed = 103,      ///< there is no entry to remove, or it cannot be removed
};

/// Adds (\a enable) or removes the autostart entry that starts \a executable with "hide".
int setAutostart(bool enable, const QString &executable);
/// Adds or removes the entry for the running program (the settings' executable directory).
int setAutostart(bool enable);
/// The entry's file: korvane.desktop under $XDG_CONFIG_HOME/autostart (~/.config when unset).
QString entryPath();
/// The entry's Exec value for \a executable: the path quoted as desktop entries require, then "hide".
QString execLine(const QString &executable);

} // namespace Autostart
