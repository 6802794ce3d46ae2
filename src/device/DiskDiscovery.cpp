#include "DiskDiscovery.h"

#include "AtaCommandIssuer.h"
#include "DeviceDescriptor.h"
#include "IdentifyDecoder.h"
#include "VolumeMapper.h"

#include <algorithm>
#include <array>

namespace {

void writeTrace(const TraceFunction &trace, const QString &line)
{
    if (trace)
        trace(line);
}

QString latin1(const std::string &bytes)
{
    return QString::fromLatin1(bytes.data(), qsizetype(bytes.size()));
}

// Geometry, size and device number decide whether the disk is monitored at
// all: removable media and devices that do not answer are left out.
bool readGeometry(DriveBackend &backend, DiskHandle handle, DiskRecord &disk)
{
    DiskGeometry geometry;
    std::uint64_t length = 0;
    std::int32_t number = -1;
    if (!backend.geometry(handle, geometry) || geometry.mediaType != kFixedMedia)
        return false;
    if (!backend.diskLength(handle, length) || !backend.deviceNumber(handle, number))
        return false;

    disk.mediaType = geometry.mediaType;
    disk.cylinders = geometry.cylinders;
    disk.tracksPerCylinder = geometry.tracksPerCylinder;
    disk.sectorsPerTrack = geometry.sectorsPerTrack;
    disk.bytesPerSector = geometry.bytesPerSector;
    // Cylinders x heads x sectors only approximates the size; the length of
    // the whole disk is exact, so that is the capacity.
    disk.capacityBytes = length;
    disk.diskNumber = number;
    return true;
}

void readDescriptor(DriveBackend &backend, DiskHandle handle, DiskRecord &disk)
{
    std::array<std::uint8_t, DeviceDescriptor::kFullBufferSize> buffer{};
    int size = backend.deviceDescriptor(handle, buffer.data(), int(buffer.size()));
    if (size < 0)
        return;
    size = std::min(size, int(buffer.size()));
    std::fill(buffer.begin() + size, buffer.end(), 0);
    applyDeviceDescriptor(disk, buffer.data(), size);
}

void readSmartVersion(DriveBackend &backend, DiskHandle handle, DiskRecord &disk)
{
    std::uint8_t version = 0;
    std::uint8_t revision = 0;
    if (!backend.smartVersion(handle, version, revision))
        return;
    disk.smartVersion = QStringLiteral("%1").arg(version);
    disk.smartRevision = QStringLiteral("%1").arg(revision);
}

void readIdentify(DriveBackend &backend, DiskHandle handle, int probe, DiskRecord &disk)
{
    AtaRegisters registers = AtaCommandIssuer::identifyDevice();
    Sector identify{};
    if (AtaCommandIssuer::issue(backend, handle, probe, registers, identify) >= 0)
        IdentifyDecoder::applyIdentify(disk, identify);
}

} // namespace

void applyDeviceDescriptor(DiskRecord &disk, const std::uint8_t *descriptor, int size)
{
    using namespace DeviceDescriptor;
    const QString vendor = latin1(stringAt(descriptor, size, kVendorOffsetField)).trimmed();
    const QString product = latin1(stringAt(descriptor, size, kProductOffsetField)).trimmed();
    disk.model = vendor.isEmpty() ? product : vendor + QLatin1Char(' ') + product;
    // Some drivers pad the serial with spaces; they are kept as returned, the
    // IDENTIFY serial usually replaces it anyway.
    disk.serial = latin1(stringAt(descriptor, size, kSerialOffsetField));
    disk.firmware = latin1(stringAt(descriptor, size, kRevisionOffsetField)).trimmed();
}

QList<DiskRecord> getDevice_Info(DriveBackend &backend, const TraceFunction &trace)
{
    QList<DiskRecord> disks;
    // Device numbers may have gaps (a disk removed, a card reader without a
    // card), so every probe is made.
    for (int probe = 0; probe < kDiskProbes; ++probe) {
        const std::string path = backend.diskPath(probe);
        writeTrace(trace, QStringLiteral("Before get Info: ") + QString::fromStdString(path));

        const DiskHandle handle = backend.openDisk(path);
        if (handle == kNoHandle)
            continue;

        DiskRecord disk;
        disk.devicePath = QString::fromStdString(path);
        if (!readGeometry(backend, handle, disk)) {
            backend.closeDisk(handle);
            continue;
        }
        readDescriptor(backend, handle, disk);
        readSmartVersion(backend, handle, disk);
        readIdentify(backend, handle, probe, disk);
        backend.closeDisk(handle);
        disks.append(disk);
    }

    writeTrace(trace, QStringLiteral("Before findLogicalVolumes"));
    if (!disks.isEmpty())
        findLogicalVolumes(backend, disks, trace);
    return disks;
}
