#pragma once

#include "DriveBackend.h"

#include <QStringList>

#include <memory>

/// Paths named by KORVANE_SIMULATE (separated by ':' , or ';' on Windows).
QStringList simulatePathsFromEnvironment();

/// The backend to use: simulated disks when \a simulatePaths (or, when that is
/// empty, KORVANE_SIMULATE) names any, else the operating system's own.
/// Files that cannot be loaded are reported in \a errors.
std::unique_ptr<DriveBackend> createDriveBackend(const QStringList &simulatePaths, QStringList *errors);
