#pragma once

#include <array>
#include <cstdint>

/// One 512-byte ATA data sector (IDENTIFY, SMART data or thresholds).
using Sector = std::array<std::uint8_t, 512>;

/// Little-endian 16-bit word \a word of \a s.
inline std::uint16_t sectorWord(const Sector &s, int word)
{
    return std::uint16_t(s[2 * word] | (s[2 * word + 1] << 8));
}
