#pragma once

// The one seam between Korvane and the operating system's storage stack.
//
// Everything here is bytes and plain C++ (no Qt), so that the Windows backend
// builds with a bare mingw toolchain. Decoding, path order, sanity checks and
// the mapping of volumes to disks live above this interface and are the same
// on every platform; a backend only carries bytes to and from the kernel.

#include "Sector.h"

#include <cstdint>
#include <string>
#include <vector>

/// An open disk or volume; each backend hands out its own numbers.
using DiskHandle = std::intptr_t;
inline constexpr DiskHandle kNoHandle = -1;

/// Number of disk paths a backend offers (probe indexes 0..25).
inline constexpr int kDiskProbes = 26;

/// Media type of fixed disks in the geometry reply; other media are not monitored.
inline constexpr std::uint32_t kFixedMedia = 12;

/// Geometry as the drive-geometry query reports it.
struct DiskGeometry
{
    std::uint64_t cylinders = 0;
    std::uint32_t mediaType = 0;
    std::uint32_t tracksPerCylinder = 0;
    std::uint32_t sectorsPerTrack = 0;
    std::uint32_t bytesPerSector = 0;
};

/// The eight task-file registers, in the order of the Windows IDEREGS block.
struct AtaRegisters
{
    std::uint8_t features = 0;
    std::uint8_t sectorCount = 0;
    std::uint8_t sectorNumber = 0;
    std::uint8_t cylinderLow = 0;
    std::uint8_t cylinderHigh = 0;
    std::uint8_t driveHead = 0;
    std::uint8_t command = 0; ///< on return: the status register
    std::uint8_t reserved = 0;
};

/// One ATA command handed to an access path, and what came back.
struct AtaExchange
{
    AtaRegisters registers;        ///< in: the command; out: returned registers where the path gives them
    bool dataIn = false;           ///< the command reads one 512-byte sector from the drive
    Sector data{};                 ///< transfer buffer
    std::uint32_t bytesReturned = 0;  ///< data byte count the path reports
    std::uint8_t driverError = 0;     ///< path 1 only: the driver's error byte
    bool registersReturned = false;   ///< the path filled in the returned registers
};

/// Space figures of a volume as the free-space query reports them.
struct VolumeSpace
{
    std::uint64_t sectorsPerCluster = 0;
    std::uint64_t bytesPerSector = 0;
    std::uint64_t freeClusters = 0;
    std::uint64_t totalClusters = 0;
};

/// Label, file system and serial number of a volume.
struct VolumeInformation
{
    std::string label;
    std::string fileSystem;
    std::uint32_t serialNumber = 0;
};

/// A root at which a volume is reachable (a drive letter, a mount point).
struct MountPoint
{
    std::string root;
    std::string volumeName;
};

/// Access path numbers, in the fixed order of preference.
enum AtaPath : int {
    AtaPassThroughPath = 0, ///< ATA pass-through with the full register block
    SmartIoctlPath = 1,     ///< the driver's SMART command interface
    IdePassThroughPath = 2, ///< older IDE pass-through
    DescriptorPath = 3      ///< no command at all: a sector made up from the device descriptor
};

/// The operating system's disk and volume interface. Every call is
/// synchronous; calls on different handles may come from different threads.
class DriveBackend
{
public:
    virtual ~DriveBackend() = default;

    /// Path of the disk at probe index 0..25.
    virtual std::string diskPath(int probe) const = 0;
    /// Opens a disk for reading and writing, or kNoHandle.
    virtual DiskHandle openDisk(const std::string &path) = 0;
    /// Closes a handle from openDisk or openForRead.
    virtual void closeDisk(DiskHandle handle) = 0;

    /// Drive geometry; false when the query fails.
    virtual bool geometry(DiskHandle handle, DiskGeometry &out) = 0;
    /// Length of the whole disk in bytes; false when the query fails.
    virtual bool diskLength(DiskHandle handle, std::uint64_t &bytes) = 0;
    /// Device number of the disk; false when the query fails.
    virtual bool deviceNumber(DiskHandle handle, std::int32_t &number) = 0;
    /// Storage device descriptor (STORAGE_DEVICE_DESCRIPTOR layout) into buffer;
    /// the byte count returned, or -1 when the query fails.
    virtual int deviceDescriptor(DiskHandle handle, std::uint8_t *buffer, int size) = 0;
    /// Version and revision of the SMART driver interface; false when unknown.
    virtual bool smartVersion(DiskHandle handle, std::uint8_t &version, std::uint8_t &revision) = 0;
    /// Runs one command over access path 0, 1 or 2; false when the call is refused.
    /// probeIndex is the drive number that path 1 addresses.
    virtual bool ataCommand(DiskHandle handle, int path, int probeIndex, AtaExchange &exchange) = 0;

    /// Names of all volumes, fixed or not, in enumeration order.
    virtual std::vector<std::string> volumeNames() = 0;
    /// Whether the volume is on fixed media.
    virtual bool isFixedVolume(const std::string &volumeName) = 0;
    /// Cluster figures of a volume; false when the query fails.
    virtual bool volumeSpace(const std::string &volumeName, VolumeSpace &out) = 0;
    /// Label, file system and serial of a volume; false when the query fails.
    virtual bool volumeInformation(const std::string &volumeName, VolumeInformation &out) = 0;
    /// Device number of the disk that holds the volume; false when unknown.
    virtual bool volumeDeviceNumber(const std::string &volumeName, std::int32_t &number) = 0;
    /// Roots of fixed volumes (drive letters in A..Z order, or mount points).
    virtual std::vector<MountPoint> mountPoints() = 0;

    /// Opens a disk read-only for the surface scan, or kNoHandle.
    virtual DiskHandle openForRead(const std::string &path, bool directIo) = 0;
    /// Reads length bytes at a byte offset; bytes read, or -1 on a read error.
    virtual std::int64_t readAt(DiskHandle handle, std::uint64_t offset, std::uint8_t *buffer,
                                std::uint32_t length) = 0;
    /// Reads length bytes at a byte offset only to learn that they can be read; \a scratch
    /// (length bytes) may or may not receive them. Bytes read, or -1 on a read error.
    virtual std::int64_t verifyAt(DiskHandle handle, std::uint64_t offset, std::uint8_t *scratch,
                                  std::uint32_t length)
    {
        return readAt(handle, offset, scratch, length);
    }

    /// One line per disk that was there but could not be read, with the reason
    /// ("/dev/sda: ..."), collected over the backend's lifetime; empty when
    /// every disk could be read.
    virtual std::vector<std::string> accessProblems() const { return {}; }
    /// How to grant the access that accessProblems() lacks, for \a program;
    /// empty when nothing can be granted.
    virtual std::string accessAdvice([[maybe_unused]] const std::string &program) const { return {}; }
    /// One line per disk of a kind this backend does not read (NVMe, virtio,
    /// ...), naming it and its kind; empty when there is none.
    virtual std::vector<std::string> unsupportedDisks() const { return {}; }
    /// Ends every call that waits inside the backend by its own choice (the
    /// simulated hangs) and makes later ones fail at once; for shutdown.
    /// Calls blocked in the kernel cannot be ended and are left alone.
    virtual void cancelWaits() {}
};
