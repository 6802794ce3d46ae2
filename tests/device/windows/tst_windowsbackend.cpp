// The Windows backend against a fake of the Win32 disk calls: the fake checks the bytes of every
// buffer the backend hands over (control codes, sizes, offsets, sentinels) and answers as a
// driver would, or fails as one does. The command issuer runs over it, so the order in which the
// access paths are tried is checked end to end.
#include "device/AtaCommandIssuer.h"
#include "device/DeviceDescriptor.h"
#include "device/windows/WindowsBackend.h"
#include "device/windows/WindowsSystem.h"

#include "PlainCheck.h"

#include <algorithm>
#include <cstring>
#include <cwchar>
#include <map>
#include <memory>
#include <vector>

namespace {

using ll = long long;

enum Code : DWORD {
    Geometry = 0x70000,
    PartitionInfo = 0x74004,
    DeviceNumber = 0x2D1080,
    QueryProperty = 0x2D1400,
    SmartVersion = 0x74080,
    SmartSend = 0x7C084,
    SmartReceive = 0x7C088,
    IdePassThrough = 0x4D028,
    AtaPassThrough = 0x4D02C,
};

// How a driver takes one access path.
enum class Reply { Answer, Refuse, NothingMoved, StatusError, ShortData, DriverError };

std::uint32_t le32(const std::uint8_t *at)
{
    return std::uint32_t(at[0]) | std::uint32_t(at[1]) << 8 | std::uint32_t(at[2]) << 16 | std::uint32_t(at[3]) << 24;
}

void putLe32(std::uint8_t *at, std::uint32_t value)
{
    for (int i = 0; i < 4; ++i)
        at[i] = std::uint8_t(value >> (8 * i));
}

bool zeros(const std::uint8_t *at, std::size_t count)
{
    for (std::size_t i = 0; i < count; ++i)
        if (at[i] != 0)
            return false;
    return true;
}

struct FakeDisk
{
    int number = 0;
    Reply ata = Reply::Answer, smart = Reply::Answer, ide = Reply::Answer;
    bool descriptorFails = false;
    bool exceeded = false; // RETURN STATUS reports a crossed threshold
    Sector identify{}, smartData{}, thresholds{};
};

// The sector a drive answers \a r with, if any.
const Sector *sectorFor(const FakeDisk &disk, const AtaRegisters &r)
{
    if (r.command == 0xEC)
        return &disk.identify;
    if (r.command == 0xB0 && r.cylinderLow == 0x4F && r.cylinderHigh == 0xC2)
        return r.features == 0xD0 ? &disk.smartData : r.features == 0xD1 ? &disk.thresholds : nullptr;
    return nullptr;
}

struct FakeVolume
{
    std::wstring name;
    UINT type = DRIVE_FIXED;
    HANDLE openResult = nullptr; // what opening the volume's device gives
    int diskNumber = -1;
};

struct Open
{
    std::wstring path;
    DWORD access, share, disposition, flags;
};

class FakeSystem final : public WindowsSystem
{
public:
    std::map<std::wstring, FakeDisk> disks;
    std::vector<FakeVolume> volumes;
    std::map<wchar_t, std::wstring> letters; // drive letter -> volume name
    std::vector<DWORD> codes;                // every control code, in order
    std::vector<Open> opens;
    int openHandles = 0, allocations = 0, frees = 0;
    std::uint64_t position = 0;
    DWORD readLimit = ~DWORD(0);

    HANDLE createFile(const wchar_t *path, DWORD access, DWORD share, DWORD disposition, DWORD flags) override
    {
        opens.push_back({path, access, share, disposition, flags});
        for (const FakeVolume &v : volumes) {
            if (v.name.substr(0, v.name.size() - 1) == path) {
                openHandles += v.openResult != nullptr && v.openResult != INVALID_HANDLE_VALUE;
                return v.openResult;
            }
        }
        const auto it = disks.find(path);
        if (it == disks.end())
            return INVALID_HANDLE_VALUE;
        ++openHandles;
        return handleOf(it->second.number);
    }
    BOOL closeHandle(HANDLE) override { return --openHandles, TRUE; }
    void *virtualAlloc(SIZE_T size, DWORD type, DWORD protect) override
    {
        CHECK_EQUAL(ll(type), 0x1000LL);   // MEM_COMMIT
        CHECK_EQUAL(ll(protect), 0x04LL);  // PAGE_READWRITE
        ++allocations;
        m_allocated = VirtualAlloc(nullptr, size, type, protect);
        m_allocatedSize = size;
        return m_allocated;
    }
    BOOL virtualFree(void *address, SIZE_T size, DWORD type) override
    {
        CHECK(address == m_allocated && size == 0 && type == MEM_RELEASE);
        ++frees;
        return VirtualFree(address, size, type);
    }
    BOOL deviceIoControl(HANDLE handle, DWORD code, void *in, DWORD inSize, void *out, DWORD outSize,
                         DWORD *returned) override;

    HANDLE findFirstVolume(wchar_t *name, DWORD length) override
    {
        m_nextVolume = 0;
        return findNextVolume(nullptr, name, length) ? handleOf(99) : INVALID_HANDLE_VALUE;
    }
    BOOL findNextVolume(HANDLE, wchar_t *name, DWORD length) override
    {
        CHECK_EQUAL(ll(length), 260LL);
        if (m_nextVolume >= volumes.size())
            return FALSE;
        wcscpy(name, volumes[m_nextVolume++].name.c_str());
        return TRUE;
    }
    BOOL findVolumeClose(HANDLE find) override { return find == handleOf(99); }
    DWORD logicalDrives() override
    {
        DWORD bits = 0;
        for (const auto &[letter, name] : letters)
            bits |= DWORD(1) << (letter - L'A');
        return bits;
    }
    UINT driveType(const wchar_t *root) override
    {
        const FakeVolume *v = volume(root);
        return v ? v->type : DRIVE_NO_ROOT_DIR;
    }
    BOOL volumeNameForMountPoint(const wchar_t *root, wchar_t *name, DWORD length) override
    {
        CHECK_EQUAL(ll(length), 260LL);
        const auto it = letters.find(root[0]);
        if (it == letters.end() || std::wstring(root) != std::wstring(1, root[0]) + L":\\")
            return FALSE;
        wcscpy(name, it->second.c_str());
        return TRUE;
    }
    BOOL volumeInformation(const wchar_t *root, wchar_t *label, DWORD labelLength, DWORD *serial,
                           wchar_t *fileSystem, DWORD fileSystemLength) override
    {
        CHECK(labelLength == 512 && fileSystemLength == 260);
        if (!volume(root))
            return FALSE;
        wcscpy(label, L"Data \u00e9t\u00e9");
        wcscpy(fileSystem, L"NTFS");
        *serial = 0x1234ABCD;
        return TRUE;
    }
    BOOL diskFreeSpace(const wchar_t *root, DWORD *sectorsPerCluster, DWORD *bytesPerSector, DWORD *freeClusters,
                       DWORD *totalClusters) override
    {
        if (!volume(root))
            return FALSE;
        *sectorsPerCluster = 8, *bytesPerSector = 512, *freeClusters = 1000, *totalClusters = 4000;
        return TRUE;
    }
    BOOL setFilePointer(HANDLE, LARGE_INTEGER distance, DWORD method) override
    {
        if (method != FILE_BEGIN || distance.QuadPart < 0 || distance.QuadPart % 512 != 0)
            return FALSE;
        position = std::uint64_t(distance.QuadPart);
        return TRUE;
    }
    BOOL readFile(HANDLE, void *buffer, DWORD length, DWORD *read) override
    {
        *read = std::min(length, readLimit);
        std::memset(buffer, 0x5A, *read);
        return TRUE;
    }

    static HANDLE handleOf(int number) { return reinterpret_cast<HANDLE>(std::intptr_t(0x1000 + number)); }

private:
    FakeDisk *diskOf(HANDLE handle)
    {
        for (auto &[path, disk] : disks)
            if (handleOf(disk.number) == handle)
                return &disk;
        for (const FakeVolume &v : volumes)
            if (v.openResult == handle && handle != INVALID_HANDLE_VALUE && v.diskNumber >= 0)
                return &m_volumeDisk;
        return nullptr;
    }
    const FakeVolume *volume(const wchar_t *root) const
    {
        std::wstring name = root;
        if (name.size() == 3 && letters.count(name[0]))
            name = letters.at(name[0]);
        for (const FakeVolume &v : volumes)
            if (v.name == name)
                return &v;
        return nullptr;
    }
    BOOL query(FakeDisk &disk, DWORD code, void *in, DWORD inSize, std::uint8_t *out, DWORD outSize, DWORD *returned);
    BOOL ata(FakeDisk &disk, std::uint8_t *block, DWORD size, int dataOffset, int taskFile, Reply reply,
             DWORD *returned);
    BOOL smart(FakeDisk &disk, DWORD code, const std::uint8_t *in, DWORD inSize, std::uint8_t *out, DWORD outSize,
               DWORD *returned);

    std::size_t m_nextVolume = 0;
    void *m_allocated = nullptr;
    SIZE_T m_allocatedSize = 0;
    FakeDisk m_volumeDisk;
};


BOOL FakeSystem::deviceIoControl(HANDLE handle, DWORD code, void *in, DWORD inSize, void *out, DWORD outSize,
                                 DWORD *returned)
{
    codes.push_back(code);
    *returned = 0;
    FakeDisk *disk = diskOf(handle);
    if (!disk) {
        SetLastError(ERROR_INVALID_HANDLE);
        return FALSE;
    }
    auto *bytes = static_cast<std::uint8_t *>(out);
    switch (code) {
    case AtaPassThrough:
        // One block in and out, the 40-byte header: length, flags, transfer length, time-out, data offset.
        CHECK(in == out && inSize == outSize);
        CHECK_EQUAL(ll(bytes[0] | bytes[1] << 8), 40LL);
        CHECK_EQUAL(ll(le32(bytes + 20)), 44LL);
        CHECK_EQUAL(ll(le32(bytes + 12)), 10LL);
        CHECK_EQUAL(ll(inSize), 44LL + le32(bytes + 8));
        CHECK_EQUAL(ll(bytes[2] | bytes[3] << 8), 2LL); // data in, even with no data
        return ata(*disk, bytes, inSize, 44, 32, disk->ata, returned);
    case IdePassThrough:
        // The block VirtualAlloc gave: registers, data length, data.
        CHECK(in == out && in == m_allocated && inSize == outSize && inSize == m_allocatedSize);
        CHECK_EQUAL(ll(inSize), 12LL + le32(bytes + 8));
        CHECK(le32(bytes + 8) <= 512);
        return ata(*disk, bytes, inSize, 12, 0, disk->ide, returned);
    case SmartSend:
    case SmartReceive:
        return smart(*disk, code, static_cast<const std::uint8_t *>(in), inSize, bytes, outSize, returned);
    default:
        return query(*disk, code, in, inSize, bytes, outSize, returned);
    }
}

BOOL FakeSystem::query(FakeDisk &disk, DWORD code, void *in, DWORD inSize, std::uint8_t *out, DWORD outSize,
                       DWORD *returned)
{
    const std::map<DWORD, DWORD> sizes = {{Geometry, 24}, {PartitionInfo, 32}, {DeviceNumber, 12}, {SmartVersion, 24}};
    if (code == QueryProperty) {
        // The 12-byte STORAGE_PROPERTY_QUERY for the device property in its standard form.
        CHECK(inSize == 12 && zeros(static_cast<std::uint8_t *>(in), 12));
        if (disk.descriptorFails)
            return FALSE;
        DeviceDescriptor::Fields fields;
        fields.product = "ST2000DM008-2FR1";
        fields.revision = "0001";
        *returned = DWORD(DeviceDescriptor::write(fields, out, int(outSize)));
        return TRUE;
    }
    CHECK(in == nullptr && inSize == 0);
    if (!sizes.count(code) || sizes.at(code) != outSize)
        return CHECK(!"an unexpected query or reply size"), FALSE;
    std::memset(out, 0, outSize);
    if (code == Geometry) {
        putLe32(out, 0x3A5E1); putLe32(out + 4, 1); // cylinders above 32 bits
        putLe32(out + 8, 12), putLe32(out + 12, 255), putLe32(out + 16, 63), putLe32(out + 20, 512);
    } else if (code == PartitionInfo) {
        putLe32(out + 8, 0x9C9C0000), putLe32(out + 12, 0x1D1);
    } else if (code == DeviceNumber) {
        putLe32(out, 7), putLe32(out + 4, std::uint32_t(disk.number)), putLe32(out + 8, 0);
    } else {
        out[0] = 1, out[1] = 2;
    }
    *returned = outSize;
    return TRUE;
}

// Paths 0 and 2: the task file and the data share the caller's block.
BOOL FakeSystem::ata(FakeDisk &disk, std::uint8_t *block, DWORD size, int dataOffset, int taskFile, Reply reply,
                     DWORD *returned)
{
    const DWORD length = size - DWORD(dataOffset);
    if (length) // the sentinel, then nothing
        CHECK(block[dataOffset] == 0xCF && zeros(block + dataOffset + 1, length - 1));
    if (reply == Reply::Refuse) {
        SetLastError(ERROR_INVALID_PARAMETER);
        return FALSE;
    }
    AtaRegisters r;
    std::memcpy(&r, block + taskFile, 8);
    const Sector *sector = sectorFor(disk, r);
    if (length && sector && reply != Reply::NothingMoved)
        std::memcpy(block + dataOffset, sector->data(), length);
    block[taskFile + 6] = reply == Reply::StatusError ? 0x51 : 0x50;
    if (r.command == 0xB0 && r.features == 0xDA && disk.exceeded)
        block[taskFile + 3] = 0xF4, block[taskFile + 4] = 0x2C;
    *returned = reply == Reply::ShortData ? size - length / 2 : size;
    return TRUE;
}

// Path 1: SENDCMDINPARAMS in, SENDCMDOUTPARAMS out.
BOOL FakeSystem::smart(FakeDisk &disk, DWORD code, const std::uint8_t *in, DWORD inSize, std::uint8_t *out,
                       DWORD outSize, DWORD *returned)
{
    AtaRegisters r;
    std::memcpy(&r, in + 4, 8);
    const bool dataIn = code == SmartReceive;
    const bool status = r.features == 0xDA;
    CHECK_EQUAL(ll(inSize), 32LL);
    CHECK_EQUAL(ll(le32(in)), dataIn ? 512LL : 0LL);
    CHECK_EQUAL(ll(outSize), dataIn ? 528LL : status ? 24LL : 16LL);
    // The drive number, and the drive/head byte that agrees with it.
    CHECK_EQUAL(ll(in[12]), ll(disk.number));
    CHECK_EQUAL(ll(r.driveHead), ll(0xA0 | (disk.number & 1) << 4));
    CHECK(zeros(in + 13, 19));
    if (disk.smart == Reply::Refuse)
        return FALSE;
    std::memset(out, 0, outSize);
    out[4] = disk.smart == Reply::DriverError ? 1 : 0;
    if (const Sector *sector = sectorFor(disk, r); dataIn && sector)
        std::memcpy(out + 16, sector->data(), 512);
    if (status) {
        std::memcpy(out + 16, &r, 8);
        out[16 + 3] = disk.exceeded ? 0xF4 : 0x4F, out[16 + 4] = disk.exceeded ? 0x2C : 0xC2;
    }
    *returned = outSize;
    return TRUE;
}

Sector patterned(std::uint8_t seed)
{
    Sector s{};
    for (std::size_t i = 0; i < s.size(); ++i)
        s[i] = std::uint8_t(seed + i * 7);
    return s;
}

// A machine with one disk at PhysicalDrive1 (none at 0) that answers as \a disk says.
std::shared_ptr<FakeSystem> machineWith(FakeDisk disk)
{
    auto system = std::make_shared<FakeSystem>();
    disk.number = 1;
    disk.identify = patterned(1), disk.smartData = patterned(2), disk.thresholds = patterned(3);
    system->disks[L"\\\\.\\PhysicalDrive1"] = disk;
    return system;
}

// One command over the issuer: the paths tried in order, the first whose answer holds wins.
void commands()
{
    using namespace AtaCommandIssuer;
    const Reply A = Reply::Answer, R = Reply::Refuse;
    const std::vector<DWORD> toSmart = {AtaPassThrough, SmartReceive}, toIde = {AtaPassThrough, SmartReceive, IdePassThrough},
                             toDescriptor = {AtaPassThrough, SmartReceive, IdePassThrough, QueryProperty};
    struct Row
    {
        const char *name;
        Reply ata, smart, ide;
        bool descriptorFails, exceeded;
        AtaRegisters command;
        int path;
        std::vector<DWORD> codes;
    };
    const Row rows[] = {
        {"pass-through answers", A, A, A, false, false, identifyDevice(), 0, {AtaPassThrough}},
        {"pass-through refused", R, A, A, false, false, identifyDevice(), 1, toSmart},
        {"sentinel left", Reply::NothingMoved, A, A, false, false, identifyDevice(), 1, toSmart},
        {"status error", Reply::StatusError, A, A, false, false, identifyDevice(), 1, toSmart},
        {"short reply", Reply::ShortData, A, A, false, false, identifyDevice(), 1, toSmart},
        {"driver error", R, Reply::DriverError, A, false, false, identifyDevice(), 2, toIde},
        {"only IDE", R, R, A, false, false, identifyDevice(), 2, toIde},
        {"IDE moved nothing", R, R, Reply::NothingMoved, false, false, identifyDevice(), 3, toDescriptor},
        {"IDE short", R, R, Reply::ShortData, false, false, identifyDevice(), 3, toDescriptor},
        {"no path, no descriptor", R, R, Reply::StatusError, true, false, identifyDevice(), -1, toDescriptor},
        {"read data", R, A, A, false, false, smartReadData(), 1, toSmart},
        {"read thresholds", R, A, A, false, false, smartReadThresholds(), 1, toSmart},
        {"return status, fine", R, A, A, false, false, smartReturnStatus(), 1, {AtaPassThrough, SmartSend}},
        {"return status, exceeded", R, A, A, false, true, smartReturnStatus(), 1, {AtaPassThrough, SmartSend}},
        {"return status over pass-through", A, A, A, false, true, smartReturnStatus(), 0, {AtaPassThrough}},
        {"read data over pass-through", A, A, A, false, false, smartReadData(), 0, {AtaPassThrough}},
    };
    for (const Row &row : rows) {
        std::printf("  %s\n", row.name);
        FakeDisk disk;
        disk.ata = row.ata, disk.smart = row.smart, disk.ide = row.ide;
        disk.descriptorFails = row.descriptorFails, disk.exceeded = row.exceeded;
        const auto system = machineWith(disk);
        WindowsBackend backend(system);
        CHECK_EQUAL(backend.openDisk(backend.diskPath(0)), kNoHandle);
        const DiskHandle handle = backend.openDisk(backend.diskPath(1));
        AtaRegisters registers = row.command;
        Sector data{};
        CHECK_EQUAL(issue(backend, handle, 1, registers, data), row.path);
        CHECK(system->codes == row.codes);
        const Sector *expected = sectorFor(system->disks.begin()->second, row.command);
        if (expected && row.path >= 0 && row.path < 3)
            CHECK(data == *expected);
        if (row.path == 3) // the product and revision from the descriptor, in IDENTIFY's swapped pairs
            CHECK(std::memcmp(data.data() + 54, "TS0200MD00-8F21R", 16) == 0 && std::memcmp(data.data() + 46, "0010", 4) == 0);
        if (row.command.features == 0xDA) // the drive's verdict comes back in the cylinder pair
            CHECK(registers.cylinderLow == (row.exceeded ? 0xF4 : 0x4F)
                  && registers.cylinderHigh == (row.exceeded ? 0x2C : 0xC2));
        backend.closeDisk(handle);
        CHECK_EQUAL(system->openHandles, 0);
        CHECK_EQUAL(system->allocations, system->frees);
    }
}

void diskQueries()
{
    const auto system = machineWith(FakeDisk{});
    WindowsBackend backend(system);
    CHECK_EQUAL(backend.diskPath(25), std::string("\\\\.\\PhysicalDrive25"));
    const DiskHandle handle = backend.openDisk("\\\\.\\PhysicalDrive1");
    const Open &open = system->opens.back();
    // Read and write access shared both ways, an existing device, no flags.
    CHECK(open.access == 0xC0000000 && open.share == 3 && open.disposition == 3 && open.flags == 0);

    DiskGeometry geometry;
    CHECK(backend.geometry(handle, geometry));
    CHECK(geometry.cylinders == 0x1'0003'A5E1ULL && geometry.mediaType == 12 && geometry.tracksPerCylinder == 255
          && geometry.sectorsPerTrack == 63 && geometry.bytesPerSector == 512);
    std::uint64_t length = 0;
    CHECK(backend.diskLength(handle, length) && length == 0x1D1'9C9C'0000ULL);
    std::int32_t number = -1;
    CHECK(backend.deviceNumber(handle, number) && number == 1);
    std::uint8_t version = 0, revision = 0;
    CHECK(backend.smartVersion(handle, version, revision) && version == 1 && revision == 2);

    // The whole reply when it fits, what the driver could put in the smaller buffer when not.
    std::uint8_t descriptor[4096] = {};
    CHECK_EQUAL(backend.deviceDescriptor(handle, descriptor, 4096), 62);
    CHECK_EQUAL(backend.deviceDescriptor(handle, descriptor, 40), 40);
    backend.closeDisk(handle);
    CHECK_EQUAL(backend.deviceDescriptor(kNoHandle, descriptor, 4096), -1);
}

void volumes()
{
    auto system = std::make_shared<FakeSystem>();
    system->disks[L"\\\\.\\PhysicalDrive0"] = FakeDisk{};
    system->volumes = {
        {L"\\\\?\\Volume{a}\\", DRIVE_FIXED, FakeSystem::handleOf(50), 0},
        {L"\\\\?\\Volume{b}\\", DRIVE_CDROM, FakeSystem::handleOf(51), 0},
        {L"\\\\?\\Volume{c}\\", DRIVE_FIXED, nullptr, 0},              // the open fails outright
        {L"\\\\?\\Volume{d}\\", DRIVE_FIXED, INVALID_HANDLE_VALUE, 0}, // the query fails on it
    };
    system->letters = {{L'C', L"\\\\?\\Volume{a}\\"}, {L'E', L"\\\\?\\Volume{b}\\"}};
    WindowsBackend backend(system);

    const std::vector<std::string> names = backend.volumeNames();
    CHECK_EQUAL(names.size(), std::size_t(4));
    CHECK(backend.isFixedVolume(names[0]) && !backend.isFixedVolume(names[1]));
    VolumeSpace space;
    CHECK(backend.volumeSpace(names[0], space) && space.sectorsPerCluster * space.bytesPerSector == 4096
          && space.freeClusters == 1000 && space.totalClusters == 4000);
    VolumeInformation info;
    CHECK(backend.volumeInformation(names[0], info));
    CHECK(info.label == "Data \xC3\xA9t\xC3\xA9" && info.fileSystem == "NTFS" && info.serialNumber == 0x1234ABCD);

    std::int32_t number = -1;
    CHECK(backend.volumeDeviceNumber(names[0], number) && number == 0);
    // The device is opened without the trailing backslash, as a disk is.
    CHECK(system->opens.back().path == L"\\\\?\\Volume{a}" && system->opens.back().access == 0xC0000000);
    const std::size_t queries = system->codes.size();
    CHECK(!backend.volumeDeviceNumber(names[2], number));
    CHECK_EQUAL(system->codes.size(), queries); // a null handle is not queried
    CHECK(!backend.volumeDeviceNumber(names[3], number));
    CHECK_EQUAL(system->codes.size(), queries + 1);
    CHECK_EQUAL(system->openHandles, 0);

    // Only fixed drives get a root; the CD's letter does not.
    const std::vector<MountPoint> roots = backend.mountPoints();
    CHECK_EQUAL(roots.size(), std::size_t(1));
    CHECK(roots.size() == 1 && roots[0].root == "C:\\" && roots[0].volumeName == "\\\\?\\Volume{a}\\");
}

void surfaceReads()
{
    const auto system = machineWith(FakeDisk{});
    WindowsBackend backend(system);
    const DiskHandle handle = backend.openForRead("\\\\.\\PhysicalDrive1", false);
    const Open &open = system->opens.back();
    // Read-only, sharing reading only, through the cache.
    CHECK(handle != kNoHandle && open.access == 0x80000000 && open.share == 1 && open.disposition == 3
          && open.flags == 0);
    CHECK_EQUAL(backend.openForRead("\\\\.\\PhysicalDrive0", false), kNoHandle);

    std::vector<std::uint8_t> buffer(65536);
    // Beyond 4 GiB, where a 32-bit position would wrap.
    CHECK_EQUAL(backend.readAt(handle, 0x1'2345'6000ULL, buffer.data(), 65536), std::int64_t(65536));
    CHECK_EQUAL(system->position, std::uint64_t(0x1'2345'6000ULL));
    system->readLimit = 512; // the end of the device: a short read is reported as such
    CHECK_EQUAL(backend.readAt(handle, 0, buffer.data(), 65536), std::int64_t(512));
    CHECK_EQUAL(backend.readAt(handle, 100, buffer.data(), 512), std::int64_t(-1)); // positioning refused
    backend.closeDisk(handle);
    CHECK_EQUAL(system->openHandles, 0);
}

} // namespace

int main()
{
    std::printf("commands\n");
    commands();
    diskQueries();
    volumes();
    surfaceReads();
    return PlainCheck::result("tst_windowsbackend");
}
