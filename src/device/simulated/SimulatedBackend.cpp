#include "SimulatedBackend.h"

#include "SimulatedDisk.h"
#include "SimulatedDiskReader.h"
#include "device/UserPath.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QSet>

#include <algorithm>
#include <array>
#include <atomic>
#include <chrono>
#include <cstring>
#include <filesystem>
#include <functional>
#include <map>
#include <mutex>
#include <optional>
#include <thread>

namespace {

constexpr char kPathPrefix[] = "sim://";
constexpr std::uint8_t kSmartDriverVersion = 1;
constexpr std::uint8_t kSmartDriverRevision = 1;

// Long waits are cut into steps this short, so a cancel ends them at once.
constexpr auto kWaitStep = std::chrono::milliseconds(10);

/// Waits \a milliseconds unless \a cancelled or \a closed is set first; true when the time ran out.
bool waitUnlessCancelled(double milliseconds, const std::atomic<bool> &cancelled, const std::atomic<bool> &closed)
{
    using Clock = std::chrono::steady_clock;
    const auto deadline =
        Clock::now() + std::chrono::duration_cast<Clock::duration>(std::chrono::duration<double, std::milli>(milliseconds));
    while (!cancelled.load() && !closed.load()) {
        const auto now = Clock::now();
        if (now >= deadline)
            return true;
        std::this_thread::sleep_for(std::min<Clock::duration>(deadline - now, kWaitStep));
    }
    return false;
}

struct VolumeEntry
{
    std::string name;
    std::size_t disk = 0;
    std::size_t volume = 0;
};

/// A disk read from a file, and whether the file was a description (which
/// may name a dump that then must not count as a disk of its own).
struct LoadedDisk
{
    SimulatedDisk disk;
    bool fromDescription = false;
};

using Report = std::function<void(const QString &file, const QString &why)>;

std::optional<LoadedDisk> readFile(const QFileInfo &file, bool description, const Report &report)
{
    QString why;
    auto disk = description ? SimulatedDiskReader::readDescription(file.filePath(), &why)
                            : SimulatedDiskReader::readDump(file.filePath(), &why);
    if (!disk) {
        report(file.filePath(), why);
        return std::nullopt;
    }
    return LoadedDisk{std::move(*disk), description};
}

#ifdef Q_OS_UNIX
// A folder listing passes over such names without a word; say that they are there, as we cannot
// even look inside to tell a disk from somebody's notes.
void reportUnreadableNames(const QString &folder, const Report &report)
{
    std::error_code ec;
    for (const auto &entry : std::filesystem::directory_iterator(QFile::encodeName(folder).toStdString(), ec)) {
        const QByteArray name = QByteArray::fromStdString(entry.path().filename().native());
        std::error_code kindError;
        if (QFile::encodeName(QFile::decodeName(name)) != name && entry.is_regular_file(kindError))
            report(QDir(folder).filePath(QFile::decodeName(name)), UserPath::notUtf8Text());
    }
}
#endif

bool isDescription(const QFileInfo &file)
{
    return file.suffix().compare(QLatin1String("json"), Qt::CaseInsensitive) == 0;
}

// A folder: descriptions (*.json) and dumps (files that start with a dump
// section tag), in name order; everything else there is somebody's notes.
// A dump that a description of the same folder starts from is not a disk
// of its own.
void readFolder(const QString &folder, std::vector<LoadedDisk> &out, const Report &report)
{
    std::vector<LoadedDisk> found;
    const QFileInfoList entries = QDir(folder).entryInfoList(QDir::Files, QDir::Name);
    for (const QFileInfo &entry : entries) {
        const bool description = isDescription(entry);
        if (!description && !SimulatedDiskReader::looksLikeDump(entry.filePath()))
            continue;
        if (auto loaded = readFile(entry, description, report))
            found.push_back(std::move(*loaded));
    }
#ifdef Q_OS_UNIX
    reportUnreadableNames(folder, report);
#endif
    QSet<QString> named;
    for (const LoadedDisk &loaded : found) {
        if (loaded.fromDescription && !loaded.disk.dumpFile.isEmpty())
            named.insert(loaded.disk.dumpFile);
    }
    for (LoadedDisk &loaded : found) {
        if (loaded.fromDescription || !named.contains(loaded.disk.dumpFile))
            out.push_back(std::move(loaded));
    }
}

// Device numbers a description asks for come first; the other disks take
// the lowest numbers still free, in load order.
std::vector<SimulatedDisk> placeDisks(std::vector<LoadedDisk> &loaded, const Report &report)
{
    std::array<const SimulatedDisk *, kDiskProbes> taken{};
    std::vector<SimulatedDisk *> placed;
    for (LoadedDisk &l : loaded) {
        SimulatedDisk &disk = l.disk;
        if (!disk.requestedNumber)
            continue;
        const int n = *disk.requestedNumber;
        if (taken[n]) {
            report(disk.sourceFile, QStringLiteral("deviceNumber %1 is already taken by %2")
                                        .arg(n)
                                        .arg(QDir::toNativeSeparators(taken[n]->sourceFile)));
            continue;
        }
        taken[n] = &disk;
        disk.number = n;
        placed.push_back(&disk);
    }
    for (LoadedDisk &l : loaded) {
        SimulatedDisk &disk = l.disk;
        if (disk.requestedNumber)
            continue;
        const auto freeNumber = std::find(taken.begin(), taken.end(), nullptr);
        if (freeNumber == taken.end()) {
            report(disk.sourceFile, QStringLiteral("no free device number left (at most %1 disks)").arg(kDiskProbes));
            continue;
        }
        *freeNumber = &disk;
        disk.number = int(freeNumber - taken.begin());
        placed.push_back(&disk);
    }
    std::sort(placed.begin(), placed.end(), [](const SimulatedDisk *a, const SimulatedDisk *b) { return a->number < b->number; });
    std::vector<SimulatedDisk> disks;
    for (SimulatedDisk *disk : placed)
        disks.push_back(std::move(*disk));
    return disks;
}

} // namespace

struct SimulatedBackend::Private
{
    struct OpenHandle
    {
        std::size_t disk = 0;
        std::shared_ptr<std::atomic<bool>> closed;
    };

    // Set up by load() and read-only afterwards, so threads share them freely.
    std::vector<SimulatedDisk> disks;
    std::vector<VolumeEntry> volumes;

    std::atomic<bool> hangsCancelled{false};

    // Handles and poll counts change under calls from several threads.
    std::mutex mutex;
    std::map<DiskHandle, OpenHandle> handles;
    std::vector<quint64> polls;
    std::vector<char> gone; ///< per disk: it has disappeared, and opens and reads fail
    DiskHandle nextHandle = 1;

    bool isGone(std::size_t disk)
    {
        std::lock_guard lock(mutex);
        return gone[disk] != 0;
    }

    const SimulatedDisk *diskNumbered(int number) const
    {
        const auto it = std::find_if(disks.begin(), disks.end(), [number](const SimulatedDisk &d) { return d.number == number; });
        return it == disks.end() ? nullptr : &*it;
    }

    std::optional<OpenHandle> lookup(DiskHandle handle)
    {
        std::lock_guard lock(mutex);
        const auto it = handles.find(handle);
        return it == handles.end() ? std::nullopt : std::optional(it->second);
    }

    const SimulatedDisk *diskOf(DiskHandle handle)
    {
        const auto open = lookup(handle);
        return open ? &disks[open->disk] : nullptr;
    }

    DiskHandle open(const std::string &path)
    {
        const std::string prefix = kPathPrefix;
        if (path.compare(0, prefix.size(), prefix) != 0 || path.size() == prefix.size())
            return kNoHandle;
        const std::string digits = path.substr(prefix.size());
        if (!std::all_of(digits.begin(), digits.end(), [](char c) { return c >= '0' && c <= '9'; }) || digits.size() > 3)
            return kNoHandle;
        const SimulatedDisk *disk = diskNumbered(std::stoi(digits));
        if (!disk || disk->openFails)
            return kNoHandle;
        std::lock_guard lock(mutex);
        if (gone[std::size_t(disk - disks.data())])
            return kNoHandle;
        const DiskHandle handle = nextHandle++;
        handles[handle] = OpenHandle{std::size_t(disk - disks.data()), std::make_shared<std::atomic<bool>>(false)};
        return handle;
    }

    const VolumeEntry *volumeNamed(const std::string &name) const
    {
        const auto it = std::find_if(volumes.begin(), volumes.end(), [&](const VolumeEntry &v) { return v.name == name; });
        return it == volumes.end() ? nullptr : &*it;
    }

    const SimulatedVolume &volumeOf(const VolumeEntry &entry) const { return disks[entry.disk].volumes[entry.volume]; }
};

SimulatedBackend::SimulatedBackend() : d(std::make_unique<Private>()) {}

SimulatedBackend::~SimulatedBackend() = default;

std::unique_ptr<SimulatedBackend> SimulatedBackend::load(const QStringList &paths, QStringList *errors)
{
    const Report report = [errors](const QString &file, const QString &why) {
        if (errors)
            errors->append(QStringLiteral("%1: %2").arg(QDir::toNativeSeparators(file), why));
    };
    std::vector<LoadedDisk> loaded;
    for (const QString &path : paths) {
        const QFileInfo info(path);
        if (info.isDir()) {
            readFolder(path, loaded, report);
        } else if (!info.exists()) {
            report(path, path.contains(QChar(QChar::ReplacementCharacter)) ? UserPath::notUtf8Text()
                                                                           : QStringLiteral("no such file or folder"));
        } else if (auto disk = readFile(info, isDescription(info), report)) {
            loaded.push_back(std::move(*disk));
        }
    }

    auto backend = std::make_unique<SimulatedBackend>();
    Private &p = *backend->d;
    p.disks = placeDisks(loaded, report);
    p.polls.assign(p.disks.size(), 0);
    p.gone.assign(p.disks.size(), 0);
    for (std::size_t i = 0; i < p.disks.size(); ++i) {
        for (std::size_t v = 0; v < p.disks[i].volumes.size(); ++v) {
            const std::string name = "\\\\?\\Volume{sim-" + std::to_string(p.disks[i].number) + "-" + std::to_string(v) + "}\\";
            p.volumes.push_back(VolumeEntry{name, i, v});
        }
    }
    return backend;
}

int SimulatedBackend::diskCount() const
{
    return int(d->disks.size());
}

void SimulatedBackend::cancelWaits()
{
    d->hangsCancelled = true;
}

std::vector<std::string> SimulatedBackend::accessProblems() const
{
    std::vector<std::string> lines;
    for (const SimulatedDisk &disk : d->disks)
        if (disk.openFails)
            lines.push_back(diskPath(disk.number) + ": cannot be opened for reading and writing (simulated)");
    return lines;
}

std::string SimulatedBackend::accessAdvice(const std::string &program) const
{
    return "These disks are simulated: " + program + " reads them once their descriptions no longer say \"openFails\".";
}

std::string SimulatedBackend::diskPath(int probe) const
{
    return kPathPrefix + std::to_string(probe);
}

DiskHandle SimulatedBackend::openDisk(const std::string &path)
{
    return d->open(path);
}

void SimulatedBackend::closeDisk(DiskHandle handle)
{
    // Closing a handle also ends a hang in progress on it, the way a watchdog
    // gets a stuck reader back.
    std::lock_guard lock(d->mutex);
    const auto it = d->handles.find(handle);
    if (it == d->handles.end())
        return;
    *it->second.closed = true;
    d->handles.erase(it);
}

bool SimulatedBackend::geometry(DiskHandle handle, DiskGeometry &out)
{
    const SimulatedDisk *disk = d->diskOf(handle);
    if (!disk || disk->fails(GeometryQuery))
        return false;
    out = disk->geometry;
    return true;
}

bool SimulatedBackend::diskLength(DiskHandle handle, std::uint64_t &bytes)
{
    const SimulatedDisk *disk = d->diskOf(handle);
    if (!disk || disk->fails(LengthQuery))
        return false;
    bytes = disk->sizeBytes;
    return true;
}

bool SimulatedBackend::deviceNumber(DiskHandle handle, std::int32_t &number)
{
    const SimulatedDisk *disk = d->diskOf(handle);
    if (!disk || disk->fails(DeviceNumberQuery))
        return false;
    number = disk->number;
    return true;
}

int SimulatedBackend::deviceDescriptor(DiskHandle handle, std::uint8_t *buffer, int size)
{
    const SimulatedDisk *disk = d->diskOf(handle);
    if (!disk || disk->fails(DescriptorQuery))
        return -1;
    return disk->writeDescriptor(buffer, size);
}

bool SimulatedBackend::smartVersion(DiskHandle handle, std::uint8_t &version, std::uint8_t &revision)
{
    const SimulatedDisk *disk = d->diskOf(handle);
    if (!disk || disk->fails(SmartVersionQuery))
        return false;
    version = kSmartDriverVersion;
    revision = kSmartDriverRevision;
    return true;
}

bool SimulatedBackend::ataCommand(DiskHandle handle, int path, int probeIndex, AtaExchange &exchange)
{
    // The handle already names the disk; the drive number path 1 carries adds nothing here.
    Q_UNUSED(probeIndex);
    const auto open = d->lookup(handle);
    if (!open)
        return false;
    const SimulatedDisk &disk = d->disks[open->disk];
    const SimulatedDisk::Outcome outcome = disk.classify(path, exchange);
    const bool isPoll = outcome == SimulatedDisk::Outcome::Data && SimulatedDisk::isSmartReadData(exchange.registers);

    if (isPoll) {
        quint64 upcoming = 0;
        {
            std::lock_guard lock(d->mutex);
            upcoming = d->polls[open->disk];
        }
        if (disk.hangsAt(upcoming)
            && !waitUnlessCancelled(disk.hangSeconds * 1000.0, d->hangsCancelled, *open->closed)) {
            return false;
        }
    }

    quint64 poll = 0;
    {
        std::lock_guard lock(d->mutex);
        quint64 &count = d->polls[open->disk];
        // Data answers the next poll; RETURN STATUS judges the latest one.
        poll = isPoll ? count++ : (count > 0 ? count - 1 : 0);
    }
    disk.complete(outcome, path, exchange, poll);
    return outcome != SimulatedDisk::Outcome::Refused;
}

std::vector<std::string> SimulatedBackend::volumeNames()
{
    std::vector<std::string> names;
    for (const VolumeEntry &v : d->volumes)
        names.push_back(v.name);
    return names;
}

bool SimulatedBackend::isFixedVolume(const std::string &volumeName)
{
    const VolumeEntry *v = d->volumeNamed(volumeName);
    return v && !d->disks[v->disk].removable;
}

bool SimulatedBackend::volumeSpace(const std::string &volumeName, VolumeSpace &out)
{
    const VolumeEntry *v = d->volumeNamed(volumeName);
    if (!v)
        return false;
    const SimulatedVolume &volume = d->volumeOf(*v);
    // The largest cluster that both figures fill exactly, so that the
    // byte counts come back unchanged.
    constexpr std::uint64_t kSector = 512;
    std::uint64_t sectorsPerCluster = 8;
    while (sectorsPerCluster > 1
           && (volume.totalBytes % (sectorsPerCluster * kSector) || volume.freeBytes % (sectorsPerCluster * kSector))) {
        sectorsPerCluster /= 2;
    }
    const std::uint64_t cluster = sectorsPerCluster * kSector;
    out.sectorsPerCluster = sectorsPerCluster;
    out.bytesPerSector = kSector;
    out.totalClusters = volume.totalBytes / cluster;
    out.freeClusters = volume.freeBytes / cluster;
    return true;
}

bool SimulatedBackend::volumeInformation(const std::string &volumeName, VolumeInformation &out)
{
    const VolumeEntry *v = d->volumeNamed(volumeName);
    if (!v)
        return false;
    const SimulatedVolume &volume = d->volumeOf(*v);
    out.label = volume.label;
    out.fileSystem = volume.fileSystem;
    out.serialNumber = volume.serialNumber;
    return true;
}

bool SimulatedBackend::volumeDeviceNumber(const std::string &volumeName, std::int32_t &number)
{
    const VolumeEntry *v = d->volumeNamed(volumeName);
    if (!v)
        return false;
    number = d->disks[v->disk].number;
    return true;
}

std::vector<MountPoint> SimulatedBackend::mountPoints()
{
    std::vector<MountPoint> mounts;
    for (const VolumeEntry &v : d->volumes) {
        const SimulatedVolume &volume = d->volumeOf(v);
        if (!volume.root.empty() && !d->disks[v.disk].removable)
            mounts.push_back(MountPoint{volume.root, v.name});
    }
    std::stable_sort(mounts.begin(), mounts.end(), [](const MountPoint &a, const MountPoint &b) { return a.root < b.root; });
    return mounts;
}

DiskHandle SimulatedBackend::openForRead(const std::string &path, bool directIo)
{
    // Simulated sectors have no cache to go around.
    Q_UNUSED(directIo);
    const DiskHandle handle = d->open(path);
    if (handle != kNoHandle && d->diskOf(handle)->scanLocked) {
        closeDisk(handle);
        return kNoHandle;
    }
    return handle;
}

std::int64_t SimulatedBackend::readAt(DiskHandle handle, std::uint64_t offset, std::uint8_t *buffer,
                                      std::uint32_t length)
{
    const auto open = d->lookup(handle);
    if (!open || !buffer)
        return -1;
    const SimulatedDisk &disk = d->disks[open->disk];
    if (offset >= disk.sizeBytes)
        return 0;
    const std::uint32_t count = std::uint32_t(std::min<std::uint64_t>(length, disk.sizeBytes - offset));
    if (const double latency = disk.readLatencyFor(offset, count); latency > 0)
        waitUnlessCancelled(latency, d->hangsCancelled, *open->closed);
    if (disk.disappearsWith(offset, count)) {
        std::lock_guard lock(d->mutex);
        d->gone[open->disk] = 1;
    }
    if (open->closed->load() || d->isGone(open->disk) || disk.hasBadSector(offset, count))
        return -1;
    std::memset(buffer, 0, count);
    return count;
}
