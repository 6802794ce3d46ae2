#include "SysfsBlock.h"

#include <algorithm>
#include <cctype>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <sstream>

namespace fs = std::filesystem;

namespace {

bool parseDeviceNumber(const std::string &text, unsigned &major, unsigned &minor)
{
    const std::size_t colon = text.find(':');
    if (colon == std::string::npos)
        return false;
    try {
        major = unsigned(std::stoul(text.substr(0, colon)));
        minor = unsigned(std::stoul(text.substr(colon + 1)));
    } catch (...) {
        return false;
    }
    return true;
}

// The device's place in the sysfs tree tells what it hangs off: every disk
// entry is a link into /sys/devices.
std::string devicePath(const fs::path &entry)
{
    std::error_code ec;
    const fs::path target = fs::canonical(entry, ec);
    return ec ? entry.string() : target.string();
}

SysfsBlock::Device describe(const fs::path &dir, const std::string &name)
{
    SysfsBlock::Device device;
    device.name = name;
    device.disk = name;
    if (const auto dev = SysfsBlock::readText((dir / "dev").string()))
        parseDeviceNumber(*dev, device.major, device.minor);
    device.removable = SysfsBlock::readText((dir / "removable").string()).value_or("0") == "1";
    const std::string where = devicePath(dir);
    device.isVirtual = where.find("/devices/virtual/") != std::string::npos;
    device.usb = where.find("/usb") != std::string::npos;
    return device;
}

std::vector<SysfsBlock::Device> partitionsOf(const fs::path &dir, const SysfsBlock::Device &disk)
{
    std::vector<SysfsBlock::Device> partitions;
    std::error_code ec;
    for (const fs::directory_entry &entry : fs::directory_iterator(dir, ec)) {
        const auto number = SysfsBlock::readText((entry.path() / "partition").string());
        if (!number)
            continue;
        SysfsBlock::Device part = disk;
        part.name = entry.path().filename().string();
        part.major = part.minor = 0;
        if (const auto dev = SysfsBlock::readText((entry.path() / "dev").string()))
            parseDeviceNumber(*dev, part.major, part.minor);
        part.partition = std::atoi(number->c_str());
        partitions.push_back(part);
    }
    std::sort(partitions.begin(), partitions.end(),
              [](const auto &a, const auto &b) { return a.partition < b.partition; });
    return partitions;
}

} // namespace

namespace SysfsBlock {

std::vector<Device> scan(const std::string &sysRoot)
{
    const fs::path blockDir = fs::path(sysRoot) / "block";
    std::vector<std::string> names;
    std::error_code ec;
    for (const fs::directory_entry &entry : fs::directory_iterator(blockDir, ec))
        names.push_back(entry.path().filename().string());
    std::sort(names.begin(), names.end(), naturalLess);

    std::vector<Device> devices;
    for (const std::string &name : names) {
        const Device disk = describe(blockDir / name, name);
        devices.push_back(disk);
        for (Device &part : partitionsOf(blockDir / name, disk))
            devices.push_back(std::move(part));
    }
    return devices;
}

std::optional<Device> disk(const std::string &sysRoot, const std::string &name)
{
    if (name.empty() || name.find('/') != std::string::npos)
        return std::nullopt;
    const fs::path dir = fs::path(sysRoot) / "block" / name;
    std::error_code ec;
    if (!fs::exists(dir, ec))
        return std::nullopt;
    return describe(dir, name);
}

namespace {

// Whether \a text, from \a at on, is a pattern of runs: 'd' one or more digits, 'a' one or more
// lower-case letters, any other character itself.
bool matchesRuns(const std::string &text, std::size_t at, const char *pattern)
{
    for (; *pattern; ++pattern) {
        const char want = *pattern;
        const auto isDigit = [](char c) { return c >= '0' && c <= '9'; };
        const auto isLetter = [](char c) { return c >= 'a' && c <= 'z'; };
        if (want == 'd' || want == 'a') {
            const std::size_t start = at;
            while (at < text.size() && (want == 'd' ? isDigit(text[at]) : isLetter(text[at])))
                ++at;
            if (at == start)
                return false;
        } else if (at >= text.size() || text[at++] != want) {
            return false;
        }
    }
    return at == text.size();
}

} // namespace

std::string unsupportedKind(const std::string &name)
{
    // Whole disks only: nvme0c0n1 is one controller's path to a namespace, and names with a
    // further part (nvme0n1p1, vda1, mmcblk0p1, mmcblk0boot0) are partitions or boot areas.
    struct Kind
    {
        const char *prefix;
        const char *rest; ///< runs after the prefix, as matchesRuns() reads them
        const char *text;
    };
    static const Kind kinds[] = {
        {"nvme", "dnd", "an NVMe disk"},
        {"vd", "a", "a virtio disk"},
        {"xvd", "a", "a Xen virtual disk"},
        {"mmcblk", "d", "an SD card or eMMC disk"},
    };
    for (const Kind &kind : kinds) {
        const std::size_t length = std::strlen(kind.prefix);
        if (name.compare(0, length, kind.prefix) == 0 && matchesRuns(name, length, kind.rest))
            return kind.text;
    }
    return {};
}

int diskIndex(const std::string &name)
{
    if (name.size() < 3 || name.compare(0, 2, "sd") != 0)
        return -1;
    long index = 0;
    for (std::size_t i = 2; i < name.size(); ++i) {
        if (name[i] < 'a' || name[i] > 'z' || index > 100000)
            return -1;
        index = index * 26 + (name[i] - 'a' + 1);
    }
    return int(index - 1);
}

bool naturalLess(const std::string &a, const std::string &b)
{
    std::size_t i = 0, j = 0;
    while (i < a.size() && j < b.size()) {
        const bool digitA = std::isdigit(static_cast<unsigned char>(a[i]));
        const bool digitB = std::isdigit(static_cast<unsigned char>(b[j]));
        std::size_t endA = i, endB = j;
        while (endA < a.size() && bool(std::isdigit(static_cast<unsigned char>(a[endA]))) == digitA)
            ++endA;
        while (endB < b.size() && bool(std::isdigit(static_cast<unsigned char>(b[endB]))) == digitB)
            ++endB;
        std::string runA = a.substr(i, endA - i), runB = b.substr(j, endB - j);
        if (digitA && digitB) {
            runA.erase(0, std::min(runA.find_first_not_of('0'), runA.size()));
            runB.erase(0, std::min(runB.find_first_not_of('0'), runB.size()));
        }
        if (digitA != digitB)
            return digitA;
        // Same-kind runs: shorter first (sdz before sdaa, 9 before 10), then by text.
        if (runA.size() != runB.size())
            return runA.size() < runB.size();
        if (runA != runB)
            return runA < runB;
        i = endA;
        j = endB;
    }
    return a.size() - i < b.size() - j;
}

std::optional<std::string> readText(const std::string &path)
{
    std::ifstream file(path);
    if (!file)
        return std::nullopt;
    std::string text;
    std::getline(file, text);
    if (file.bad())
        return std::nullopt;
    return text;
}

std::string readBytes(const std::string &path)
{
    std::ifstream file(path, std::ios::binary);
    if (!file)
        return {};
    std::ostringstream bytes;
    bytes << file.rdbuf();
    return bytes.str();
}

} // namespace SysfsBlock
