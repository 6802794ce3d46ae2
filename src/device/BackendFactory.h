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

/// The operating system's own backend, whatever KORVANE_SIMULATE says: for reading a device or
/// file the user named by its path. Nothing where this build has none (with the reason in \a errors).
std::unique_ptr<DriveBackend> createSystemBackend(QStringList *errors);
