#pragma once

#include "DiskRecord.h"
#include "Sector.h"

#include <cstdint>

/// Decoding of the SMART READ DATA and READ THRESHOLDS sectors into a disk record.
namespace SmartDecoder {

inline constexpr int kMaxAttributes = 30;
inline constexpr int kFirstEntry = 2;
inline constexpr int kEntrySize = 12;
/// Below this raw count attribute 9 is read as hours, from it on as minutes.
inline constexpr std::uint64_t kPowerOnMinutesFrom = 44000;

/// Decoded raw value of one 12-byte entry (48-bit little-endian; 194 is special).
qint64 decodeRaw(const std::uint8_t *entry);
/// First read: builds the attribute rows and the SMART state of the disk.
void applyFirstRead(DiskRecord &disk, const Sector &data, const Sector &thresholds);
/// Periodic re-read: updates current and raw values in place, temperature and power-on count.
void applyReRead(DiskRecord &disk, const Sector &data);

} // namespace SmartDecoder
