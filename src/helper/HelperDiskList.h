#pragma once

#include "device/DriveBackend.h"
#include "device/helper/HelperProtocol.h"

#include <mutex>
#include <optional>
#include <string>
#include <vector>

/// The disks the helper found itself: the only ones it lets a caller reach. Safe to use from
/// several threads.
class HelperDiskList
{
public:
    /// Over \a backend, which must outlive the list.
    explicit HelperDiskList(DriveBackend &backend);

    /// Probes the fixed disks again, as discovery would, and returns them.
    std::vector<HelperProtocol::Disk> refresh();
    /// The disk found at \a path, probing first when nothing has been probed yet (the helper
    /// may have been started again since the caller listed the disks); nullopt when there is none.
    std::optional<HelperProtocol::Disk> find(const std::string &path);
    /// Every volume with the answers of the volume queries.
    std::vector<HelperProtocol::Volume> volumes();

private:
    std::optional<HelperProtocol::Disk> probe(int index);

    DriveBackend &m_backend;
    std::mutex m_mutex; // guards the two members below
    bool m_probed = false;
    std::vector<HelperProtocol::Disk> m_disks;
};
