#pragma once

#include "DiskRecord.h"
#include "DriveBackend.h"

#include <QList>
#include <QString>

#include <functional>

/// Receives the lines of the detailed diagnostic log; may be empty.
using TraceFunction = std::function<void(const QString &)>;

/// Number of disk paths probed (0..25).
inline constexpr int kDiskProbes = 26;

/// Finds the fixed disks and fills one record per disk, volumes included.
QList<DiskRecord> getDevice_Info(DriveBackend &backend, const TraceFunction &trace = {});

/// Fills model, serial and firmware from a device descriptor of \a size bytes returned.
void applyDeviceDescriptor(DiskRecord &disk, const std::uint8_t *descriptor, int size);

/// Enumerates the fixed volumes, gives them roots and attaches them to their disks.
/// Returns every fixed volume found, also those on no known disk.
QList<VolumeRecord> findLogicalVolumes(DriveBackend &backend, QList<DiskRecord> &disks,
                                       const TraceFunction &trace = {});
