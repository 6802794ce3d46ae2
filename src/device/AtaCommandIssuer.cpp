#include "AtaCommandIssuer.h"

#include "DeviceDescriptor.h"

#include <algorithm>
#include <array>
#include <string>

namespace {

using namespace AtaCommands;

// Written into the first data byte before a pass-through call: a reply that
// still holds it followed by zeros carried no data at all.
constexpr std::uint8_t kSentinel = 0xCF;
constexpr std::uint8_t kStatusError = 0x01;

AtaRegisters smartRegisters(std::uint8_t subCommand, std::uint8_t sectorCount, std::uint8_t sectorNumber)
{
    AtaRegisters r;
    r.features = subCommand;
    r.sectorCount = sectorCount;
    r.sectorNumber = sectorNumber;
    r.cylinderLow = kSmartKeyLow;
    r.cylinderHigh = kSmartKeyHigh;
    r.command = kSmart;
    return r;
}

bool isIssuedCommand(const AtaRegisters &r)
{
    return r.command == kIdentifyDevice || r.command == kIdentifyPacketDevice
           || r.command == kSmart;
}

bool readsSector(const AtaRegisters &r)
{
    if (r.command == kIdentifyDevice || r.command == kIdentifyPacketDevice)
        return true;
    return r.command == kSmart
           && (r.features == kSmartReadData || r.features == kSmartReadThresholds);
}

bool isReturnStatus(const AtaRegisters &r)
{
    return r.command == kSmart && r.features == kSmartReturnStatus;
}

bool nothingTransferred(const Sector &data)
{
    return data[0] == kSentinel && std::all_of(data.begin() + 1, data.end(), [](std::uint8_t b) { return b == 0; });
}

AtaExchange prepare(const AtaRegisters &registers)
{
    AtaExchange exchange;
    exchange.registers = registers;
    exchange.dataIn = readsSector(registers);
    exchange.data.fill(0);
    return exchange;
}

// Paths 0 and 2 hand the task file to the drive as it stands, so the drive's
// own status and the transfer itself are the only evidence that it answered.
bool passThrough(DriveBackend &backend, DiskHandle handle, int path, int probeIndex, AtaExchange &exchange)
{
    exchange.data[0] = kSentinel;
    if (!backend.ataCommand(handle, path, probeIndex, exchange))
        return false;
    if (exchange.registersReturned && (exchange.registers.command & kStatusError))
        return false;
    if (exchange.dataIn && (exchange.bytesReturned != exchange.data.size() || nothingTransferred(exchange.data)))
        return false;
    return true;
}

// Path 1 addresses the drive by number; the driver wants the master/slave bit
// of the drive/head register to agree with it.
bool smartIoctl(DriveBackend &backend, DiskHandle handle, int probeIndex, AtaExchange &exchange)
{
    exchange.registers.driveHead = std::uint8_t(0xA0 | ((probeIndex & 1) << 4));
    if (!backend.ataCommand(handle, SmartIoctlPath, probeIndex, exchange))
        return false;
    return exchange.driverError == 0;
}

// Copies the reply's text into the made-up sector the way a drive stores its
// strings: byte pairs swapped, so that the usual IDENTIFY decoding reads it.
void putIdentifyString(Sector &sector, int word, std::size_t maxBytes, const std::string &text)
{
    const std::size_t end = std::min({text.find_first_of("\r\n"), text.size(), maxBytes});
    for (std::size_t i = 0; i < end; ++i)
        sector[2 * word + (i ^ 1)] = std::uint8_t(text[i]);
}

} // namespace

namespace AtaCommandIssuer {

AtaRegisters identifyDevice()
{
    AtaRegisters r;
    r.sectorCount = 1;
    r.command = kIdentifyDevice;
    return r;
}

AtaRegisters identifyPacketDevice()
{
    AtaRegisters r = identifyDevice();
    r.command = kIdentifyPacketDevice;
    return r;
}

AtaRegisters smartReadData()
{
    return smartRegisters(kSmartReadData, 1, 1);
}

AtaRegisters smartReadThresholds()
{
    return smartRegisters(kSmartReadThresholds, 1, 1);
}

AtaRegisters smartReturnStatus()
{
    return smartRegisters(kSmartReturnStatus, 0, 0);
}

int issue(DriveBackend &backend, DiskHandle handle, int probeIndex, AtaRegisters &registers, Sector &data)
{
    if (!isIssuedCommand(registers))
        return -1;

    for (const int path : {AtaPassThroughPath, SmartIoctlPath, IdePassThroughPath}) {
        AtaExchange exchange = prepare(registers);
        const bool answered = path == SmartIoctlPath ? smartIoctl(backend, handle, probeIndex, exchange)
                                                     : passThrough(backend, handle, path, probeIndex, exchange);
        if (!answered)
            continue;
        if (exchange.dataIn)
            data = exchange.data;
        // The SMART interface only gives registers back for RETURN STATUS,
        // where they carry the drive's verdict.
        const bool takeRegisters = path == SmartIoctlPath ? isReturnStatus(registers) : true;
        if (takeRegisters && exchange.registersReturned)
            registers = exchange.registers;
        return path;
    }

    Sector made{};
    if (!identifyFromDescriptor(backend, handle, made))
        return -1;
    data = made;
    return DescriptorPath;
}

bool identifyFromDescriptor(DriveBackend &backend, DiskHandle handle, Sector &data)
{
    std::array<std::uint8_t, DeviceDescriptor::kShortBufferSize> buffer{};
    int size = backend.deviceDescriptor(handle, buffer.data(), int(buffer.size()));
    if (size < 0)
        return false;
    size = std::min(size, int(buffer.size()));
    std::fill(buffer.begin() + size, buffer.end(), 0);

    data.fill(0);
    putIdentifyString(data, 27, 40,
                      DeviceDescriptor::stringAt(buffer.data(), size, DeviceDescriptor::kProductOffsetField));
    putIdentifyString(data, 23, 8,
                      DeviceDescriptor::stringAt(buffer.data(), size, DeviceDescriptor::kRevisionOffsetField));
    // Claim an ATA-3 drive with SMART supported and enabled, so that SMART is
    // still tried on a disk that answers no command path.
    setSectorWord(data, 80, 0x0008);
    setSectorWord(data, 82, 0x0001);
    setSectorWord(data, 83, 0x4000);
    setSectorWord(data, 85, 0x0001);
    setSectorWord(data, 87, 0x4000);
    return true;
}

} // namespace AtaCommandIssuer
