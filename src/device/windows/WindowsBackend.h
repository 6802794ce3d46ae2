#pragma once

#include "device/DriveBackend.h"

#include <memory>
#include <string>
#include <vector>

class WindowsSystem;

/// Disks of a Windows machine: \\.\PhysicalDrive0..25 through DeviceIoControl (the disk and
/// storage queries, ATA pass-through, the SMART interface, IDE pass-through), volumes through the
/// volume management calls. Handles are the Win32 handles themselves.
class WindowsBackend : public DriveBackend
{
public:
    /// A backend over the running Windows.
    WindowsBackend();
    /// A backend over \a system (tests give a fake).
    explicit WindowsBackend(std::shared_ptr<WindowsSystem> system);
    ~WindowsBackend() override;

    std::string diskPath(int probe) const override;
    DiskHandle openDisk(const std::string &path) override;
    void closeDisk(DiskHandle handle) override;
    bool geometry(DiskHandle handle, DiskGeometry &out) override;
    bool diskLength(DiskHandle handle, std::uint64_t &bytes) override;
    bool deviceNumber(DiskHandle handle, std::int32_t &number) override;
    int deviceDescriptor(DiskHandle handle, std::uint8_t *buffer, int size) override;
    bool smartVersion(DiskHandle handle, std::uint8_t &version, std::uint8_t &revision) override;
    bool ataCommand(DiskHandle handle, int path, int probeIndex, AtaExchange &exchange) override;
    std::vector<std::string> volumeNames() override;
    bool isFixedVolume(const std::string &volumeName) override;
    bool volumeSpace(const std::string &volumeName, VolumeSpace &out) override;
    bool volumeInformation(const std::string &volumeName, VolumeInformation &out) override;
    bool volumeDeviceNumber(const std::string &volumeName, std::int32_t &number) override;
    std::vector<MountPoint> mountPoints() override;
    DiskHandle openForRead(const std::string &path, bool directIo) override;
    std::int64_t readAt(DiskHandle handle, std::uint64_t offset, std::uint8_t *buffer,
                        std::uint32_t length) override;

private:
    bool query(DiskHandle handle, unsigned long code, void *out, unsigned long size);
    bool ataPassThrough(DiskHandle handle, AtaExchange &exchange);
    bool smartCommand(DiskHandle handle, int driveNumber, AtaExchange &exchange);
    bool idePassThrough(DiskHandle handle, AtaExchange &exchange);

    std::shared_ptr<WindowsSystem> m_system;
};
