#pragma once

/// The warning and critical levels of one attribute's notification settings, and the rule that
/// keeps them from crossing.
namespace AttributeLevels {

/// Lowest level a user can set.
inline constexpr int Minimum = 0;
/// Highest level a user can set.
inline constexpr int Maximum = 200;

/// A warning and a critical level.
struct Pair
{
    int warning = 0;  ///< level that warns
    int critical = 0; ///< level that raises the alarm
    /// Both levels alike.
    bool operator==(const Pair &) const = default;
};

/// Which of the two levels the user set.
enum class Moved { Warning, Critical };

/// \a levels after the user set the \a moved one: where the two would cross, the other level
/// takes the moved one's value. For a lower-is-worse attribute critical stays at or below
/// warning, for a higher-is-worse one at or above. The moved level is never changed.
Pair couple(Pair levels, Moved moved, bool lowerIsWorse);

} // namespace AttributeLevels
