#pragma once

#include "DiskRecord.h"

#include <QByteArray>
#include <QList>
#include <QString>

/// The plain-text SMART report of every disk ("Save SMART info"), for the window and korvanectl.
namespace SmartReport {

/// Per disk in list order: a header naming the model, one "id value raw worst threshold" line per
/// attribute row, and a line of 24 hyphens; CRLF line ends, local 8-bit encoding. Empty for no disks.
QByteArray text(const QList<DiskRecord> &disks);

} // namespace SmartReport
