#pragma once

// The ATA command and SMART key bytes Korvane sends. Plain C++, so the
// backends and the platform-neutral code share one definition of each.

#include <cstdint>

namespace AtaCommands {

/// Command bytes.
inline constexpr std::uint8_t kIdentifyDevice = 0xEC;
inline constexpr std::uint8_t kIdentifyPacketDevice = 0xA1;
inline constexpr std::uint8_t kSmart = 0xB0;

/// SMART sub-commands (the features register).
inline constexpr std::uint8_t kSmartReadData = 0xD0;
inline constexpr std::uint8_t kSmartReadThresholds = 0xD1;
inline constexpr std::uint8_t kSmartReturnStatus = 0xDA;

/// The key every SMART command carries in the cylinder registers; RETURN STATUS
/// answers with the exceeded pair when a threshold has been crossed.
inline constexpr std::uint8_t kSmartKeyLow = 0x4F;
inline constexpr std::uint8_t kSmartKeyHigh = 0xC2;
inline constexpr std::uint8_t kSmartExceededLow = 0xF4;
inline constexpr std::uint8_t kSmartExceededHigh = 0x2C;

} // namespace AtaCommands
