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

} // namespace DeviceDescriptor
