#pragma once

#include "DiskRecord.h"
#include "DriveBackend.h"
#include "TraceFunction.h"

#include <QList>

/// Enumerates the fixed volumes, gives them roots and attaches them to their disks.
/// Returns every fixed volume found, also those on no known disk.
QList<VolumeRecord> findLogicalVolumes(DriveBackend &backend, QList<DiskRecord> &disks,
                                       const TraceFunction &trace = {});
