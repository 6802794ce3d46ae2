#include "HelperRequestPolicy.h"

#include "device/AtaCommands.h"
#include "device/helper/HelperProtocol.h"

#include <array>
#include <cstdio>

namespace {

using namespace AtaCommands;

constexpr std::uint8_t kCheckPowerMode = 0xE5;
constexpr std::uint64_t kSectorBytes = 512;

struct AllowedCommand
{
    AtaRegisters registers;
    bool dataIn;
};

constexpr AtaRegisters smart(std::uint8_t feature, std::uint8_t count)
{
    return AtaRegisters{feature, count, count, kSmartKeyLow, kSmartKeyHigh, 0, kSmart, 0};
}

// Every register must match, not only the command byte: a SMART command with another feature
// byte (SMART WRITE LOG, EXECUTE OFFLINE) or without the key would be a different command.
constexpr std::array<AllowedCommand, 6> kAllowed{{
    {AtaRegisters{0, 1, 0, 0, 0, 0, kIdentifyDevice, 0}, true},
    {AtaRegisters{0, 1, 0, 0, 0, 0, kIdentifyPacketDevice, 0}, true},
    {smart(kSmartReadData, 1), true},
    {smart(kSmartReadThresholds, 1), true},
    {smart(kSmartReturnStatus, 0), false},
    {AtaRegisters{0, 0, 0, 0, 0, 0, kCheckPowerMode, 0}, false},
}};

bool sameExceptDevice(const AtaRegisters &a, const AtaRegisters &b)
{
    return a.features == b.features && a.sectorCount == b.sectorCount && a.sectorNumber == b.sectorNumber
           && a.cylinderLow == b.cylinderLow && a.cylinderHigh == b.cylinderHigh && a.command == b.command
           && a.reserved == b.reserved;
}

// The device register only selects master or slave (bit 4) over the obsolete always-one bits;
// LBA mode (bit 6) or address bits have no business in these commands.
bool plainDeviceRegister(std::uint8_t value)
{
    return (value & ~0x10) == 0 || (value & ~0x10) == 0xA0;
}

std::string hex(std::uint8_t value)
{
    char text[8];
    std::snprintf(text, sizeof text, "0x%02X", value);
    return text;
}

} // namespace

namespace HelperRequestPolicy {

std::optional<AtaExchange> commandExchange(int path, const AtaRegisters &requested, std::string &refusal)
{
    if (path != AtaPassThroughPath && path != SmartIoctlPath && path != IdePassThroughPath) {
        refusal = "access path " + std::to_string(path) + " does not exist (0, 1 or 2)";
        return std::nullopt;
    }
    for (const AllowedCommand &allowed : kAllowed) {
        if (!sameExceptDevice(requested, allowed.registers))
            continue;
        if (!plainDeviceRegister(requested.driveHead)) {
            refusal = "device register " + hex(requested.driveHead) + " is not allowed";
            return std::nullopt;
        }
        AtaExchange exchange;
        exchange.registers = allowed.registers;
        exchange.registers.driveHead = requested.driveHead;
        exchange.dataIn = allowed.dataIn;
        return exchange;
    }
    refusal = "ATA command " + hex(requested.command) + " (features " + hex(requested.features)
              + ") is not one the helper carries: only IDENTIFY, SMART READ DATA, READ THRESHOLDS, "
                "RETURN STATUS and CHECK POWER MODE are";
    return std::nullopt;
}

bool readAllowed(std::uint64_t offset, std::uint32_t length, std::uint64_t diskLength, std::string &refusal)
{
    if (length == 0 || length > HelperProtocol::kMaxReadBytes || length % kSectorBytes || offset % kSectorBytes) {
        refusal = "a read must be whole 512-byte sectors, at most " + std::to_string(HelperProtocol::kMaxReadBytes)
                  + " bytes";
        return false;
    }
    // Compared without adding, so that an offset near 2^64 cannot wrap round into the disk.
    if (offset > diskLength || length > diskLength - offset) {
        refusal = std::to_string(length) + " bytes at offset " + std::to_string(offset)
                  + " lie outside the disk (" + std::to_string(diskLength) + " bytes)";
        return false;
    }
    return true;
}

} // namespace HelperRequestPolicy
