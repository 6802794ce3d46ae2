#pragma once

#include "device/DriveBackend.h"

#include <memory>
#include <string>

/// Which way a process on Linux reaches the disks.
namespace LinuxBackendChoice {

/// Whether the capability set of a /proc/PID/status text (its "CapEff:" line) holds
/// CAP_SYS_RAWIO, which ATA commands need.
bool hasRawIo(const std::string &procStatus);

/// The disks themselves when this process may send them ATA commands (root, or a binary an
/// administrator gave CAP_SYS_RAWIO), else Korvane's disk helper when the system bus has it,
/// else the direct backend, whose access report says what to install or grant.
std::unique_ptr<DriveBackend> create();

} // namespace LinuxBackendChoice
