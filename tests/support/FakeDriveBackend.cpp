#include "FakeDriveBackend.h"

#include <algorithm>
#include <cstring>

namespace {

// Commands are told apart by command byte and features, which is what
// separates the SMART sub-commands.
int commandKey(const AtaRegisters &r)
{
    return r.command << 8 | r.features;
}

constexpr int kAnyCommand = -1;
constexpr std::size_t kDescriptorHeader = 40;

// Hands a scripted value out; an unset one is a failing query.
template <typename T>
bool give(const std::optional<T> &value, T &out)
{
    if (!value)
        return false;
    out = *value;
    return true;
}

FakeDriveBackend::Call named(const char *operation)
{
    FakeDriveBackend::Call call;
    call.operation = operation;
    return call;
}

void putIdentifyText(Sector &sector, int offset, int length, const std::string &text)
{
    for (int i = 0; i < length; ++i) {
        const char c = i < int(text.size()) ? text[std::size_t(i)] : ' ';
        sector[std::size_t(offset + (i ^ 1))] = std::uint8_t(c);
    }
}

} // namespace

FakeDriveBackend::AtaReply FakeDriveBackend::AtaReply::refused()
{
    AtaReply reply;
    reply.accepted = false;
    return reply;
}

FakeDriveBackend::AtaReply FakeDriveBackend::AtaReply::sector(const Sector &sector)
{
    AtaReply reply;
    reply.data = sector;
    return reply;
}

void FakeDriveBackend::Disk::setReply(int path, const AtaRegisters &command, const AtaReply &reply)
{
    m_replies[{path, commandKey(command)}] = reply;
}

void FakeDriveBackend::Disk::setReply(int path, const AtaReply &reply)
{
    m_replies[{path, kAnyCommand}] = reply;
}

FakeDriveBackend::AtaReply FakeDriveBackend::Disk::replyFor(int path, const AtaRegisters &command) const
{
    auto it = m_replies.find({path, commandKey(command)});
    if (it == m_replies.end())
        it = m_replies.find({path, kAnyCommand});
    return it == m_replies.end() ? AtaReply::refused() : it->second;
}

FakeDriveBackend::Disk &FakeDriveBackend::addDisk(int probe)
{
    std::lock_guard lock(m_mutex);
    Disk disk;
    disk.geometry = DiskGeometry{1000, kFixedMedia, 255, 63, 512};
    disk.length = 1000ull * 255 * 63 * 512;
    disk.deviceNumber = probe;
    return m_disks[probe] = disk;
}

FakeDriveBackend::Disk *FakeDriveBackend::disk(int probe)
{
    std::lock_guard lock(m_mutex);
    const auto it = m_disks.find(probe);
    return it == m_disks.end() ? nullptr : &it->second;
}

std::vector<FakeDriveBackend::Call> FakeDriveBackend::calls() const
{
    std::lock_guard lock(m_mutex);
    return m_calls;
}

std::vector<FakeDriveBackend::Call> FakeDriveBackend::calls(const std::string &operation) const
{
    std::vector<Call> result;
    for (const Call &call : calls()) {
        if (call.operation == operation)
            result.push_back(call);
    }
    return result;
}

std::vector<int> FakeDriveBackend::ataPaths() const
{
    std::vector<int> paths;
    for (const Call &call : calls("ataCommand"))
        paths.push_back(call.path);
    return paths;
}

int FakeDriveBackend::openHandleCount() const
{
    std::lock_guard lock(m_mutex);
    return int(m_open.size());
}

void FakeDriveBackend::clearCalls()
{
    std::lock_guard lock(m_mutex);
    m_calls.clear();
}

std::vector<std::uint8_t> FakeDriveBackend::makeDescriptor(const std::string &vendor, const std::string &product,
                                                           const std::string &revision, const std::string &serial)
{
    std::vector<std::uint8_t> bytes(kDescriptorHeader, 0);
    const std::pair<int, const std::string *> fields[] = {
        {12, &vendor}, {16, &product}, {20, &revision}, {24, &serial}};
    for (const auto &[field, text] : fields) {
        if (text->empty())
            continue;
        setDescriptorOffset(bytes, field, std::uint32_t(bytes.size()));
        bytes.insert(bytes.end(), text->begin(), text->end());
        bytes.push_back(0);
    }
    bytes[0] = 1; // version
    bytes[4] = std::uint8_t(bytes.size()); // size, as far as one byte goes
    return bytes;
}

void FakeDriveBackend::setDescriptorOffset(std::vector<std::uint8_t> &descriptor, int field, std::uint32_t offset)
{
    for (int i = 0; i < 4; ++i)
        descriptor[std::size_t(field + i)] = std::uint8_t(offset >> (8 * i));
}

Sector FakeDriveBackend::makeIdentify(const std::string &model, const std::string &serial,
                                      const std::string &firmware)
{
    Sector sector{};
    putIdentifyText(sector, 20, 20, serial);
    putIdentifyText(sector, 46, 8, firmware);
    putIdentifyText(sector, 54, 40, model);
    setSectorWord(sector, 80, 0x007E);
    setSectorWord(sector, 82, 0x0001);
    setSectorWord(sector, 83, 0x4000);
    setSectorWord(sector, 85, 0x0001);
    setSectorWord(sector, 87, 0x4000);
    return sector;
}

std::string FakeDriveBackend::pathOf(int probe) const
{
    const auto it = m_disks.find(probe);
    if (it != m_disks.end() && !it->second.path.empty())
        return it->second.path;
    return "/fake/disk" + std::to_string(probe);
}

const FakeDriveBackend::Disk *FakeDriveBackend::enter(Call call, std::unique_lock<std::mutex> &lock)
{
    if (call.handle != kNoHandle) {
        const auto it = m_open.find(call.handle);
        call.probe = it == m_open.end() ? -1 : it->second;
    }
    m_calls.push_back(call);
    if (onCall) {
        const auto hook = onCall;
        lock.unlock();
        hook(call);
        lock.lock();
    }
    const auto it = m_disks.find(call.probe);
    return call.probe < 0 || it == m_disks.end() ? nullptr : &it->second;
}

const FakeDriveBackend::Disk *FakeDriveBackend::onHandle(const char *operation, DiskHandle handle,
                                                         std::unique_lock<std::mutex> &lock)
{
    Call call = named(operation);
    call.handle = handle;
    return enter(call, lock);
}

std::string FakeDriveBackend::diskPath(int probe) const
{
    std::lock_guard lock(m_mutex);
    return pathOf(probe);
}

DiskHandle FakeDriveBackend::open(const char *operation, const std::string &path)
{
    std::unique_lock lock(m_mutex);
    Call call = named(operation);
    call.argument = path;
    for (const auto &[probe, script] : m_disks) {
        if (pathOf(probe) == path)
            call.probe = probe;
    }
    const Disk *script = enter(call, lock);
    if (!script || !script->opens)
        return kNoHandle;
    const DiskHandle handle = m_nextHandle++;
    m_open[handle] = call.probe;
    return handle;
}

DiskHandle FakeDriveBackend::openDisk(const std::string &path)
{
    return open("openDisk", path);
}

DiskHandle FakeDriveBackend::openForRead(const std::string &path, bool)
{
    return open("openForRead", path);
}

void FakeDriveBackend::closeDisk(DiskHandle handle)
{
    std::unique_lock lock(m_mutex);
    onHandle("closeDisk", handle, lock);
    m_open.erase(handle);
}

bool FakeDriveBackend::geometry(DiskHandle handle, DiskGeometry &out)
{
    std::unique_lock lock(m_mutex);
    const Disk *script = onHandle("geometry", handle, lock);
    return script && give(script->geometry, out);
}

bool FakeDriveBackend::diskLength(DiskHandle handle, std::uint64_t &bytes)
{
    std::unique_lock lock(m_mutex);
    const Disk *script = onHandle("diskLength", handle, lock);
    return script && give(script->length, bytes);
}

bool FakeDriveBackend::deviceNumber(DiskHandle handle, std::int32_t &number)
{
    std::unique_lock lock(m_mutex);
    const Disk *script = onHandle("deviceNumber", handle, lock);
    return script && give(script->deviceNumber, number);
}

int FakeDriveBackend::deviceDescriptor(DiskHandle handle, std::uint8_t *buffer, int size)
{
    std::unique_lock lock(m_mutex);
    Call call = named("deviceDescriptor");
    call.handle = handle;
    call.size = size;
    const Disk *script = enter(call, lock);
    if (!script || !script->descriptor)
        return -1;
    const int count = std::min(size, int(script->descriptor->size()));
    std::memcpy(buffer, script->descriptor->data(), std::size_t(count));
    return count;
}

bool FakeDriveBackend::smartVersion(DiskHandle handle, std::uint8_t &version, std::uint8_t &revision)
{
    std::unique_lock lock(m_mutex);
    const Disk *script = onHandle("smartVersion", handle, lock);
    if (!script || !script->smartVersion)
        return false;
    version = script->smartVersion->first;
    revision = script->smartVersion->second;
    return true;
}

bool FakeDriveBackend::ataCommand(DiskHandle handle, int path, int probeIndex, AtaExchange &exchange)
{
    std::unique_lock lock(m_mutex);
    Call call = named("ataCommand");
    call.handle = handle;
    call.path = path;
    call.probeIndex = probeIndex;
    call.registers = exchange.registers;
    call.dataIn = exchange.dataIn;
    call.firstDataByte = exchange.data[0];
    const Disk *script = enter(call, lock);
    if (!script)
        return false;
    const AtaReply reply = script->replyFor(path, exchange.registers);
    if (!reply.accepted)
        return false;
    if (reply.data)
        exchange.data = *reply.data;
    exchange.bytesReturned = reply.bytesReturned.value_or(exchange.dataIn ? 512 : 0);
    exchange.driverError = reply.driverError;
    if (reply.registers) {
        exchange.registers = *reply.registers;
        exchange.registersReturned = true;
    }
    return true;
}

std::vector<std::string> FakeDriveBackend::volumeNames()
{
    std::unique_lock lock(m_mutex);
    enter(named("volumeNames"), lock);
    std::vector<std::string> names;
    for (const Volume &v : volumes)
        names.push_back(v.name);
    return names;
}

const FakeDriveBackend::Volume *FakeDriveBackend::volume(const char *operation, const std::string &name,
                                                         std::unique_lock<std::mutex> &lock)
{
    Call call = named(operation);
    call.argument = name;
    enter(call, lock);
    const auto it = std::find_if(volumes.begin(), volumes.end(), [&](const Volume &v) { return v.name == name; });
    return it == volumes.end() ? nullptr : &*it;
}

bool FakeDriveBackend::isFixedVolume(const std::string &volumeName)
{
    std::unique_lock lock(m_mutex);
    const Volume *v = volume("isFixedVolume", volumeName, lock);
    return v && v->fixed;
}

bool FakeDriveBackend::volumeSpace(const std::string &volumeName, VolumeSpace &out)
{
    std::unique_lock lock(m_mutex);
    const Volume *v = volume("volumeSpace", volumeName, lock);
    return v && give(v->space, out);
}

bool FakeDriveBackend::volumeInformation(const std::string &volumeName, VolumeInformation &out)
{
    std::unique_lock lock(m_mutex);
    const Volume *v = volume("volumeInformation", volumeName, lock);
    return v && give(v->information, out);
}

bool FakeDriveBackend::volumeDeviceNumber(const std::string &volumeName, std::int32_t &number)
{
    std::unique_lock lock(m_mutex);
    const Volume *v = volume("volumeDeviceNumber", volumeName, lock);
    return v && give(v->deviceNumber, number);
}

std::vector<MountPoint> FakeDriveBackend::mountPoints()
{
    std::unique_lock lock(m_mutex);
    enter(named("mountPoints"), lock);
    return mounts;
}

std::int64_t FakeDriveBackend::readAt(DiskHandle handle, std::uint64_t offset, std::uint8_t *buffer,
                                      std::uint32_t length)
{
    std::unique_lock lock(m_mutex);
    Call call = named("readAt");
    call.handle = handle;
    call.offset = offset;
    call.size = int(length);
    const Disk *script = enter(call, lock);
    if (!script)
        return -1;
    for (const auto &[first, last] : script->unreadable) {
        if (offset < last && offset + length > first)
            return -1;
    }
    const std::uint64_t size = script->length.value_or(0);
    const std::uint64_t count = offset >= size ? 0 : std::min<std::uint64_t>(length, size - offset);
    std::memset(buffer, 0, count);
    return std::int64_t(count);
}
