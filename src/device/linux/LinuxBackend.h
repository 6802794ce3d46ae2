#pragma once

#include "ScsiIdentity.h"
#include "device/DriveBackend.h"

#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

class LinuxSystem;

/// Disks of a Linux machine: /dev/sda../dev/sdz through SG_IO and the HDIO
/// ioctls, volumes from sysfs, the mount table and libblkid.
class LinuxBackend : public DriveBackend
{
public:
    /// Where the backend looks; tests point it at a made-up tree and fake system calls.
    struct Environment
    {
        std::shared_ptr<LinuxSystem> system;
        std::string sysRoot = "/sys";
        std::string mountInfo = "/proc/self/mountinfo";
        std::string deviceDir = "/dev";
    };

    LinuxBackend();
    explicit LinuxBackend(Environment environment);
    ~LinuxBackend() override;

    /// Disks that could not be opened, or whose every ATA command was refused.
    std::vector<std::string> accessProblems() const override;
    /// Installing the disk helper, or root for \a program.
    std::string accessAdvice(const std::string &program) const override;
    /// NVMe, virtio, Xen and SD/eMMC disks the kernel lists, one line each.
    std::vector<std::string> unsupportedDisks() const override;

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
    std::int64_t verifyAt(DiskHandle handle, std::uint64_t offset, std::uint8_t *scratch,
                          std::uint32_t length) override;

private:
    struct OpenDevice
    {
        std::string path;  ///< as opened
        std::string name;  ///< kernel name ("sda")
        bool directIo = false;
    };

    struct ScsiResult;

    int open(const std::string &path, int flags, bool directIo);
    bool lookup(DiskHandle handle, OpenDevice &out) const;
    // What became of the attempts to reach one disk.
    struct DiskAccess
    {
        int openError = 0;           ///< errno of a refused open, 0 once it opened
        int refused[3] = {};         ///< per access path: errno of its first refusal
        bool answered[3] = {};       ///< per access path: it carried a command
    };

    void noteOpen(const std::string &path, int error);
    void noteCommand(const std::string &path, int accessPath, int result);
    int scsiCommand(int fd, const std::uint8_t *cdb, int cdbLength, std::uint8_t *data, int dataLength,
                    ScsiResult &result);
    int passThrough(int fd, int path, AtaExchange &exchange);
    int driveCommand(int fd, AtaExchange &exchange);
    int inquiry(int fd, int page, std::uint8_t *data, int length);
    std::string vpdPage(int fd, const std::string &name, int page);
    std::optional<ScsiIdentity::Inquiry> readInquiry(int fd, const std::string &name);

    Environment m_env;
    mutable std::mutex m_mutex;             // guards the two members below
    std::map<DiskHandle, OpenDevice> m_open;
    std::map<std::string, DiskAccess> m_access;
};
