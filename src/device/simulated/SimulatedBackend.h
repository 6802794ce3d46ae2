#pragma once

#include "device/DriveBackend.h"

#include <QString>
#include <QStringList>

#include <memory>

class SimulatedDisk;

/// Disks described by files: skdump dumps and JSON descriptions. Each file is
/// one disk; a folder holds several, taken in name order. Feeds the demo and
/// most tests. Disks are reached as "sim://N", N being the probe index, which
/// is also the device number.
class SimulatedBackend : public DriveBackend
{
public:
    SimulatedBackend();
    ~SimulatedBackend() override;

    /// Loads files and folders in the given order; a file that cannot be read
    /// adds one line naming it and the fault to \a errors and is skipped.
    static std::unique_ptr<SimulatedBackend> load(const QStringList &paths, QStringList *errors);

    /// Number of disks loaded (probe indexes 0..n-1 unless a description sets its own).
    int diskCount() const;

    /// Ends every SMART read that hangs now, at once, and makes later ones fail
    /// without waiting; read delays of the surface scan are skipped from then
    /// on. For shutdown: nobody waits for a simulated hang to run out.
    void cancelWaits() override;

    /// One line per disk described as one that cannot be opened ("openFails").
    std::vector<std::string> accessProblems() const override;
    /// Where such a disk's refusal comes from: its description, not a missing permission.
    std::string accessAdvice(const std::string &program) const override;
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
    struct Private;
    std::unique_ptr<Private> d;
};
