#pragma once

#include <QtGlobal>

/// The fixed units of the surface scan, shared by the worker, the map and the front ends.
namespace ScanGeometry {

/// Bytes of one sector as the scan counts them, whatever the disk's own sector size.
inline constexpr qint64 kSectorBytes = 512;
/// Sectors of one map block (30 MB).
inline constexpr qint64 kBlockSectors = 61440;
/// Bytes of one map block.
inline constexpr qint64 kBlockBytes = kBlockSectors * kSectorBytes;
/// The check-block sizes a user can choose, in bytes.
inline constexpr quint32 kCheckBlockSizes[] = {512, 65536, 262144};
/// The check-block size of a worker nobody has set one on.
inline constexpr quint32 kDefaultCheckBlock = 65536;

/// The 0-based map block of \a sector.
inline constexpr qint64 blockOf(qint64 sector) { return sector / kBlockSectors; }
/// Number of map blocks of a disk of \a bytes: a partial last block counts.
inline constexpr qint64 blockCount(qint64 bytes) { return (bytes + kBlockBytes - 1) / kBlockBytes; }
/// Whether \a bytes is a check-block size a user can choose.
inline constexpr bool isCheckBlockSize(quint32 bytes)
{
    return bytes == kCheckBlockSizes[0] || bytes == kCheckBlockSizes[1] || bytes == kCheckBlockSizes[2];
}

} // namespace ScanGeometry
