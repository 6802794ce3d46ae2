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

/// Stores \a value as little-endian word \a word of \a s.
inline void setSectorWord(Sector &s, int word, std::uint16_t value)
{
    s[2 * word] = std::uint8_t(value & 0xFF);
    s[2 * word + 1] = std::uint8_t(value >> 8);
}
