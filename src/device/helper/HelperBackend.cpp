#include "HelperBackend.h"

#include <QDBusArgument>
#include <QDBusConnectionInterface>
#include <QDBusError>
#include <QDBusReply>

#include <algorithm>
#include <cstring>

namespace {

// A new list is asked for when discovery starts again; within one discovery pass the 26
// probes use the same list.
constexpr auto kListLifetime = std::chrono::seconds(5);
// ListDisks, and the first read of a scan, may wait for an administrator's password typed
// into the desktop's agent.
constexpr int kListTimeoutMs = 5 * 60 * 1000;
// A command the drive does not answer ends in the kernel after 10 s; the reply comes soon after.
constexpr int kCommandTimeoutMs = 30 * 1000;
constexpr char kHelperSubject[] = "Korvane's disk helper (org.korvane.Helper1)";

bool isNotAuthorised(const QDBusMessage &reply)
{
    return reply.errorName() == QLatin1String(HelperProtocol::kErrorNotAuthorized);
}

// The bus could not hand the call to a helper at all (not installed, failed to start, gone).
bool isNoHelper(const QDBusMessage &reply)
{
    const QDBusError::ErrorType type = QDBusError(reply).type();
    return type == QDBusError::ServiceUnknown || type == QDBusError::NoReply || type == QDBusError::Disconnected
           || type == QDBusError::UnknownObject
           || reply.errorName().startsWith(QLatin1String("org.freedesktop.DBus.Error.Spawn."));
}

} // namespace

HelperBackend::HelperBackend(const QDBusConnection &bus, UnsupportedDisks unsupported)
    : m_bus(bus)
    , m_unsupported(std::move(unsupported))
{
    HelperProtocol::registerTypes();
}

HelperBackend::~HelperBackend() = default;

bool HelperBackend::available(const QDBusConnection &bus)
{
    if (!bus.isConnected())
        return false;
    const QDBusConnectionInterface *daemon = bus.interface();
    if (daemon->isServiceRegistered(QLatin1String(HelperProtocol::kService)))
        return true;
    const QDBusReply<QStringList> activatable = daemon->activatableServiceNames();
    return activatable.isValid() && activatable.value().contains(QLatin1String(HelperProtocol::kService));
}

// The helper leaves after a minute without calls; a call that reached it while it was leaving
// is made once more, and the bus starts a new one.
QDBusMessage HelperBackend::call(const QString &method, const QVariantList &arguments, int timeoutMs) const
{
    QDBusMessage message = QDBusMessage::createMethodCall(QLatin1String(HelperProtocol::kService),
                                                          QLatin1String(HelperProtocol::kObjectPath),
                                                          QLatin1String(HelperProtocol::kInterface), method);
    message.setArguments(arguments);
    QDBusMessage reply = m_bus.call(message, QDBus::Block, timeoutMs);
    if (QDBusError(reply).type() == QDBusError::NoReply && reply.errorMessage().contains(QLatin1String("disconnected")))
        reply = m_bus.call(message, QDBus::Block, timeoutMs);
    return reply;
}

// Returns whether the call failed. A refusal of access is kept to be told once; a command the
// helper refuses as not one to send is not a problem of access and is only answered.
bool HelperBackend::noteFailure(const std::string &subject, const QDBusMessage &reply) const
{
    if (reply.type() != QDBusMessage::ErrorMessage)
        return false;
    if (reply.errorName() == QLatin1String(HelperProtocol::kErrorRefused))
        return true;
    std::lock_guard lock(m_mutex);
    if (isNotAuthorised(reply))
        m_notAuthorised = true;
    else if (isNoHelper(reply))
        m_noHelper = true;
    m_problems[subject] = subject + ": " + reply.errorMessage().toStdString();
    return true;
}

void HelperBackend::listDisks() const
{
    {
        std::lock_guard lock(m_mutex);
        if (m_haveList && std::chrono::steady_clock::now() - m_listed < kListLifetime)
            return;
    }
    const QDBusMessage reply = call(QStringLiteral("ListDisks"), {}, kListTimeoutMs);
    std::vector<HelperProtocol::Disk> disks;
    if (!noteFailure(kHelperSubject, reply) && !reply.arguments().isEmpty()) {
        for (const QVariantMap &map : HelperProtocol::mapList(reply.arguments().constFirst())) {
            if (const auto disk = HelperProtocol::diskFromMap(map))
                disks.push_back(*disk);
        }
    }
    std::lock_guard lock(m_mutex);
    m_disks = std::move(disks);
    m_listed = std::chrono::steady_clock::now();
    m_haveList = true;
}

std::vector<std::string> HelperBackend::accessProblems() const
{
    std::lock_guard lock(m_mutex);
    std::vector<std::string> lines;
    for (const auto &entry : m_problems)
        lines.push_back(entry.second);
    return lines;
}

std::string HelperBackend::accessAdvice(const std::string &program) const
{
    std::lock_guard lock(m_mutex);
    if (m_notAuthorised)
        return "The disk helper reads the disks for users that polkit allows: members of an active local "
               "session may, others are asked for an administrator's password by the session's authentication "
               "agent. Start " + program + " in your desktop session, or ask an administrator to allow the "
               "polkit action org.korvane.read-smart for you.";
    if (m_noHelper)
        return "The disk helper did not answer. Reinstall the korvane package, or run " + program
               + " as root (sudo " + program + ").";
    return {};
}

std::vector<std::string> HelperBackend::unsupportedDisks() const
{
    return m_unsupported ? m_unsupported() : std::vector<std::string>{};
}

std::string HelperBackend::diskPath(int probe) const
{
    listDisks();
    std::lock_guard lock(m_mutex);
    for (const HelperProtocol::Disk &disk : m_disks) {
        if (disk.probe == probe)
            return disk.path;
    }
    // A probe without a disk still gets the name the kernel would give it, for the trace.
    return std::string("/dev/sd") + char('a' + probe);
}

DiskHandle HelperBackend::openDisk(const std::string &path)
{
    listDisks();
    std::lock_guard lock(m_mutex);
    const auto it = std::find_if(m_disks.begin(), m_disks.end(),
                                 [&](const HelperProtocol::Disk &d) { return d.path == path; });
    if (it == m_disks.end())
        return kNoHandle;
    const DiskHandle handle = m_nextHandle++;
    m_open[handle] = *it;
    return handle;
}

DiskHandle HelperBackend::openForRead(const std::string &path, bool)
{
    const DiskHandle handle = openDisk(path);
    if (handle == kNoHandle)
        return kNoHandle;
    // The scan's authorisation is asked for here, with the first sector: a refusal is then a
    // disk that could not be opened, not a disk whose every sector failed. A sector that cannot
    // be read is left for the scan to find.
    const QDBusMessage reply = call(QStringLiteral("ReadSectors"), {QByteArray::fromStdString(path), 0ull, 512u},
                                    kListTimeoutMs);
    if (isNotAuthorised(reply) || isNoHelper(reply)) {
        noteFailure(path, reply);
        closeDisk(handle);
        return kNoHandle;
    }
    return handle;
}

void HelperBackend::closeDisk(DiskHandle handle)
{
    std::lock_guard lock(m_mutex);
    m_open.erase(handle);
}

bool HelperBackend::disk(DiskHandle handle, HelperProtocol::Disk &out) const
{
    std::lock_guard lock(m_mutex);
    const auto it = m_open.find(handle);
    if (it == m_open.end())
        return false;
    out = it->second;
    return true;
}

bool HelperBackend::withDisk(DiskHandle handle, const std::function<bool(const HelperProtocol::Disk &)> &answer) const
{
    HelperProtocol::Disk d;
    return disk(handle, d) && answer(d);
}

bool HelperBackend::geometry(DiskHandle handle, DiskGeometry &out)
{
    return withDisk(handle, [&](const HelperProtocol::Disk &d) { out = d.geometry; return true; });
}

bool HelperBackend::diskLength(DiskHandle handle, std::uint64_t &bytes)
{
    return withDisk(handle, [&](const HelperProtocol::Disk &d) { bytes = d.length; return true; });
}

bool HelperBackend::deviceNumber(DiskHandle handle, std::int32_t &number)
{
    return withDisk(handle, [&](const HelperProtocol::Disk &d) {
        number = d.number;
        return d.number >= 0;
    });
}

int HelperBackend::deviceDescriptor(DiskHandle handle, std::uint8_t *buffer, int size)
{
    int n = -1;
    withDisk(handle, [&](const HelperProtocol::Disk &d) {
        if (d.descriptor.empty() || size <= 0)
            return false;
        n = std::min(size, int(d.descriptor.size()));
        std::memcpy(buffer, d.descriptor.data(), std::size_t(n));
        return true;
    });
    return n;
}

bool HelperBackend::smartVersion(DiskHandle handle, std::uint8_t &version, std::uint8_t &revision)
{
    return withDisk(handle, [&](const HelperProtocol::Disk &d) {
        version = d.smartVersion;
        revision = d.smartRevision;
        return d.hasSmartVersion;
    });
}

bool HelperBackend::ataCommand(DiskHandle handle, int path, int, AtaExchange &exchange)
{
    HelperProtocol::Disk d;
    if (!disk(handle, d))
        return false;
    const QDBusMessage reply = call(QStringLiteral("AtaCommand"),
                                    {QByteArray::fromStdString(d.path), path,
                                     HelperProtocol::registersToBytes(exchange.registers)},
                                    kCommandTimeoutMs);
    if (noteFailure(d.path, reply) || reply.arguments().isEmpty())
        return false;
    return HelperProtocol::exchangeFromMap(qdbus_cast<QVariantMap>(reply.arguments().constFirst()), exchange);
}

std::int64_t HelperBackend::readAt(DiskHandle handle, std::uint64_t offset, std::uint8_t *buffer, std::uint32_t length)
{
    HelperProtocol::Disk d;
    if (!disk(handle, d) || !buffer)
        return -1;
    const QDBusMessage reply = call(QStringLiteral("ReadSectors"),
                                    {QByteArray::fromStdString(d.path), qulonglong(offset), uint(length)},
                                    kCommandTimeoutMs);
    if (noteFailure(d.path, reply) || reply.arguments().isEmpty())
        return -1;
    const QByteArray data = reply.arguments().constFirst().toByteArray();
    const std::uint32_t n = std::min<std::uint32_t>(length, std::uint32_t(data.size()));
    std::memcpy(buffer, data.constData(), n);
    return n;
}

void HelperBackend::listVolumes()
{
    QDBusMessage reply = call(QStringLiteral("Volumes"), {}, kListTimeoutMs);
    std::vector<HelperProtocol::Volume> volumes;
    std::vector<MountPoint> mounts;
    if (!noteFailure(kHelperSubject, reply) && reply.arguments().size() == 2) {
        for (const QVariantMap &map : HelperProtocol::mapList(reply.arguments().at(0)))
            volumes.push_back(HelperProtocol::volumeFromMap(map));
        for (const QVariantMap &map : HelperProtocol::mapList(reply.arguments().at(1)))
            mounts.push_back(HelperProtocol::mountFromMap(map));
    }
    std::lock_guard lock(m_mutex);
    m_volumes = std::move(volumes);
    m_mounts = std::move(mounts);
    m_haveVolumes = true;
}

// The volume queries of one mapping pass are answered from the list volumeNames() fetched.
std::vector<std::string> HelperBackend::volumeNames()
{
    listVolumes();
    std::lock_guard lock(m_mutex);
    std::vector<std::string> names;
    for (const HelperProtocol::Volume &v : m_volumes)
        names.push_back(v.name);
    return names;
}

const HelperProtocol::Volume *HelperBackend::volume(const std::string &name) const
{
    const auto it = std::find_if(m_volumes.begin(), m_volumes.end(),
                                 [&](const HelperProtocol::Volume &v) { return v.name == name; });
    return it == m_volumes.end() ? nullptr : &*it;
}

bool HelperBackend::withVolume(const std::string &name,
                               const std::function<bool(const HelperProtocol::Volume &)> &answer) const
{
    std::lock_guard lock(m_mutex);
    const HelperProtocol::Volume *v = volume(name);
    return v && answer(*v);
}

bool HelperBackend::isFixedVolume(const std::string &volumeName)
{
    return withVolume(volumeName, [](const HelperProtocol::Volume &v) { return v.fixed; });
}

bool HelperBackend::volumeSpace(const std::string &volumeName, VolumeSpace &out)
{
    return withVolume(volumeName, [&](const HelperProtocol::Volume &v) {
        out = v.space;
        return v.hasSpace;
    });
}

bool HelperBackend::volumeInformation(const std::string &volumeName, VolumeInformation &out)
{
    return withVolume(volumeName, [&](const HelperProtocol::Volume &v) {
        out = v.information;
        return v.hasInformation;
    });
}

bool HelperBackend::volumeDeviceNumber(const std::string &volumeName, std::int32_t &number)
{
    return withVolume(volumeName, [&](const HelperProtocol::Volume &v) {
        number = v.number;
        return v.hasNumber;
    });
}

std::vector<MountPoint> HelperBackend::mountPoints()
{
    bool have;
    {
        std::lock_guard lock(m_mutex);
        have = m_haveVolumes;
    }
    if (!have)
        listVolumes();
    std::lock_guard lock(m_mutex);
    return m_mounts;
}
