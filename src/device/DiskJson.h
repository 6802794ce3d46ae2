#pragma once

#include "DiskRecord.h"

#include <QJsonArray>
#include <QJsonObject>

/// Machine-readable form of disk records, for the command-line tool and scripts.
namespace DiskJson {

/// One attribute row: id, name, current, worst, threshold, raw (decoded), flags.
QJsonObject attribute(const SmartAttribute &attribute);
/// One volume with every field of its record.
QJsonObject volume(const VolumeRecord &volume);
/// One disk with every field of its record under its own name, its position
/// in the disk list as "index", its volumes and its attribute rows.
QJsonObject disk(const DiskRecord &disk, int index);
/// {"disks": [...]} for a whole disk list.
QJsonObject diskList(const QList<DiskRecord> &disks);

} // namespace DiskJson
