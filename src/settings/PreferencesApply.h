#pragma once

#include "AppSettings.h"
#include "PreferencesCheck.h"

#include "device/DiskRecord.h"

#include <QList>
#include <QStringList>

#include <functional>

/// How applying the preferences ended.
struct PreferencesOutcome
{
    bool applied = false;              ///< the values are in force (saved unless a warning says otherwise)
    QList<PreferencesProblem> refused; ///< values that cannot be saved: nothing was changed
    QStringList warnings;              ///< what did not work (language, start at logon, saving), one text each
};

/// Puts the preferences dialog's values in force: checks them, switches the language and the
/// start at logon when they changed, hands the rest to the settings store (which tells the
/// window and the monitor) and saves the settings file whole.
namespace PreferencesApply {

/// Adds or removes the start at logon; returns 0 or an error code (see Autostart).
using AutostartFunction = std::function<int(bool enable)>;

/// Applies \a wanted, with \a disks for the per-disk lines of the file. Values that cannot be
/// saved are refused and nothing changes. A language that cannot be loaded stays the old one; a
/// start at logon that cannot be registered keeps the old state; each says why in a warning.
PreferencesOutcome apply(AppSettings wanted, const QList<DiskRecord> &disks, const AutostartFunction &autostart);
/// apply() with the platform's autostart registration.
PreferencesOutcome apply(const AppSettings &wanted, const QList<DiskRecord> &disks);
/// What the user reads when the autostart registration returned \a code (empty for 0).
QString autostartFailure(int code);

} // namespace PreferencesApply
