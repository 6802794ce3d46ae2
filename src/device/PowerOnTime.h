#pragma once

#include "DiskRecord.h"

#include <QString>
#include <QtGlobal>

/// The power-on counter of attribute 9 in words, and the choice of its unit. Vendors count in
/// hours, minutes, half-minutes or seconds; the unit code says which (1, 2, 3, 4; 0 unknown).
namespace PowerOnTime {

/// Whole hours of a counter \a value in unit \a unitCode; 0 for an unknown unit.
quint64 toHours(quint64 value, int unitCode);

/// Counter in years (of 8760 hours), months (of 720), days and hours, then the total hours:
/// "1 year 10 days 0 hours. (9000 hours)". "Unknown" for unit code 0 or above 4.
QString durationText(quint64 value, int unitCode);

/// The "Work Time" label of the SMART page for the disk's powerOnRaw, marked as unconfirmed
/// while powerOnUnitFixed is false; "Not supported" for unit code 0.
QString workTimeLabel(const DiskRecord &disk);

/// Unit code from the growth of the counter over the 125 s between the first reading and the
/// check: under 2 hours, under 4 minutes, under 11 half-minutes, else seconds.
int unitFromGrowth(quint64 growth);

} // namespace PowerOnTime
