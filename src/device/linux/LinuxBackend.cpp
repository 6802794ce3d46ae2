#include "LinuxBackend.h"

#include "AtaPassThrough.h"
#include "BlockProbe.h"
#include "LinuxSystem.h"
#include "MountTable.h"
#include "SysfsBlock.h"
#include "device/AtaCommands.h"

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <filesystem>
#include <memory>
#include <linux/fs.h>
#include <linux/hdreg.h>
#include <scsi/sg.h>
#include <sys/statvfs.h>

namespace {

// Repeats a read step from where the last one stopped until length bytes are done or the end
// comes: the bytes done, or the step's -errno as soon as one fails.
template <typename Step>
std::int64_t continued(std::uint32_t length, Step step)
{
    std::uint32_t done = 0;
    while (done < length) {
        const ssize_t n = step(done);
        if (n < 0)
            return n;
        if (n == 0)
            break;
        done += std::uint32_t(n);
    }
    return done;
}

constexpr std::uint32_t kRemovableMedia = 11;
constexpr int kSectorBytes = 512;
constexpr unsigned kCommandTimeoutMs = 10000;
constexpr std::uint8_t kAtaStatusBusy = 0x80;
constexpr std::uint8_t kAtaStatusError = 0x01;
// driver_status: DRIVER_SENSE (0x08) only says that sense data came back.
constexpr unsigned kDriverStatusErrorMask = 0x07;
// Buffers handed to O_DIRECT reads must sit on a logical-block boundary;
// 4096 covers both 512-byte and 4K-sector disks.
constexpr std::size_t kDirectAlignment = 4096;

bool isAccessError(int error)
{
    return error == EACCES || error == EPERM;
}

// Results of one access path: the command got an answer, got none, or the
// kernel refused to send it (-errno).
constexpr int kAnswered = 1;
constexpr int kNoAnswer = 0;

// The kernel name of a device node ("/dev/sda" -> "sda"), following links
// such as /dev/disk/by-id/... to the node itself.
std::string kernelName(const std::string &path)
{
    std::error_code ec;
    const std::filesystem::path resolved = std::filesystem::canonical(path, ec);
    return (ec ? std::filesystem::path(path) : resolved).filename().string();
}

const SysfsBlock::Device *findDevice(const std::vector<SysfsBlock::Device> &devices, const std::string &name)
{
    const auto it = std::find_if(devices.begin(), devices.end(),
                                 [&](const SysfsBlock::Device &d) { return d.name == name; });
    return it == devices.end() ? nullptr : &*it;
}

bool mountIsOf(const MountTable::Mount &mount, const SysfsBlock::Device &device)
{
    if (mount.major == device.major && mount.minor == device.minor && (device.major || device.minor))
        return true;
    // Some file systems (btrfs) report an anonymous device number; their
    // source still names the block device.
    return mount.source.rfind("/dev/", 0) == 0 && kernelName(mount.source) == device.name;
}

// The error of the first access path the kernel refused and never let through.
int firstRefusal(const auto &access)
{
    for (int path = 0; path < 3; ++path) {
        if (access.refused[path] && !access.answered[path])
            return access.refused[path];
    }
    return 0;
}

// Mounts in the order their roots are preferred: whole file systems (root
// "/") first, then bind mounts and subvolumes.
std::vector<MountTable::Mount> mountsByPreference(std::vector<MountTable::Mount> mounts)
{
    std::stable_partition(mounts.begin(), mounts.end(), [](const MountTable::Mount &m) { return m.root == "/"; });
    return mounts;
}

} // namespace

struct LinuxBackend::ScsiResult
{
    unsigned status = 0;
    unsigned hostStatus = 0;
    unsigned driverStatus = 0;
    int transferred = 0;
    std::uint8_t sense[64] = {};
    int senseLength = 0;
};

LinuxBackend::LinuxBackend()
    : LinuxBackend(Environment{})
{
}

LinuxBackend::LinuxBackend(Environment environment)
    : m_env(std::move(environment))
{
    if (!m_env.system)
        m_env.system = LinuxSystem::host();
}

LinuxBackend::~LinuxBackend()
{
    for (const auto &entry : m_open)
        m_env.system->close(int(entry.first));
}

std::vector<std::string> LinuxBackend::accessProblems() const
{
    std::lock_guard lock(m_mutex);
    std::vector<std::string> lines;
    for (const auto &[path, access] : m_access) {
        if (access.openError)
            lines.push_back(path + ": cannot be opened for reading and writing (" + std::strerror(access.openError) + ")");
        else if (const int error = firstRefusal(access))
            lines.push_back(path + ": ATA commands refused (" + std::strerror(error) + ")");
    }
    return lines;
}

// File capabilities are not offered as a way out: on a program that loads plugins and reads
// its environment they let every local user read any disk and any file.
std::string LinuxBackend::accessAdvice(const std::string &program) const
{
    return "Reading SMART data needs root, or the disk helper of the korvane package (org.korvane.Helper1), "
           "which reads the disks for a normal user. Install the package, or run it as root (sudo "
           + program + ").";
}

std::vector<std::string> LinuxBackend::unsupportedDisks() const
{
    std::vector<std::string> lines;
    for (const SysfsBlock::Device &device : SysfsBlock::scan(m_env.sysRoot)) {
        const std::string kind = device.partition ? std::string() : SysfsBlock::unsupportedKind(device.name);
        if (!kind.empty())
            lines.push_back(m_env.deviceDir + "/" + device.name + ": " + kind
                            + "; Korvane reads ATA disks (/dev/sda to /dev/sdz) only");
    }
    return lines;
}

void LinuxBackend::noteOpen(const std::string &path, int error)
{
    std::lock_guard lock(m_mutex);
    if (isAccessError(error))
        m_access[path].openError = error;
    else if (const auto it = m_access.find(path); it != m_access.end())
        it->second.openError = 0;
}

// The SMART reads go over path 1 alone, identification over the first path
// that answers: a path refused is a problem unless it got through another time
// (the kernel lets ATA PASS-THROUGH (12) pass for anyone who may write to the
// disk, while (16) wants CAP_SYS_RAWIO and HDIO_DRIVE_CMD CAP_SYS_ADMIN too).
void LinuxBackend::noteCommand(const std::string &path, int accessPath, int result)
{
    if (result < 0 && !isAccessError(-result))
        return;
    std::lock_guard lock(m_mutex);
    DiskAccess &access = m_access[path];
    if (result > 0)
        access.answered[accessPath] = true;
    else if (result < 0 && !access.refused[accessPath])
        access.refused[accessPath] = -result;
}

std::string LinuxBackend::diskPath(int probe) const
{
    std::string name = "sd";
    name += char('a' + probe);
    return m_env.deviceDir + "/" + name;
}

int LinuxBackend::open(const std::string &path, int flags, bool directIo)
{
    const int fd = m_env.system->open(path, flags | O_CLOEXEC);
    if (fd < 0)
        return fd;
    std::lock_guard lock(m_mutex);
    m_open[fd] = OpenDevice{path, kernelName(path), directIo};
    return fd;
}

DiskHandle LinuxBackend::openDisk(const std::string &path)
{
    // ATA commands travel over SG_IO, which the kernel only lets through on a
    // descriptor opened for writing. O_NONBLOCK keeps an empty card reader
    // from failing the open: it is dropped later as removable media.
    const int fd = open(path, O_RDWR | O_NONBLOCK, false);
    noteOpen(path, fd < 0 ? -fd : 0);
    return fd < 0 ? kNoHandle : fd;
}

DiskHandle LinuxBackend::openForRead(const std::string &path, bool directIo)
{
    const int fd = open(path, O_RDONLY | (directIo ? O_DIRECT : 0), directIo);
    return fd < 0 ? kNoHandle : fd;
}

void LinuxBackend::closeDisk(DiskHandle handle)
{
    {
        std::lock_guard lock(m_mutex);
        if (m_open.erase(handle) == 0)
            return;
    }
    m_env.system->close(int(handle));
}

bool LinuxBackend::lookup(DiskHandle handle, OpenDevice &out) const
{
    std::lock_guard lock(m_mutex);
    const auto it = m_open.find(handle);
    if (it == m_open.end())
        return false;
    out = it->second;
    return true;
}

bool LinuxBackend::geometry(DiskHandle handle, DiskGeometry &out)
{
    OpenDevice device;
    if (!lookup(handle, device))
        return false;
    const int fd = int(handle);
    hd_geometry geo{};
    int sectorSize = 0;
    std::uint64_t bytes = 0;
    if (m_env.system->ioctl(fd, HDIO_GETGEO, &geo) < 0 || m_env.system->ioctl(fd, BLKSSZGET, &sectorSize) < 0
        || m_env.system->ioctl(fd, BLKGETSIZE64, &bytes) < 0 || sectorSize <= 0)
        return false;

    out.tracksPerCylinder = geo.heads;
    out.sectorsPerTrack = geo.sectors;
    out.bytesPerSector = std::uint32_t(sectorSize);
    // The ioctl's cylinder count is 16 bits wide and wraps on any disk above
    // 8 GB; work it out from the size as a BIOS-style geometry would.
    const std::uint64_t perCylinder = std::uint64_t(geo.heads) * geo.sectors * std::uint64_t(sectorSize);
    out.cylinders = perCylinder ? bytes / perCylinder : geo.cylinders;

    const auto disk = SysfsBlock::disk(m_env.sysRoot, device.name);
    out.mediaType = disk && disk->removable ? kRemovableMedia : kFixedMedia;
    return true;
}

bool LinuxBackend::diskLength(DiskHandle handle, std::uint64_t &bytes)
{
    OpenDevice device;
    return lookup(handle, device) && m_env.system->ioctl(int(handle), BLKGETSIZE64, &bytes) >= 0;
}

bool LinuxBackend::deviceNumber(DiskHandle handle, std::int32_t &number)
{
    OpenDevice device;
    if (!lookup(handle, device))
        return false;
    const int index = SysfsBlock::diskIndex(device.name);
    if (index < 0)
        return false;
    number = index;
    return true;
}

bool LinuxBackend::smartVersion(DiskHandle handle, std::uint8_t &version, std::uint8_t &revision)
{
    // The SCSI generic interface that carries the ATA commands has a version
    // number (30527 is 3.5.27); its major and minor parts are the nearest
    // Linux has to a SMART driver version.
    OpenDevice device;
    int number = 0;
    if (!lookup(handle, device) || m_env.system->ioctl(int(handle), SG_GET_VERSION_NUM, &number) < 0 || number <= 0)
        return false;
    version = std::uint8_t(number / 10000);
    revision = std::uint8_t(number / 100 % 100);
    return true;
}

int LinuxBackend::scsiCommand(int fd, const std::uint8_t *cdb, int cdbLength, std::uint8_t *data, int dataLength,
                              ScsiResult &result)
{
    sg_io_hdr_t io{};
    io.interface_id = 'S';
    io.cmd_len = std::uint8_t(cdbLength);
    io.cmdp = const_cast<std::uint8_t *>(cdb);
    io.mx_sb_len = sizeof result.sense;
    io.sbp = result.sense;
    io.dxfer_direction = dataLength > 0 ? SG_DXFER_FROM_DEV : SG_DXFER_NONE;
    io.dxferp = dataLength > 0 ? data : nullptr;
    io.dxfer_len = unsigned(std::max(dataLength, 0));
    io.timeout = kCommandTimeoutMs;
    const int rc = m_env.system->ioctl(fd, SG_IO, &io);
    if (rc < 0)
        return rc;
    result.status = io.status;
    result.hostStatus = io.host_status;
    result.driverStatus = io.driver_status;
    result.transferred = std::clamp(dataLength - io.resid, 0, std::max(dataLength, 0));
    result.senseLength = std::min<int>(io.sb_len_wr, sizeof result.sense);
    return 0;
}

int LinuxBackend::passThrough(int fd, int path, AtaExchange &exchange)
{
    const bool dataIn = exchange.dataIn;
    std::uint8_t *data = dataIn ? exchange.data.data() : nullptr;
    const int length = dataIn ? kSectorBytes : 0;
    ScsiResult r;
    int rc;
    if (path == AtaPassThroughPath) {
        const auto cdb = AtaPassThrough::command16(exchange.registers, dataIn);
        rc = scsiCommand(fd, cdb.data(), int(cdb.size()), data, length, r);
    } else {
        const auto cdb = AtaPassThrough::command12(exchange.registers, dataIn);
        rc = scsiCommand(fd, cdb.data(), int(cdb.size()), data, length, r);
    }
    if (rc < 0)
        return rc;
    if (r.hostStatus != 0 || (r.driverStatus & kDriverStatusErrorMask) != 0)
        return kNoAnswer;

    exchange.bytesReturned = std::uint32_t(r.transferred);
    if (r.status == AtaPassThrough::kStatusGood) {
        // A non-data command is only worth its returned registers; a layer
        // that ignored CK_COND and sent none has not answered it.
        exchange.registersReturned = false;
        return dataIn ? kAnswered : kNoAnswer;
    }
    if (r.status != AtaPassThrough::kStatusCheckCondition)
        return kNoAnswer;
    const auto sense = AtaPassThrough::parseSense(r.sense, r.senseLength);
    if (!sense || !sense->registers)
        return kNoAnswer;
    exchange.registers = *sense->registers;
    exchange.registersReturned = true;
    return kAnswered;
}

int LinuxBackend::driveCommand(int fd, AtaExchange &exchange)
{
    const AtaRegisters in = exchange.registers;
    int rc;
    if (exchange.dataIn) {
        // HDIO_DRIVE_CMD: command, sector number (SMART) or count, features,
        // sectors to read; the sector follows the four bytes. Under libata the
        // four bytes of a successful reply are left as sent: they are no status.
        std::uint8_t args[4 + kSectorBytes] = {};
        args[0] = in.command;
        args[1] = in.command == AtaCommands::kSmart ? in.sectorNumber : in.sectorCount;
        args[2] = in.features;
        args[3] = 1;
        rc = m_env.system->ioctl(fd, HDIO_DRIVE_CMD, args);
        if (rc >= 0) {
            std::memcpy(exchange.data.data(), args + 4, kSectorBytes);
            exchange.bytesReturned = kSectorBytes;
            exchange.driverError = 0;
            exchange.registersReturned = false;
            return kAnswered;
        }
    } else {
        // Non-data commands go through HDIO_DRIVE_TASK, the one HDIO call that
        // hands back the whole task file (RETURN STATUS answers in the LBA
        // registers; HDIO_DRIVE_CMD returns only status, error and count).
        std::uint8_t task[7] = {in.command,     in.features,     in.sectorCount, in.sectorNumber,
                                in.cylinderLow, in.cylinderHigh, in.driveHead};
        rc = m_env.system->ioctl(fd, HDIO_DRIVE_TASK, task);
        if (rc >= 0) {
            // The kernel copies the registers back only from descriptor-format
            // sense; otherwise the block stays as sent, and a command byte read
            // as a status has BSY set, which no finished command reports.
            if (task[0] & kAtaStatusBusy)
                return kNoAnswer;
            AtaRegisters &out = exchange.registers;
            out.command = task[0];
            out.features = task[1];
            out.sectorCount = task[2];
            out.sectorNumber = task[3];
            out.cylinderLow = task[4];
            out.cylinderHigh = task[5];
            out.driveHead = task[6];
            exchange.registersReturned = true;
            exchange.bytesReturned = 0;
            exchange.driverError = (out.command & kAtaStatusError) ? std::max<std::uint8_t>(out.features, 1) : 0;
            return kAnswered;
        }
    }
    if (!isAccessError(-rc))
        return rc;

    // Under libata both HDIO calls are the kernel sending ATA PASS-THROUGH (16)
    // on the caller's behalf, gated by CAP_SYS_ADMIN on top of CAP_SYS_RAWIO.
    // Without the former, send the same command directly: CAP_SYS_RAWIO is
    // all SMART needs then.
    const int direct = passThrough(fd, AtaPassThroughPath, exchange);
    if (direct == kAnswered) {
        const bool failed = exchange.registersReturned && (exchange.registers.command & kAtaStatusError);
        exchange.driverError = failed ? std::max<std::uint8_t>(exchange.registers.features, 1) : 0;
    }
    return direct;
}

bool LinuxBackend::ataCommand(DiskHandle handle, int path, int, AtaExchange &exchange)
{
    OpenDevice device;
    if (!lookup(handle, device))
        return false;
    int result;
    switch (path) {
    case AtaPassThroughPath:
    case IdePassThroughPath:
        result = passThrough(int(handle), path, exchange);
        break;
    case SmartIoctlPath:
        result = driveCommand(int(handle), exchange);
        break;
    default:
        return false;
    }
    noteCommand(device.path, path, result);
    return result == kAnswered;
}

int LinuxBackend::inquiry(int fd, int page, std::uint8_t *data, int length)
{
    const auto cdb = ScsiIdentity::inquiryCommand(page, std::uint16_t(length));
    ScsiResult r;
    if (scsiCommand(fd, cdb.data(), int(cdb.size()), data, length, r) < 0 || r.status != AtaPassThrough::kStatusGood
        || r.hostStatus != 0 || (r.driverStatus & kDriverStatusErrorMask) != 0)
        return -1;
    return r.transferred;
}

std::string LinuxBackend::vpdPage(int fd, const std::string &name, int page)
{
    std::uint8_t data[ScsiIdentity::kAtaInformationLength] = {};
    const int got = inquiry(fd, page, data, int(sizeof data));
    if (got > 0)
        return std::string(reinterpret_cast<const char *>(data), std::size_t(got));
    // The kernel keeps copies of the pages it read at probe time.
    char file[16];
    std::snprintf(file, sizeof file, "vpd_pg%02x", page);
    return SysfsBlock::readBytes(m_env.sysRoot + "/block/" + name + "/device/" + file);
}

std::optional<ScsiIdentity::Inquiry> LinuxBackend::readInquiry(int fd, const std::string &name)
{
    std::uint8_t data[96] = {};
    if (const auto parsed = ScsiIdentity::parseInquiry(data, inquiry(fd, -1, data, int(sizeof data))))
        return parsed;
    // The kernel keeps the strings of the INQUIRY it made at probe time.
    const std::string dir = m_env.sysRoot + "/block/" + name + "/device/";
    const auto model = SysfsBlock::readText(dir + "model");
    if (!model)
        return std::nullopt;
    ScsiIdentity::Inquiry fallback;
    fallback.deviceType = std::uint8_t(std::atoi(SysfsBlock::readText(dir + "type").value_or("0").c_str()));
    fallback.vendor = ScsiIdentity::trimmed(SysfsBlock::readText(dir + "vendor").value_or(""));
    fallback.product = ScsiIdentity::trimmed(*model);
    fallback.revision = ScsiIdentity::trimmed(SysfsBlock::readText(dir + "rev").value_or(""));
    return fallback;
}

int LinuxBackend::deviceDescriptor(DiskHandle handle, std::uint8_t *buffer, int size)
{
    OpenDevice device;
    if (!lookup(handle, device))
        return -1;
    const int fd = int(handle);
    std::optional<ScsiIdentity::Inquiry> inquiry = readInquiry(fd, device.name);
    if (!inquiry)
        return -1;

    const auto disk = SysfsBlock::disk(m_env.sysRoot, device.name);
    if (disk)
        inquiry->removable = disk->removable;

    std::optional<Sector> identify;
    if (ScsiIdentity::isAtaBehindTranslation(*inquiry)) {
        const std::string page = vpdPage(fd, device.name, ScsiIdentity::kAtaInformationPage);
        identify = ScsiIdentity::parseAtaInformation(reinterpret_cast<const std::uint8_t *>(page.data()),
                                                     int(page.size()));
    }
    std::optional<std::string> serial;
    if (!identify) {
        const std::string page = vpdPage(fd, device.name, ScsiIdentity::kUnitSerialPage);
        serial = ScsiIdentity::parseUnitSerial(reinterpret_cast<const std::uint8_t *>(page.data()), int(page.size()));
    }
    const auto identity = ScsiIdentity::chooseIdentity(*inquiry, identify, serial, disk && disk->usb);
    return DeviceDescriptor::write(identity, buffer, size);
}

std::vector<std::string> LinuxBackend::volumeNames()
{
    const auto devices = SysfsBlock::scan(m_env.sysRoot);
    const auto mounts = MountTable::read(m_env.mountInfo);
    std::vector<std::string> names;
    for (std::size_t i = 0; i < devices.size(); ++i) {
        const SysfsBlock::Device &d = devices[i];
        // Loop, device-mapper and RAID devices lie on no one disk.
        if (d.isVirtual)
            continue;
        const bool hasPartitions = i + 1 < devices.size() && devices[i + 1].disk == d.name && devices[i + 1].partition;
        // A disk with partitions is no volume itself; one without is when a
        // file system on the whole disk is mounted.
        const bool wholeDiskVolume = d.partition == 0 && !hasPartitions
            && std::any_of(mounts.begin(), mounts.end(), [&](const auto &m) { return mountIsOf(m, d); });
        if (d.partition != 0 || wholeDiskVolume)
            names.push_back(m_env.deviceDir + "/" + d.name);
    }
    return names;
}

namespace {

// The sysfs entry of a volume named by its device node.
std::optional<SysfsBlock::Device> volumeDevice(const std::string &sysRoot, const std::string &deviceDir,
                                               const std::string &volumeName)
{
    const std::string prefix = deviceDir + "/";
    if (volumeName.rfind(prefix, 0) != 0)
        return std::nullopt;
    const auto devices = SysfsBlock::scan(sysRoot);
    const SysfsBlock::Device *d = findDevice(devices, volumeName.substr(prefix.size()));
    if (!d || d->isVirtual)
        return std::nullopt;
    return *d;
}

} // namespace

bool LinuxBackend::isFixedVolume(const std::string &volumeName)
{
    const auto d = volumeDevice(m_env.sysRoot, m_env.deviceDir, volumeName);
    return d && !d->removable;
}

bool LinuxBackend::volumeDeviceNumber(const std::string &volumeName, std::int32_t &number)
{
    const auto d = volumeDevice(m_env.sysRoot, m_env.deviceDir, volumeName);
    const int index = d ? SysfsBlock::diskIndex(d->disk) : -1;
    if (index < 0)
        return false;
    number = index;
    return true;
}

bool LinuxBackend::volumeSpace(const std::string &volumeName, VolumeSpace &out)
{
    const auto d = volumeDevice(m_env.sysRoot, m_env.deviceDir, volumeName);
    if (!d)
        return false;
    for (const MountTable::Mount &mount : mountsByPreference(MountTable::read(m_env.mountInfo))) {
        if (!mountIsOf(mount, *d))
            continue;
        struct statvfs st{};
        if (::statvfs(mount.mountPoint.c_str(), &st) != 0)
            return false;
        out.sectorsPerCluster = 1;
        out.bytesPerSector = st.f_frsize;
        out.totalClusters = st.f_blocks;
        // What an ordinary user may still write, as the free-space query
        // reports it; the blocks kept for root are not free to them.
        out.freeClusters = st.f_bavail;
        return true;
    }
    return false;
}

bool LinuxBackend::volumeInformation(const std::string &volumeName, VolumeInformation &out)
{
    if (!volumeDevice(m_env.sysRoot, m_env.deviceDir, volumeName))
        return false;
    return BlockProbe::probe(volumeName, out);
}

std::vector<MountPoint> LinuxBackend::mountPoints()
{
    const auto devices = SysfsBlock::scan(m_env.sysRoot);
    std::vector<MountPoint> roots;
    for (const MountTable::Mount &mount : mountsByPreference(MountTable::read(m_env.mountInfo))) {
        const auto d = std::find_if(devices.begin(), devices.end(), [&](const SysfsBlock::Device &dev) {
            return !dev.isVirtual && !dev.removable && mountIsOf(mount, dev);
        });
        if (d != devices.end())
            roots.push_back(MountPoint{mount.mountPoint, m_env.deviceDir + "/" + d->name});
    }
    return roots;
}

std::int64_t LinuxBackend::readAt(DiskHandle handle, std::uint64_t offset, std::uint8_t *buffer, std::uint32_t length)
{
    OpenDevice device;
    if (!lookup(handle, device) || !buffer)
        return -1;

    std::uint8_t *target = buffer;
    std::unique_ptr<std::uint8_t, decltype(&std::free)> bounce(nullptr, &std::free);
    if (device.directIo && reinterpret_cast<std::uintptr_t>(buffer) % kDirectAlignment != 0) {
        void *aligned = nullptr;
        if (posix_memalign(&aligned, kDirectAlignment, std::max<std::size_t>(length, 1)) != 0)
            return -1;
        bounce.reset(static_cast<std::uint8_t *>(aligned));
        target = bounce.get();
    }

    const std::int64_t done = continued(length, [&](std::uint32_t at) {
        return m_env.system->pread(int(handle), target + at, length - at, off_t(offset + at));
    });
    if (done < 0)
        return -1;
    if (bounce)
        std::memcpy(buffer, target, std::size_t(done));
    return done;
}

std::int64_t LinuxBackend::verifyAt(DiskHandle handle, std::uint64_t offset, std::uint8_t *scratch, std::uint32_t length)
{
    OpenDevice device;
    if (!lookup(handle, device))
        return -1;
    // Scanned sectors are only checked, never looked at: copying them out of the page cache
    // would cost the scan as much CPU as the reading itself. Direct I/O reads the disk, not
    // the cache, so it keeps the buffer.
    if (device.directIo)
        return readAt(handle, offset, scratch, length);
    const std::int64_t done = continued(length, [&](std::uint32_t at) {
        return m_env.system->discard(int(handle), length - at, off_t(offset + at));
    });
    if (done == -EINVAL)
        return readAt(handle, offset, scratch, length); // a file system without splicing
    return done < 0 ? -1 : done;
}
