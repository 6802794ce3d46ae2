#pragma once

#include "device/DriveBackend.h"

#include <cstdint>
#include <optional>
#include <string>

/// What the privileged disk helper lets a caller do: the fixed set of read-only ATA commands
/// and sector reads that stay on the disk. Decided here, before anything reaches a disk.
namespace HelperRequestPolicy {

/// The exchange to hand the backend for \a requested over access path \a path: one of IDENTIFY
/// DEVICE, IDENTIFY PACKET DEVICE, SMART READ DATA, SMART READ THRESHOLDS, SMART RETURN STATUS
/// and CHECK POWER MODE, with the registers Korvane may send them with; nullopt with the reason
/// in \a refusal for anything else.
std::optional<AtaExchange> commandExchange(int path, const AtaRegisters &requested, std::string &refusal);

/// Whether reading \a length bytes at byte \a offset of a disk of \a diskLength bytes is allowed:
/// whole 512-byte sectors, at most HelperProtocol::kMaxReadBytes, inside the disk. The reason
/// goes to \a refusal when it is not.
bool readAllowed(std::uint64_t offset, std::uint32_t length, std::uint64_t diskLength, std::string &refusal);

} // namespace HelperRequestPolicy
