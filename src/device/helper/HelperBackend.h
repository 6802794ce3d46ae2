#pragma once

#include "HelperProtocol.h"
#include "device/DriveBackend.h"

#include <QDBusConnection>
#include <QDBusMessage>

#include <chrono>
#include <functional>
#include <map>
#include <mutex>
#include <string>
#include <vector>

/// Disks read by Korvane's privileged helper (org.korvane.Helper1) for a process that may not
/// read them itself: each call of the seam becomes a call on the bus, the identity and geometry
/// of a disk come from the helper's own list.
class HelperBackend : public DriveBackend
{
public:
    /// Lines about disks of kinds no backend reads (from sysfs, which anyone may read).
    using UnsupportedDisks = std::function<std::vector<std::string>()>;

    /// Over \a bus (the system bus; a private one in tests).
    explicit HelperBackend(const QDBusConnection &bus, UnsupportedDisks unsupported = {});
    ~HelperBackend() override;

    /// Whether \a bus has the helper running or knows how to start it.
    static bool available(const QDBusConnection &bus);

    /// What the helper refused or could not do, one line each.
    std::vector<std::string> accessProblems() const override;
    /// What grants the helper's authorisation, or what to reinstall when it does not answer.
    std::string accessAdvice(const std::string &program) const override;
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

private:
    QDBusMessage call(const QString &method, const QVariantList &arguments, int timeoutMs) const;
    bool noteFailure(const std::string &subject, const QDBusMessage &reply) const;
    void listDisks() const;
    bool disk(DiskHandle handle, HelperProtocol::Disk &out) const;
    // The listed record of an open disk, or of a volume, handed to answer; false when there is none.
    bool withDisk(DiskHandle handle, const std::function<bool(const HelperProtocol::Disk &)> &answer) const;
    const HelperProtocol::Volume *volume(const std::string &name) const;
    bool withVolume(const std::string &name, const std::function<bool(const HelperProtocol::Volume &)> &answer) const;
    void listVolumes();

    QDBusConnection m_bus;
    UnsupportedDisks m_unsupported;
    mutable std::mutex m_mutex; // guards every member below
    mutable std::vector<HelperProtocol::Disk> m_disks;
    mutable std::chrono::steady_clock::time_point m_listed{};
    mutable bool m_haveList = false;
    mutable std::map<std::string, std::string> m_problems; // subject -> line
    mutable bool m_notAuthorised = false;
    mutable bool m_noHelper = false;
    std::map<DiskHandle, HelperProtocol::Disk> m_open;
    DiskHandle m_nextHandle = 1;
    std::vector<HelperProtocol::Volume> m_volumes;
    std::vector<MountPoint> m_mounts;
    bool m_haveVolumes = false;
};
