#include "LinuxBackend.h"

// Placeholder until the SG_IO backend lands: it finds no disks, so a Linux
// machine without --simulate reports an empty list instead of failing.

std::string LinuxBackend::diskPath(int probe) const
{
    return "/dev/sd" + std::string(1, char('a' + probe));
}

DiskHandle LinuxBackend::openDisk(const std::string &) { return kNoHandle; }
void LinuxBackend::closeDisk(DiskHandle) {}
bool LinuxBackend::geometry(DiskHandle, DiskGeometry &) { return false; }
bool LinuxBackend::diskLength(DiskHandle, std::uint64_t &) { return false; }
bool LinuxBackend::deviceNumber(DiskHandle, std::int32_t &) { return false; }
int LinuxBackend::deviceDescriptor(DiskHandle, std::uint8_t *, int) { return -1; }
bool LinuxBackend::smartVersion(DiskHandle, std::uint8_t &, std::uint8_t &) { return false; }
bool LinuxBackend::ataCommand(DiskHandle, int, int, AtaExchange &) { return false; }
std::vector<std::string> LinuxBackend::volumeNames() { return {}; }
bool LinuxBackend::isFixedVolume(const std::string &) { return false; }
bool LinuxBackend::volumeSpace(const std::string &, VolumeSpace &) { return false; }
bool LinuxBackend::volumeInformation(const std::string &, VolumeInformation &) { return false; }
bool LinuxBackend::volumeDeviceNumber(const std::string &, std::int32_t &) { return false; }
std::vector<MountPoint> LinuxBackend::mountPoints() { return {}; }
DiskHandle LinuxBackend::openForRead(const std::string &, bool) { return kNoHandle; }
std::int64_t LinuxBackend::readAt(DiskHandle, std::uint64_t, std::uint8_t *, std::uint32_t) { return -1; }
