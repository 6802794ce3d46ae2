#pragma once

// The storage device descriptor as the device-property query returns it: a
// fixed header followed by NUL-terminated strings that the header points to
// by byte offset (the Windows STORAGE_DEVICE_DESCRIPTOR layout, which every
// backend reproduces).

#include <cstdint>
#include <string>

namespace DeviceDescriptor {

/// Header positions of the four 32-bit little-endian string offsets.
inline constexpr int kVendorOffsetField = 12;
inline constexpr int kProductOffsetField = 16;
inline constexpr int kRevisionOffsetField = 20;
inline constexpr int kSerialOffsetField = 24;

/// Offsets up to here point into the header and mean "no string".
inline constexpr std::uint32_t kLowestStringOffset = 28;

/// Buffer size for discovery, and the smaller one the IDENTIFY fallback uses.
inline constexpr int kFullBufferSize = 4096;
inline constexpr int kShortBufferSize = 256;

/// The string the field at \a offsetField points to, as raw bytes up to its NUL
/// or the end of the \a size bytes returned. Empty when the offset is not
/// above kLowestStringOffset or not below \a size.
std::string stringAt(const std::uint8_t *descriptor, int size, int offsetField);

/// Size of the fixed header; the strings follow it.
inline constexpr int kHeaderSize = 40;

/// What a backend reports in the descriptor.
struct Fields
{
    std::uint8_t deviceType = 0;
    bool removable = false;
    std::string vendor;   ///< empty for ATA disks: the whole model is the product
    std::string product;
    std::string revision;
    std::string serial;
    std::uint32_t busType = 0; ///< 1 SCSI, 3 ATA, 7 USB, 11 SATA
};

/// Writes the descriptor into \a size bytes: the little-endian header
/// (version, total size, device type, modifier, removable, queueing, the four
/// string offsets, bus type, raw property length), then the NUL-terminated
/// strings. Returns the bytes written, or -1 when not even the version and
/// size fit. An empty string, or one the buffer cannot hold whole, gets offset 0.
int write(const Fields &fields, std::uint8_t *buffer, int size);

} // namespace DeviceDescriptor
