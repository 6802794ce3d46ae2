#pragma once

#include <array>
#include <cstdint>
#include <string_view>

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

/// Stores \a text as an IDENTIFY text field of \a length bytes at byte
/// \a offset, the way drives do: padded with spaces, the two bytes of each
/// word swapped.
inline void setSectorText(Sector &s, int offset, int length, std::string_view text)
{
    for (int i = 0; i < length; ++i)
        s[std::size_t(offset + (i ^ 1))] = std::uint8_t(std::size_t(i) < text.size() ? text[std::size_t(i)] : ' ');
}
