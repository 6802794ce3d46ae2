#include "HealthRules.h"

#include "device/SmartAttribute.h"
#include "settings/AppSettings.h"

namespace HealthRules {

namespace {

// Fixed floors of the normalised value, independent of the vendor threshold: vendors set
// thresholds so low (often 0) that a disk would be near its end before crossing one.
constexpr quint32 kAlarmFloor = 5;
constexpr quint32 kWarningFloor = 10;

} // namespace

int attributePercentage(quint32 current)
{
    if (current > 200)
        return int(current / 253.0 * 100);
    if (current > 100)
        return int(current / 200.0 * 100);
    return int(current);
}

HealthState attributeLevel(const SmartAttribute &attribute)
{
    const quint32 v = attribute.current;
    if (v <= kAlarmFloor)
        return HealthAlarm;
    // At the vendor threshold the attribute counts as failing it; even so only the fixed floor
    // makes an alarm.
    if (v <= attribute.threshold || v <= kWarningFloor)
        return HealthWarning;
    return HealthOk;
}

HealthState attributeAlert(const SmartAttribute &attribute)
{
    const quint32 v = attribute.current;
    if (v <= kAlarmFloor)
        return HealthAlarm;
    if (v <= attribute.threshold)
        return HealthWarning;
    return HealthOk;
}

HealthState temperatureLevel(int celsius, const AppSettings &settings)
{
    // The critical limit wins even when the user set it below the warning one.
    if (celsius >= settings.crit_temp)
        return HealthAlarm;
    if (celsius >= settings.warn_temp)
        return HealthWarning;
    return HealthOk;
}

int trayColourIndex(int diskLevel, const AppSettings &settings)
{
    switch (diskLevel) {
    case HealthWarning:
        return settings.color_W;
    case HealthAlarm:
        return settings.color_C;
    default:
        return settings.color_N;
    }
}

} // namespace HealthRules
