#pragma once

// ATA commands wrapped in SCSI for the kernel's SCSI/ATA translation (libata,
// USB bridges that speak SAT), and the sense data that carries the drive's
// registers back. Pure byte work, separate from the ioctls.

#include "device/DriveBackend.h"

#include <array>
#include <cstdint>
#include <optional>

namespace AtaPassThrough {

inline constexpr std::uint8_t kOpcode16 = 0x85;
inline constexpr std::uint8_t kOpcode12 = 0xA1;

/// SCSI status codes and sense keys the replies are judged by.
inline constexpr std::uint8_t kStatusGood = 0x00;
inline constexpr std::uint8_t kStatusCheckCondition = 0x02;
inline constexpr std::uint8_t kSenseRecoveredError = 0x01;
inline constexpr std::uint8_t kSenseIllegalRequest = 0x05;

/// ATA PASS-THROUGH (16) for \a registers: PIO data-in of one sector when
/// \a dataIn, else non-data with CK_COND so that the registers come back.
std::array<std::uint8_t, 16> command16(const AtaRegisters &registers, bool dataIn);
/// The same command as ATA PASS-THROUGH (12).
std::array<std::uint8_t, 12> command12(const AtaRegisters &registers, bool dataIn);

/// What sense data says.
struct Sense
{
    std::uint8_t key = 0;
    std::uint8_t asc = 0;
    std::uint8_t ascq = 0;
    /// The returned task file (error in features, status in command), when
    /// the sense data carries one.
    std::optional<AtaRegisters> registers;
};

/// Parses descriptor-format (0x72/0x73, ATA Status Return descriptor) or
/// fixed-format (0x70/0x71) sense data; nothing for anything else.
std::optional<Sense> parseSense(const std::uint8_t *sense, int length);

} // namespace AtaPassThrough
