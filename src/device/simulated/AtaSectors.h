#pragma once

#include "device/Sector.h"

#include <QByteArray>
#include <QtGlobal>

/// Writing the three ATA sectors a simulated drive answers with: IDENTIFY
/// DEVICE, SMART READ DATA and SMART READ THRESHOLDS.
namespace AtaSectors {

/// Byte offset of attribute slot \a slot (0..29) in a SMART data or thresholds sector.
inline constexpr int slotOffset(int slot) { return 2 + 12 * slot; }
inline constexpr int kSlots = 30;

/// Sets word 255 to the signature 0xA5 and the checksum that makes all bytes sum to 0.
void sealIdentify(Sector &identify);
/// Sets byte 511 so that all bytes of a SMART sector sum to 0.
void sealSmart(Sector &sector);

/// Addressable sectors: words 100-103 when word 83 announces 48-bit LBA, else words 60-61.
quint64 lbaCount(const Sector &identify);
/// Stores the sector count in words 60-61 (capped at 28 bits) and 100-103, and announces 48-bit LBA.
void putLbaCount(Sector &identify, quint64 sectors);

/// The slot holding attribute \a id, or -1.
int findSlot(const Sector &sector, quint8 id);
/// Stores a 48-bit raw value at entry bytes 5-10 of a SMART data slot.
void putRaw(Sector &smartData, int slot, quint64 raw);

} // namespace AtaSectors
