#include "AtaPassThrough.h"

#include <algorithm>

namespace {

constexpr std::uint8_t kProtocolNonData = 3;
constexpr std::uint8_t kProtocolPioDataIn = 4;

// Byte 2 of both commands. Data-in: T_DIR from the device, BYT_BLOK, length
// in the sector count field (T_LENGTH 2). Non-data: CK_COND, so the SAT layer
// answers with the task file even when the command succeeded.
constexpr std::uint8_t kFlagsPioIn = 0x0E;
constexpr std::uint8_t kFlagsCheckCondition = 0x20;

constexpr std::uint8_t kAtaStatusReturnDescriptor = 0x09;
// ASC/ASCQ 00/1D: "ATA pass through information available".
constexpr std::uint8_t kAscqPassThroughInformation = 0x1D;

std::uint8_t protocolByte(bool dataIn)
{
    return std::uint8_t((dataIn ? kProtocolPioDataIn : kProtocolNonData) << 1);
}

std::uint8_t flagsByte(bool dataIn)
{
    return dataIn ? kFlagsPioIn : kFlagsCheckCondition;
}

AtaRegisters taskFile(std::uint8_t error, std::uint8_t count, std::uint8_t lbaLow, std::uint8_t lbaMid,
                      std::uint8_t lbaHigh, std::uint8_t device, std::uint8_t status)
{
    AtaRegisters r;
    r.features = error;
    r.sectorCount = count;
    r.sectorNumber = lbaLow;
    r.cylinderLow = lbaMid;
    r.cylinderHigh = lbaHigh;
    r.driveHead = device;
    r.command = status;
    return r;
}

std::optional<AtaRegisters> statusReturnDescriptor(const std::uint8_t *sense, int length)
{
    const int end = std::min(length, 8 + int(sense[7]));
    for (int offset = 8; offset + 2 <= end; offset += 2 + sense[offset + 1]) {
        const std::uint8_t *d = sense + offset;
        if (d[0] == kAtaStatusReturnDescriptor && d[1] >= 12 && offset + 14 <= end)
            return taskFile(d[3], d[5], d[7], d[9], d[11], d[12], d[13]);
    }
    return std::nullopt;
}

} // namespace

namespace AtaPassThrough {

std::array<std::uint8_t, 16> command16(const AtaRegisters &registers, bool dataIn)
{
    std::array<std::uint8_t, 16> cdb{};
    cdb[0] = kOpcode16;
    cdb[1] = protocolByte(dataIn);
    cdb[2] = flagsByte(dataIn);
    cdb[4] = registers.features;
    cdb[6] = registers.sectorCount;
    cdb[8] = registers.sectorNumber;
    cdb[10] = registers.cylinderLow;
    cdb[12] = registers.cylinderHigh;
    cdb[13] = registers.driveHead;
    cdb[14] = registers.command;
    return cdb;
}

std::array<std::uint8_t, 12> command12(const AtaRegisters &registers, bool dataIn)
{
    std::array<std::uint8_t, 12> cdb{};
    cdb[0] = kOpcode12;
    cdb[1] = protocolByte(dataIn);
    cdb[2] = flagsByte(dataIn);
    cdb[3] = registers.features;
    cdb[4] = registers.sectorCount;
    cdb[5] = registers.sectorNumber;
    cdb[6] = registers.cylinderLow;
    cdb[7] = registers.cylinderHigh;
    cdb[8] = registers.driveHead;
    cdb[9] = registers.command;
    return cdb;
}

std::optional<Sense> parseSense(const std::uint8_t *sense, int length)
{
    if (!sense || length < 8)
        return std::nullopt;
    Sense result;
    const std::uint8_t responseCode = sense[0] & 0x7F;
    if (responseCode == 0x72 || responseCode == 0x73) {
        result.key = sense[1] & 0x0F;
        result.asc = sense[2];
        result.ascq = sense[3];
        result.registers = statusReturnDescriptor(sense, length);
        return result;
    }
    if (responseCode == 0x70 || responseCode == 0x71) {
        result.key = sense[2] & 0x0F;
        if (length >= 14) {
            result.asc = sense[12];
            result.ascq = sense[13];
        }
        // The fixed format has no marker of its own for the task file: the
        // information and command-specific fields hold it only when the
        // translation layer says so with 00/1D. Without that check a plain
        // SCSI disk's "invalid opcode" would read as an all-zero task file.
        if (length >= 14 && result.asc == 0 && result.ascq == kAscqPassThroughInformation)
            result.registers = taskFile(sense[3], sense[6], sense[9], sense[10], sense[11], sense[5], sense[4]);
        return result;
    }
    return std::nullopt;
}

} // namespace AtaPassThrough
