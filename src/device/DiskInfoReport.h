#pragma once

#include "DiskRecord.h"

#include <QList>
#include <QString>

/// One row of the "Disk Info" tree: a label, a value and child rows.
struct InfoRow
{
    QString label;
    QString value;
    QList<InfoRow> children;
};

/// The row builders of the "Disk Info" page, usable by the window and the CLI.
namespace DiskInfoReport {

/// Model, serial, firmware, capacity, ATA version and standard, SMART support.
QList<InfoRow> identityRows(const DiskRecord &disk);
/// "%label (%root) Free %free of %total" with the file system and serial.
InfoRow volumeRow(const VolumeRecord &volume);
/// Geometry, off-line collection and SMART capability rows.
QList<InfoRow> geometryRows(const DiskRecord &disk);
/// All rows in the order the page shows them.
QList<InfoRow> allRows(const DiskRecord &disk);

} // namespace DiskInfoReport
