#pragma once

#include "AutostartResult.h"

#include <QString>
#include <QStringList>

#include <optional>

/// Starting Korvane with the user's session, hidden in the tray ("hide"). On Windows this is the
/// value "Korvane" under the machine-wide Run key (RunKey); elsewhere an XDG autostart entry,
/// korvane.desktop in the autostart folder of the user's configuration.
namespace Autostart {

/// File name of the desktop program's executable outside Windows.
inline constexpr const char *ExecutableName = "Korvane";

/// Adds or removes the entry for the running program (the settings' executable directory); a Result code.
int setAutostart(bool enable);
/// The command line this platform's entry holds (the Run value, the XDG entry's Exec), or nothing.
std::optional<QString> registeredCommandLine();

/// Adds (\a enable) or removes the XDG entry that starts \a executable with "hide"; a Result code.
int setAutostart(bool enable, const QString &executable);
/// The XDG entry's file: korvane.desktop under $XDG_CONFIG_HOME/autostart (~/.config when unset).
QString entryPath();
/// The XDG entry's Exec value for \a executable: the path quoted as desktop entries require, then "hide".
QString execLine(const QString &executable);
/// The arguments of an Exec value, unescaped and unquoted as desktop entries require (execLine()
/// read back); empty when a quote is left open.
QStringList execArguments(const QString &exec);

} // namespace Autostart
