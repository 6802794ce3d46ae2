#include "WindowsBackend.h"

#include "WideText.h"
#include "WindowsSystem.h"
#include "device/AtaCommands.h"

#include <ntddscsi.h>
#include <winioctl.h>

#include <algorithm>
#include <array>
#include <cstring>
#include <memory>

namespace {

// The control codes, as the driver kit defines them.
constexpr DWORD kGetDriveGeometry = 0x70000;
constexpr DWORD kGetPartitionInfo = 0x74004;
constexpr DWORD kGetDeviceNumber = 0x2D1080;
constexpr DWORD kQueryProperty = 0x2D1400;
constexpr DWORD kSmartGetVersion = 0x74080;
constexpr DWORD kSmartSendDriveCommand = 0x7C084;
constexpr DWORD kSmartReceiveDriveData = 0x7C088;
constexpr DWORD kIdePassThrough = 0x4D028;
constexpr DWORD kAtaPassThrough = 0x4D02C;
static_assert(kGetDriveGeometry == IOCTL_DISK_GET_DRIVE_GEOMETRY && kGetPartitionInfo == IOCTL_DISK_GET_PARTITION_INFO
              && kGetDeviceNumber == IOCTL_STORAGE_GET_DEVICE_NUMBER && kQueryProperty == IOCTL_STORAGE_QUERY_PROPERTY
              && kSmartGetVersion == SMART_GET_VERSION && kSmartSendDriveCommand == SMART_SEND_DRIVE_COMMAND
              && kSmartReceiveDriveData == SMART_RCV_DRIVE_DATA && kIdePassThrough == IOCTL_IDE_PASS_THROUGH
              && kAtaPassThrough == IOCTL_ATA_PASS_THROUGH);

// Disks are opened for reading and writing, shared both ways: the pass-through calls need write
// access, and other programs keep theirs.
constexpr DWORD kReadWrite = GENERIC_READ | GENERIC_WRITE;
constexpr DWORD kShareReadWrite = FILE_SHARE_READ | FILE_SHARE_WRITE;

constexpr DWORD kSectorBytes = sizeof(Sector);
constexpr std::uint8_t kSentinel = 0xCF;

// ATA pass-through: the 40-byte header of the 32-bit ATA_PASS_THROUGH_EX, data at 44, in both
// builds, as the program has always sent it. A 64-bit driver lays the header out for 64-bit
// callers (48 bytes, the offset and the task files further on); where it refuses this one, or
// reads it as a command that moves no data, the checks above the seam go on to the SMART interface.
constexpr std::uint16_t kAtaHeaderLength = 40;
constexpr DWORD kAtaDataOffset = 44;
// Data in, also for a command without data: the program has never sent one that writes.
constexpr std::uint16_t kAtaFlagsDataIn = 2;
constexpr DWORD kAtaTimeoutSeconds = 10;
constexpr int kAtaTaskFile = 32;

// SMART interface: SENDCMDINPARAMS without its one-byte buffer, and SENDCMDOUTPARAMS' header
// (buffer size, then the driver's status with its error byte first).
constexpr DWORD kSmartInSize = 32;
constexpr DWORD kSmartOutHeader = 16;
constexpr int kSmartDriverError = 4;
constexpr DWORD kSmartStatusOutSize = kSmartOutHeader + sizeof(AtaRegisters);

// IDE pass-through: the register block, the data length, the data; drivers take a sector at most.
constexpr DWORD kIdeDataOffset = 12;
constexpr DWORD kIdeMaxData = 512;
static_assert(kSectorBytes <= kIdeMaxData, "an IDE pass-through transfer is one sector at most");

void putLe16(std::uint8_t *at, std::uint16_t value)
{
    at[0] = std::uint8_t(value);
    at[1] = std::uint8_t(value >> 8);
}

void putLe32(std::uint8_t *at, std::uint32_t value)
{
    for (int i = 0; i < 4; ++i)
        at[i] = std::uint8_t(value >> (8 * i));
}

std::uint32_t le32(const std::uint8_t *at)
{
    return std::uint32_t(at[0]) | std::uint32_t(at[1]) << 8 | std::uint32_t(at[2]) << 16 | std::uint32_t(at[3]) << 24;
}

std::uint64_t le64(const std::uint8_t *at)
{
    return std::uint64_t(le32(at)) | std::uint64_t(le32(at + 4)) << 32;
}

// The eight registers in IDEREGS order, which AtaRegisters follows.
void putRegisters(std::uint8_t *at, const AtaRegisters &r)
{
    const std::uint8_t bytes[8] = {r.features,     r.sectorCount, r.sectorNumber, r.cylinderLow,
                                   r.cylinderHigh, r.driveHead,   r.command,      r.reserved};
    std::memcpy(at, bytes, sizeof bytes);
}

AtaRegisters registersAt(const std::uint8_t *at)
{
    return AtaRegisters{at[0], at[1], at[2], at[3], at[4], at[5], at[6], at[7]};
}

bool isReturnStatus(const AtaRegisters &r)
{
    return r.command == AtaCommands::kSmart && r.features == AtaCommands::kSmartReturnStatus;
}

HANDLE toHandle(DiskHandle handle)
{
    return reinterpret_cast<HANDLE>(handle);
}

// Data bytes in a reply of \a returned bytes whose data starts at \a offset.
std::uint32_t dataBytes(DWORD returned, DWORD offset)
{
    return returned > offset ? returned - offset : 0;
}

} // namespace

WindowsBackend::WindowsBackend()
    : WindowsBackend(WindowsSystem::host())
{
}

WindowsBackend::WindowsBackend(std::shared_ptr<WindowsSystem> system)
    : m_system(std::move(system))
{
}

WindowsBackend::~WindowsBackend() = default;

std::string WindowsBackend::diskPath(int probe) const
{
    return "\\\\.\\PhysicalDrive" + std::to_string(probe);
}

DiskHandle WindowsBackend::openDisk(const std::string &path)
{
    const HANDLE handle =
        m_system->createFile(WideText::fromUtf8(path).c_str(), kReadWrite, kShareReadWrite, OPEN_EXISTING, 0);
    if (handle == INVALID_HANDLE_VALUE || handle == nullptr)
        return kNoHandle;
    return reinterpret_cast<DiskHandle>(handle);
}

void WindowsBackend::closeDisk(DiskHandle handle)
{
    if (handle != kNoHandle)
        m_system->closeHandle(toHandle(handle));
}

bool WindowsBackend::query(DiskHandle handle, unsigned long code, void *out, unsigned long size)
{
    DWORD returned = 0;
    return m_system->deviceIoControl(toHandle(handle), code, nullptr, 0, out, size, &returned) != FALSE;
}

bool WindowsBackend::geometry(DiskHandle handle, DiskGeometry &out)
{
    std::uint8_t reply[24] = {}; // DISK_GEOMETRY
    if (!query(handle, kGetDriveGeometry, reply, sizeof reply))
        return false;
    out.cylinders = le64(reply);
    out.mediaType = le32(reply + 8);
    out.tracksPerCylinder = le32(reply + 12);
    out.sectorsPerTrack = le32(reply + 16);
    out.bytesPerSector = le32(reply + 20);
    return true;
}

bool WindowsBackend::diskLength(DiskHandle handle, std::uint64_t &bytes)
{
    std::uint8_t reply[32] = {}; // PARTITION_INFORMATION: the whole disk's on a disk handle
    if (!query(handle, kGetPartitionInfo, reply, sizeof reply))
        return false;
    bytes = le64(reply + 8);
    return true;
}

bool WindowsBackend::deviceNumber(DiskHandle handle, std::int32_t &number)
{
    std::uint8_t reply[12] = {}; // STORAGE_DEVICE_NUMBER: type, number, partition
    if (!query(handle, kGetDeviceNumber, reply, sizeof reply))
        return false;
    number = std::int32_t(le32(reply + 4));
    return true;
}

int WindowsBackend::deviceDescriptor(DiskHandle handle, std::uint8_t *buffer, int size)
{
    // STORAGE_PROPERTY_QUERY: the device property (0), its standard form (0).
    std::uint8_t request[12] = {};
    DWORD returned = 0;
    if (!buffer || size <= 0
        || !m_system->deviceIoControl(toHandle(handle), kQueryProperty, request, sizeof request, buffer, DWORD(size),
                                      &returned))
        return -1;
    return int(std::min<DWORD>(returned, DWORD(size)));
}

bool WindowsBackend::smartVersion(DiskHandle handle, std::uint8_t &version, std::uint8_t &revision)
{
    std::uint8_t reply[24] = {}; // GETVERSIONINPARAMS
    if (!query(handle, kSmartGetVersion, reply, sizeof reply))
        return false;
    version = reply[0];
    revision = reply[1];
    return true;
}

bool WindowsBackend::ataCommand(DiskHandle handle, int path, int probeIndex, AtaExchange &exchange)
{
    switch (path) {
    case AtaPassThroughPath:
        return ataPassThrough(handle, exchange);
    case SmartIoctlPath:
        return smartCommand(handle, probeIndex, exchange);
    case IdePassThroughPath:
        return idePassThrough(handle, exchange);
    default:
        return false;
    }
}

bool WindowsBackend::ataPassThrough(DiskHandle handle, AtaExchange &exchange)
{
    std::array<std::uint8_t, kAtaDataOffset + kSectorBytes> block{};
    const DWORD length = exchange.dataIn ? kSectorBytes : 0;
    putLe16(block.data(), kAtaHeaderLength);
    putLe16(block.data() + 2, kAtaFlagsDataIn);
    putLe32(block.data() + 8, length);
    putLe32(block.data() + 12, kAtaTimeoutSeconds);
    putLe32(block.data() + 20, kAtaDataOffset);
    putRegisters(block.data() + kAtaTaskFile, exchange.registers);
    if (exchange.dataIn)
        block[kAtaDataOffset] = kSentinel;

    const DWORD size = kAtaDataOffset + length;
    DWORD returned = 0;
    if (!m_system->deviceIoControl(toHandle(handle), kAtaPassThrough, block.data(), size, block.data(), size,
                                   &returned))
        return false;
    exchange.registers = registersAt(block.data() + kAtaTaskFile);
    exchange.registersReturned = true;
    exchange.bytesReturned = dataBytes(returned, kAtaDataOffset);
    if (exchange.dataIn)
        std::memcpy(exchange.data.data(), block.data() + kAtaDataOffset, kSectorBytes);
    return true;
}

bool WindowsBackend::smartCommand(DiskHandle handle, int driveNumber, AtaExchange &exchange)
{
    std::uint8_t in[kSmartInSize + 1] = {}; // SENDCMDINPARAMS, whose last byte is not sent
    putLe32(in, exchange.dataIn ? kSectorBytes : 0);
    putRegisters(in + 4, exchange.registers);
    in[12] = std::uint8_t(driveNumber);

    std::uint8_t out[kSmartOutHeader + kSectorBytes] = {};
    const bool status = isReturnStatus(exchange.registers);
    const DWORD code = exchange.dataIn ? kSmartReceiveDriveData : kSmartSendDriveCommand;
    const DWORD outSize = exchange.dataIn ? DWORD(sizeof out) : status ? kSmartStatusOutSize : kSmartOutHeader;
    DWORD returned = 0;
    if (!m_system->deviceIoControl(toHandle(handle), code, in, kSmartInSize, out, outSize, &returned))
        return false;
    exchange.driverError = out[kSmartDriverError];
    exchange.bytesReturned = dataBytes(returned, kSmartOutHeader);
    if (exchange.dataIn)
        std::memcpy(exchange.data.data(), out + kSmartOutHeader, kSectorBytes);
    // Only RETURN STATUS brings registers back: the drive's verdict is in the cylinder pair.
    exchange.registersReturned = status;
    if (status)
        exchange.registers = registersAt(out + kSmartOutHeader);
    return true;
}

bool WindowsBackend::idePassThrough(DiskHandle handle, AtaExchange &exchange)
{
    const DWORD length = exchange.dataIn ? kSectorBytes : 0;
    const DWORD size = kIdeDataOffset + length;
    // Page-aligned memory of its own, as the older IDE drivers wanted for their DMA.
    const auto release = [this](std::uint8_t *p) { m_system->virtualFree(p, 0, MEM_RELEASE); };
    const std::unique_ptr<std::uint8_t, decltype(release)> block(
        static_cast<std::uint8_t *>(m_system->virtualAlloc(size, MEM_COMMIT, PAGE_READWRITE)), release);
    if (!block)
        return false;
    std::memset(block.get(), 0, size);
    putRegisters(block.get(), exchange.registers);
    putLe32(block.get() + 8, length);
    if (length)
        block.get()[kIdeDataOffset] = kSentinel;

    DWORD returned = 0;
    if (!m_system->deviceIoControl(toHandle(handle), kIdePassThrough, block.get(), size, block.get(), size, &returned))
        return false;
    exchange.registers = registersAt(block.get());
    exchange.registersReturned = true;
    exchange.bytesReturned = dataBytes(returned, kIdeDataOffset);
    if (length)
        std::memcpy(exchange.data.data(), block.get() + kIdeDataOffset, kSectorBytes);
    return true;
}

std::vector<std::string> WindowsBackend::volumeNames()
{
    std::vector<std::string> names;
    wchar_t name[MAX_PATH] = {};
    const HANDLE find = m_system->findFirstVolume(name, MAX_PATH);
    if (find == INVALID_HANDLE_VALUE)
        return names;
    do
        names.push_back(WideText::toUtf8(name));
    while (m_system->findNextVolume(find, name, MAX_PATH));
    m_system->findVolumeClose(find);
    return names;
}

bool WindowsBackend::isFixedVolume(const std::string &volumeName)
{
    return m_system->driveType(WideText::fromUtf8(volumeName).c_str()) == DRIVE_FIXED;
}

bool WindowsBackend::volumeSpace(const std::string &volumeName, VolumeSpace &out)
{
    DWORD sectorsPerCluster = 0, bytesPerSector = 0, freeClusters = 0, totalClusters = 0;
    if (!m_system->diskFreeSpace(WideText::fromUtf8(volumeName).c_str(), &sectorsPerCluster, &bytesPerSector,
                                 &freeClusters, &totalClusters))
        return false;
    out = VolumeSpace{sectorsPerCluster, bytesPerSector, freeClusters, totalClusters};
    return true;
}

bool WindowsBackend::volumeInformation(const std::string &volumeName, VolumeInformation &out)
{
    wchar_t label[512] = {};
    wchar_t fileSystem[MAX_PATH] = {};
    DWORD serial = 0;
    if (!m_system->volumeInformation(WideText::fromUtf8(volumeName).c_str(), label, 512, &serial, fileSystem,
                                     MAX_PATH))
        return false;
    out = VolumeInformation{WideText::toUtf8(label), WideText::toUtf8(fileSystem), serial};
    return true;
}

bool WindowsBackend::volumeDeviceNumber(const std::string &volumeName, std::int32_t &number)
{
    // The volume's device, not its root folder: the name without the trailing backslash.
    std::wstring device = WideText::fromUtf8(volumeName);
    if (!device.empty() && device.back() == L'\\')
        device.pop_back();
    const HANDLE handle = m_system->createFile(device.c_str(), kReadWrite, kShareReadWrite, OPEN_EXISTING, 0);
    // Only a null handle counts as a failed open: an invalid one fails the query below instead,
    // which leaves the volume on no disk all the same.
    if (handle == nullptr)
        return false;
    const bool known = deviceNumber(reinterpret_cast<DiskHandle>(handle), number);
    if (handle != INVALID_HANDLE_VALUE)
        m_system->closeHandle(handle);
    return known;
}

std::vector<MountPoint> WindowsBackend::mountPoints()
{
    std::vector<MountPoint> roots;
    const DWORD drives = m_system->logicalDrives();
    for (int letter = 0; letter < 26; ++letter) {
        if (!(drives & (DWORD(1) << letter)))
            continue;
        const wchar_t root[] = {wchar_t(L'A' + letter), L':', L'\\', L'\0'};
        wchar_t name[MAX_PATH] = {};
        if (m_system->driveType(root) == DRIVE_FIXED && m_system->volumeNameForMountPoint(root, name, MAX_PATH))
            roots.push_back(MountPoint{WideText::toUtf8(root), WideText::toUtf8(name)});
    }
    return roots;
}

DiskHandle WindowsBackend::openForRead(const std::string &path, bool directIo)
{
    // Read-only and sharing reading only: a disk another program holds open for writing is not
    // scanned under it.
    const HANDLE handle = m_system->createFile(WideText::fromUtf8(path).c_str(), GENERIC_READ, FILE_SHARE_READ,
                                               OPEN_EXISTING, directIo ? FILE_FLAG_NO_BUFFERING : 0);
    if (handle == INVALID_HANDLE_VALUE || handle == nullptr)
        return kNoHandle;
    return reinterpret_cast<DiskHandle>(handle);
}

std::int64_t WindowsBackend::readAt(DiskHandle handle, std::uint64_t offset, std::uint8_t *buffer,
                                    std::uint32_t length)
{
    LARGE_INTEGER position;
    position.QuadPart = LONGLONG(offset);
    DWORD read = 0;
    if (!buffer || !m_system->setFilePointer(toHandle(handle), position, FILE_BEGIN)
        || !m_system->readFile(toHandle(handle), buffer, length, &read))
        return -1;
    return read;
}
