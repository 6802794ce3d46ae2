#pragma once

#include "device/DiskRecord.h"
#include "device/DriveBackend.h"

#include <QList>
#include <QStringList>

class ATA_Smart;

/// Discovery and the first SMART read, run to completion for a command-line session.
namespace DiskSession {

/// Finds the disks and reads their SMART data once, waiting for every worker
/// (a disk that hangs is given up after the watchdog limit).
QList<DiskRecord> discover(DriveBackend &backend);

/// Runs the first SMART read of every disk and waits until each worker is counted off.
void readFirst(ATA_Smart &smart);

/// Disks the backend saw but could not read, each with what to do about it.
QStringList accessProblems(DriveBackend &backend);

} // namespace DiskSession
