#pragma once

#include "HealthState.h"

#include <QtGlobal>

struct AppSettings;
struct SmartAttribute;

/// The fixed rules that turn one value into a level, shared by the evaluation and the views,
/// so that a status column can never disagree with the disk level.
namespace HealthRules {

/// Share in percent of a normalised value: vendors scale to 253, 200 or 100 as the best value
/// (truncated: 201 gives 79, 150 gives 75, 99 gives 99).
int attributePercentage(quint32 current);

/// Level one attribute gives on its own, whatever its performance flag: ALARM at or below 5,
/// WARNING at or below the vendor threshold or at or below 10, else OK.
HealthState attributeLevel(const SmartAttribute &attribute);

/// Level of the alert the attribute raises: ALARM at or below 5, WARNING at or below the vendor
/// threshold, HealthOk for none (also for 6..10 above the threshold, which warn silently).
HealthState attributeAlert(const SmartAttribute &attribute);

/// Level of a temperature in degrees Celsius: ALARM from crit_temp, WARNING from warn_temp, else OK.
HealthState temperatureLevel(int celsius, const AppSettings &settings);

/// Colour index the tray draws a disk's temperature in: color_W for WARNING, color_C for ALARM,
/// color_N for OK and for a disk not evaluated yet.
int trayColourIndex(int diskLevel, const AppSettings &settings);

} // namespace HealthRules
