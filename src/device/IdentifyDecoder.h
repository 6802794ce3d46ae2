#pragma once

#include "DiskRecord.h"
#include "Sector.h"

#include <QString>

/// Decoding of the ATA IDENTIFY DEVICE sector.
namespace IdentifyDecoder {

/// Result of the ATA version decoding of words 80 and 81.
struct AtaVersion
{
    int major = 0;
    QString text;
};

/// Byte offsets and lengths of the three identity strings.
inline constexpr int kSerialOffset = 20, kSerialLength = 20;
inline constexpr int kFirmwareOffset = 46, kFirmwareLength = 8;
inline constexpr int kModelOffset = 54, kModelLength = 40;

/// An IDENTIFY string field: byte pairs swapped, white space trimmed.
QString decodeString(const Sector &identify, int offset, int length);
/// 1 or 0 from word 82 bit 0, or -1 when word 83 is not valid.
int smartSupported(const Sector &identify);
/// 1 or 0 from word 85 bit 0, or -1 when word 87 is not valid.
int smartEnabled(const Sector &identify);
/// Major version and standard text from words 80 and 81.
AtaVersion ataVersion(const Sector &identify);
/// Text of an ATA minor version 0..34, empty for others.
QString minorVersionText(int minor);
/// Fills the SMART bits, the identity strings (after the descriptor's) and the ATA version.
void applyIdentify(DiskRecord &disk, const Sector &identify);

} // namespace IdentifyDecoder
