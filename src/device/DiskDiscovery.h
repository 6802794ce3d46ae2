#pragma once

#include "DiskRecord.h"
#include "DriveBackend.h"

#include "TraceFunction.h"

#include <QList>

/// Finds the fixed disks and fills one record per disk, volumes included.
QList<DiskRecord> getDevice_Info(DriveBackend &backend, const TraceFunction &trace = {});

/// Fills model, serial and firmware from a device descriptor of \a size bytes returned.
void applyDeviceDescriptor(DiskRecord &disk, const std::uint8_t *descriptor, int size);
