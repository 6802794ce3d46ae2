#include "HelperRequestPolicy.h"

#include "device/AtaCommands.h"
#include "device/helper/HelperProtocol.h"

#include <array>
#include <cstdio>

namespace {

using namespace AtaCommands;

constexpr std::uint8_t kCheckPowerMode = 0xE5;
constexpr std::uint64_t kSectorBytes = 512;

// What identifies each command: the command byte, the SMART sub-command in the features
// register and the SMART key in the cylinder registers. A SMART command with another feature
// byte (SMART WRITE LOG, EXECUTE OFFLINE) or without the key would be a different command.
struct AllowedCommand
{
    std::uint8_t features;
    std::uint8_t cylinderLow;
    std::uint8_t cylinderHigh;
    std::uint8_t command;
    bool dataIn;
};

constexpr std::array<AllowedCommand, 6> kAllowed{{
    {0, 0, 0, kIdentifyDevice, true},
    {0, 0, 0, kIdentifyPacketDevice, true},
    {kSmartReadData, kSmartKeyLow, kSmartKeyHigh, kSmart, true},
    {kSmartReadThresholds, kSmartKeyLow, kSmartKeyHigh, kSmart, true},
    {kSmartReturnStatus, kSmartKeyLow, kSmartKeyHigh, kSmart, false},
    {0, 0, 0, kCheckPowerMode, false},
}};

bool isCommand(const AtaRegisters &r, const AllowedCommand &allowed)
{
    return r.features == allowed.features && r.cylinderLow == allowed.cylinderLow
           && r.cylinderHigh == allowed.cylinderHigh && r.command == allowed.command && r.reserved == 0;
}

// None of these commands takes a count or an address; Korvane sends 0 or 1 in the two
// registers (the legacy SMART ioctl reads the sector number as its sector count), and nothing
// larger is let through.
bool plainCountRegisters(const AtaRegisters &r)
{
    return r.sectorCount <= 1 && r.sectorNumber <= 1;
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
        if (!isCommand(requested, allowed))
            continue;
        if (!plainDeviceRegister(requested.driveHead) || !plainCountRegisters(requested)) {
            refusal = "registers " + hex(requested.sectorCount) + " " + hex(requested.sectorNumber) + " "
                      + hex(requested.driveHead) + " (count, number, device) are not allowed with command "
                      + hex(requested.command);
            return std::nullopt;
        }
        // The direction and the length of the transfer are the helper's, never the caller's.
        AtaExchange exchange;
        exchange.registers = requested;
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
