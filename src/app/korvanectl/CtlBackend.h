#pragma once

#include "device/DriveBackend.h"

#include <QStringList>

#include <memory>

/// The backend of a korvanectl run.
namespace CtlBackend {

/// Simulated disks when \a simulatePaths (or KORVANE_SIMULATE) name any, else the
/// operating system's own. Files that cannot be read are reported on stderr and
/// clear \a filesRead.
std::shared_ptr<DriveBackend> open(const QStringList &simulatePaths, bool *filesRead);

/// Names on stderr the disks \a backend saw but could not read, or does not read, with what to do.
void reportAccess(const DriveBackend &backend);

} // namespace CtlBackend
