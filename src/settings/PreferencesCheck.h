#pragma once

#include "AppSettings.h"

#include <QList>
#include <QString>

/// One value of the preferences that cannot be saved as it stands.
struct PreferencesProblem
{
    QString key;  ///< the settings key it concerns ("warn_temp" for the temperature pair)
    QString text; ///< what the user reads: which value, and what to do about it
};

/// What the preferences dialog may save: exactly the values the settings file gives back as they
/// were. The loader skips what is out of range, resets a temperature pair that breaks the joint
/// rule, reads the file as Latin-1 and finds keys anywhere in a line; a value that would come
/// back changed is refused before anything is written, so nothing the user typed is lost silently.
namespace PreferencesCheck {

/// True when warning and critical temperature (degrees Celsius) pass the loader's joint rule.
bool temperaturesValid(int warn, int crit);
/// The values of \a wanted that would not read back as they are, with what to do; empty when all
/// can be saved. The language index is not checked: its rule is the language switch's own.
QList<PreferencesProblem> problems(const AppSettings &wanted);

} // namespace PreferencesCheck
