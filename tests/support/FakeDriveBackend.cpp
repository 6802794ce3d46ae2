#include "FakeDriveBackend.h"

#include <algorithm>
#include <cstring>
#include <tuple>

namespace {

// Commands are told apart by command byte and features, which is what
// separates the SMART sub-commands.
int commandKey(const AtaRegisters &r)
{
    return r.command << 8 | r.features;
}

constexpr int kAnyCommand = -1;

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

std::vector<FakeDriveBackend::Call> FakeDriveBackend::calls(const std::string &operation) const
{
    std::lock_guard lock(m_mutex);
    std::vector<Call> result = m_calls;
    std::erase_if(result, [&](const Call &call) { return !operation.empty() && call.operation != operation; });
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
    std::vector<std::uint8_t> bytes(40, 0);
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
    setSectorText(sector, 20, 20, serial);
    setSectorText(sector, 46, 8, firmware);
    setSectorText(sector, 54, 40, model);
    setSectorWord(sector, 80, 0x007E);
    setSectorWord(sector, 82, 0x0001);
    setSectorWord(sector, 83, 0x4000);
    setSectorWord(sector, 85, 0x0001);
    setSectorWord(sector, 87, 0x4000);
    return sector;
}

const FakeDriveBackend::Disk *FakeDriveBackend::enter(Call call, DiskHandle handle, std::unique_lock<std::mutex> &lock)
{
    if (handle != kNoHandle) {
        const auto it = m_open.find(handle);
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
    return it == m_disks.end() ? nullptr : &it->second;
}

std::string FakeDriveBackend::diskPath(int probe) const
{
    return "/fake/disk" + std::to_string(probe);
}

DiskHandle FakeDriveBackend::openDisk(const std::string &path)
{
    std::unique_lock lock(m_mutex);
    Call call("openDisk");
    for (const auto &[probe, script] : m_disks) {
        if (diskPath(probe) == path)
            call.probe = probe;
    }
    const Disk *script = enter(call, kNoHandle, lock);
    if (!script || !script->opens)
        return kNoHandle;
    m_open[m_nextHandle] = call.probe;
    return m_nextHandle++;
}

void FakeDriveBackend::closeDisk(DiskHandle handle)
{
    std::unique_lock lock(m_mutex);
    enter(Call("closeDisk"), handle, lock);
    m_open.erase(handle);
}

int FakeDriveBackend::deviceDescriptor(DiskHandle handle, std::uint8_t *buffer, int size)
{
    std::unique_lock lock(m_mutex);
    Call call("deviceDescriptor");
    call.size = size;
    const Disk *script = enter(call, handle, lock);
    if (!script || !script->descriptor)
        return -1;
    const int count = std::min(size, int(script->descriptor->size()));
    std::memcpy(buffer, script->descriptor->data(), std::size_t(count));
    return count;
}

bool FakeDriveBackend::smartVersion(DiskHandle handle, std::uint8_t &version, std::uint8_t &revision)
{
    std::pair<std::uint8_t, std::uint8_t> both;
    if (!query("smartVersion", handle, &Disk::smartVersion, both))
        return false;
    std::tie(version, revision) = both;
    return true;
}

bool FakeDriveBackend::ataCommand(DiskHandle handle, int path, int probeIndex, AtaExchange &exchange)
{
    std::unique_lock lock(m_mutex);
    Call call("ataCommand");
    call.path = path;
    call.probeIndex = probeIndex;
    call.registers = exchange.registers;
    call.dataIn = exchange.dataIn;
    call.firstDataByte = exchange.data[0];
    const Disk *script = enter(call, handle, lock);
    const AtaReply reply = script ? script->replyFor(path, exchange.registers) : AtaReply::refused();
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
    enter(Call("volumeNames"), kNoHandle, lock);
    std::vector<std::string> names;
    for (const Volume &v : volumes)
        names.push_back(v.name);
    return names;
}

const FakeDriveBackend::Volume *FakeDriveBackend::find(const char *operation, const std::string &name,
                                                       std::unique_lock<std::mutex> &lock)
{
    enter(Call(operation), kNoHandle, lock);
    const auto it = std::find_if(volumes.begin(), volumes.end(), [&](const Volume &v) { return v.name == name; });
    return it == volumes.end() ? nullptr : &*it;
}

bool FakeDriveBackend::isFixedVolume(const std::string &volumeName)
{
    std::unique_lock lock(m_mutex);
    const Volume *v = find("isFixedVolume", volumeName, lock);
    return v && v->fixed;
}

std::vector<MountPoint> FakeDriveBackend::mountPoints()
{
    std::unique_lock lock(m_mutex);
    enter(Call("mountPoints"), kNoHandle, lock);
    return mounts;
}
