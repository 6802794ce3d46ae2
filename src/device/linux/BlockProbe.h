#pragma once

// Label, file system and serial of a volume, read from its superblock with
// libblkid.

#include "device/DriveBackend.h"

#include <cstdint>
#include <optional>
#include <string>

namespace BlockProbe {

/// The 32-bit volume serial for a file system UUID as libblkid prints it:
/// the volume serial itself where the file system has one ("XXXX-XXXX" for
/// FAT and exFAT, the low half of NTFS's 64-bit serial), else the first eight
/// hex digits of the UUID. Nothing when the text holds no such number.
std::optional<std::uint32_t> serialFromUuid(const std::string &uuid);

/// Probes the superblock of the block device at \a devicePath. False when
/// the device cannot be read or holds no recognised file system.
bool probe(const std::string &devicePath, VolumeInformation &out);

} // namespace BlockProbe
