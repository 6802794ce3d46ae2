#pragma once

#include "AtaCommands.h"
#include "DriveBackend.h"

/// Runs one ATA command through the access paths in their fixed order.
namespace AtaCommandIssuer {

/// The register block of the five commands Korvane issues.
AtaRegisters identifyDevice();
AtaRegisters identifyPacketDevice();
AtaRegisters smartReadData();
AtaRegisters smartReadThresholds();
AtaRegisters smartReturnStatus();

/// Runs the command in \a registers on an open disk, trying paths 0 to 3 in
/// turn. Returns the path that answered, or -1 (also, with no call made, for
/// a command Korvane does not issue). On success \a data holds the sector and
/// \a registers the returned registers where the path gives them.
int issue(DriveBackend &backend, DiskHandle handle, int probeIndex, AtaRegisters &registers, Sector &data);

/// Path 3: an IDENTIFY sector made up from the device descriptor; false when the query fails.
/// issue() falls back to it for every command, so only IDENTIFY is worth
/// issuing to a disk that may answer no other path.
bool identifyFromDescriptor(DriveBackend &backend, DiskHandle handle, Sector &data);

} // namespace AtaCommandIssuer
