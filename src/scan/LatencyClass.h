#pragma once

#include <QString>

/// Read-time classes of a map block, judged by its slowest check-block read: the surface's
/// early warning, since a sector that needs retries inside the drive reads slowly long before
/// it fails.
namespace LatencyClass {

/// Number of classes: under 5 ms, under 20, 50, 150, 500 ms, and slower.
inline constexpr int kCount = 6;

/// The class (0 fastest .. kCount - 1 slowest) of a read that took \a micros microseconds.
int of(qint64 micros);
/// The class's range as shown in the tooltip, the legend and the JSON ("20-50 ms").
QString label(int latencyClass);
/// \a micros as milliseconds with one decimal ("12.3").
QString milliseconds(qint64 micros);

} // namespace LatencyClass
