#pragma once

#include "device/DiskRecord.h"

#include <QString>

/// Human-readable report of one disk: the "Disk Info" rows and the SMART table.
namespace TextReport {

/// Heading, info rows (children indented) and the attribute table of a disk; \a timedOut
/// says that its SMART read was given up because the disk did not answer in time.
QString disk(const DiskRecord &disk, int index, bool timedOut = false);
/// The attribute table alone: id, name, current, worst, threshold, raw, flags.
QString attributeTable(const DiskRecord &disk);

} // namespace TextReport
