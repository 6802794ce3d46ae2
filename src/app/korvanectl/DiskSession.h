#pragma once

#include "device/DiskRecord.h"
#include "device/DriveBackend.h"

#include <QList>
#include <QStringList>

class ATA_Smart;

/// Discovery and the first SMART read, run to completion for a command-line session.
namespace DiskSession {

/// The backend for this process (simulated disks when \a simulatePaths or
/// KORVANE_SIMULATE name any). Files that cannot be read are reported on
/// stderr and clear \a filesRead. The backend is never destroyed: a worker
/// given up by the watchdog may still be blocked inside it at exit.
DriveBackend &openBackend(const QStringList &simulatePaths, bool *filesRead);

/// Finds the disks and reads their SMART data once, waiting for every worker
/// (a disk that hangs is given up after the watchdog limit).
QList<DiskRecord> discover(DriveBackend &backend);

/// Runs the first SMART read of every disk and waits until each worker is counted off.
void readFirst(ATA_Smart &smart);

/// Disks the backend saw but could not read, each with what to do about it.
QStringList accessProblems(DriveBackend &backend);

} // namespace DiskSession
