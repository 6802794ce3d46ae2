#pragma once

// The block devices the kernel lists under /sys/block: disks and their
// partitions, with the few attributes Korvane looks at.

#include <optional>
#include <string>
#include <vector>

namespace SysfsBlock {

/// A disk or a partition.
struct Device
{
    std::string name;        ///< kernel name ("sda", "sda1")
    std::string disk;        ///< kernel name of the whole disk (the name itself for a disk)
    int partition = 0;       ///< partition number; 0 for a whole disk
    unsigned major = 0;
    unsigned minor = 0;
    bool removable = false;  ///< the disk's removable-media flag
    bool isVirtual = false;  ///< loop, device-mapper, RAID, RAM disks: no hardware below
    bool usb = false;        ///< attached through USB
};

/// Every disk below \a sysRoot/block in natural name order (sdz before sdaa),
/// each followed by its partitions in partition-number order.
std::vector<Device> scan(const std::string &sysRoot);
/// The disk \a name alone (no partitions), or nothing when the kernel has no such disk.
std::optional<Device> disk(const std::string &sysRoot, const std::string &name);
/// What kind of disk the kernel name \a name is when it is one Korvane does not read ("an NVMe
/// disk" for nvme0n1, virtio vda, Xen xvda, SD/eMMC mmcblk0); empty for any other name,
/// partitions and the eMMC boot and RPMB areas included.
std::string unsupportedKind(const std::string &name);
/// Probe index of a SCSI disk name: sda 0 .. sdz 25, sdaa 26 ...; -1 for other names.
int diskIndex(const std::string &name);
/// Orders kernel names so that digit runs compare by value and letter runs by length first.
bool naturalLess(const std::string &a, const std::string &b);
/// A sysfs attribute file's content without the trailing newline; nothing when unreadable.
std::optional<std::string> readText(const std::string &path);
/// A binary sysfs attribute (a VPD page); empty when unreadable.
std::string readBytes(const std::string &path);

} // namespace SysfsBlock
