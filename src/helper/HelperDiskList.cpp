#include "HelperDiskList.h"

#include "device/DeviceDescriptor.h"

#include <algorithm>
#include <array>

HelperDiskList::HelperDiskList(DriveBackend &backend)
    : m_backend(backend)
{
}

// Removable media and devices that answer no geometry are no disk of Korvane's, so the helper
// does not offer them either.
std::optional<HelperProtocol::Disk> HelperDiskList::probe(int index)
{
    HelperProtocol::Disk disk;
    disk.path = m_backend.diskPath(index);
    disk.probe = index;
    const DiskHandle handle = m_backend.openDisk(disk.path);
    if (handle == kNoHandle)
        return std::nullopt;
    const bool fixed = m_backend.geometry(handle, disk.geometry) && disk.geometry.mediaType == kFixedMedia
                       && m_backend.diskLength(handle, disk.length) && m_backend.deviceNumber(handle, disk.number);
    if (fixed) {
        std::array<std::uint8_t, DeviceDescriptor::kFullBufferSize> buffer{};
        const int size = m_backend.deviceDescriptor(handle, buffer.data(), int(buffer.size()));
        if (size > 0)
            disk.descriptor.assign(reinterpret_cast<const char *>(buffer.data()),
                                   std::size_t(std::min(size, int(buffer.size()))));
        disk.hasSmartVersion = m_backend.smartVersion(handle, disk.smartVersion, disk.smartRevision);
    }
    m_backend.closeDisk(handle);
    return fixed ? std::optional(disk) : std::nullopt;
}

std::vector<HelperProtocol::Disk> HelperDiskList::refresh()
{
    std::vector<HelperProtocol::Disk> disks;
    for (int index = 0; index < kDiskProbes; ++index) {
        if (auto disk = probe(index))
            disks.push_back(std::move(*disk));
    }
    std::lock_guard lock(m_mutex);
    m_disks = disks;
    m_probed = true;
    return disks;
}

std::optional<HelperProtocol::Disk> HelperDiskList::find(const std::string &path)
{
    bool probed;
    {
        std::lock_guard lock(m_mutex);
        probed = m_probed;
    }
    if (!probed)
        refresh();
    std::lock_guard lock(m_mutex);
    const auto it = std::find_if(m_disks.begin(), m_disks.end(),
                                 [&](const HelperProtocol::Disk &d) { return d.path == path; });
    return it == m_disks.end() ? std::nullopt : std::optional(*it);
}

std::vector<HelperProtocol::Volume> HelperDiskList::volumes()
{
    std::vector<HelperProtocol::Volume> out;
    for (const std::string &name : m_backend.volumeNames()) {
        HelperProtocol::Volume volume;
        volume.name = name;
        volume.fixed = m_backend.isFixedVolume(name);
        if (volume.fixed) {
            volume.hasSpace = m_backend.volumeSpace(name, volume.space);
            volume.hasInformation = m_backend.volumeInformation(name, volume.information);
            volume.hasNumber = m_backend.volumeDeviceNumber(name, volume.number);
        }
        out.push_back(volume);
    }
    return out;
}
