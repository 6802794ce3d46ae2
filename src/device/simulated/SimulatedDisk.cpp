#include "SimulatedDisk.h"

#include "AtaSectors.h"
#include "device/AtaCommandIssuer.h"
#include "device/DeviceDescriptor.h"
#include "device/IdentifyDecoder.h"

#include <algorithm>

namespace {

using namespace AtaCommands;

constexpr std::uint8_t kStatusReady = 0x50; // DRDY | DSC
constexpr std::uint8_t kStatusError = 0x51; // DRDY | DSC | ERR
constexpr std::uint8_t kErrorAbort = 0x04;
// What the SMART driver interface reports when the drive rejected a command.
constexpr std::uint8_t kDriverDriveError = 1;

constexpr std::uint64_t kSectorBytes = 512;

std::string identifyText(const Sector &identify, int offset, int length)
{
    return IdentifyDecoder::decodeString(identify, offset, length).toLatin1().toStdString();
}

} // namespace

bool SimulatedDisk::hangsAt(quint64 poll) const
{
    return hangSeconds > 0 && (hangPolls.isEmpty() || hangPolls.contains(poll));
}

bool SimulatedDisk::hasBadSector(std::uint64_t offset, std::uint64_t length) const
{
    if (length == 0)
        return false;
    const std::uint64_t first = offset / kSectorBytes;
    const std::uint64_t last = (offset + length - 1) / kSectorBytes;
    return std::any_of(badSectors.begin(), badSectors.end(),
                       [&](const auto &range) { return range.first <= last && range.second >= first; });
}

double SimulatedDisk::readLatencyFor(std::uint64_t offset, std::uint64_t length) const
{
    double latency = readLatencyMs;
    if (length == 0)
        return latency;
    const std::uint64_t first = offset / kSectorBytes;
    const std::uint64_t last = (offset + length - 1) / kSectorBytes;
    for (const SlowSectors &slow : slowSectors) {
        if (slow.first <= last && slow.last >= first)
            latency = std::max(latency, slow.latencyMs);
    }
    return latency;
}

bool SimulatedDisk::disappearsWith(std::uint64_t offset, std::uint64_t length) const
{
    return disappearsAt && length > 0 && (offset + length - 1) / kSectorBytes >= *disappearsAt;
}

Sector SimulatedDisk::smartDataAt(quint64 poll) const
{
    Sector sector = smartData.value_or(Sector{});
    if (changing.isEmpty())
        return sector;
    for (const ChangingAttribute &attribute : changing) {
        const int at = AtaSectors::slotOffset(attribute.slot);
        if (attribute.current)
            sector[at + 3] = quint8(attribute.current->valueAt(poll));
        if (attribute.worst)
            sector[at + 4] = quint8(attribute.worst->valueAt(poll));
        else if (attribute.current)
            sector[at + 4] = quint8(std::min<quint64>(attribute.worstBefore, attribute.current->lowestUpTo(poll)));
        if (attribute.raw)
            AtaSectors::putRaw(sector, attribute.slot, attribute.raw->valueAt(poll));
    }
    AtaSectors::sealSmart(sector);
    return sector;
}

bool SimulatedDisk::healthyAt(quint64 poll) const
{
    if (forcedHealthy)
        return *forcedHealthy;
    if (dumpFailing)
        return false;
    if (!smartData || !thresholds)
        return true;
    // Drives judge only pre-failure attributes: an old-age attribute at its
    // threshold does not trip the overall status. Values 0 and 0xFE/0xFF mean
    // "no value" and thresholds 0 and 0xFE/0xFF "never fails".
    const Sector data = smartDataAt(poll);
    for (int slot = 0; slot < AtaSectors::kSlots; ++slot) {
        const int at = AtaSectors::slotOffset(slot);
        const quint8 id = data[at];
        if (id == 0 || (data[at + 1] & 0x01) == 0)
            continue;
        const int thresholdSlot = AtaSectors::findSlot(*thresholds, id);
        if (thresholdSlot < 0)
            continue;
        const quint8 threshold = (*thresholds)[AtaSectors::slotOffset(thresholdSlot) + 1];
        const quint8 value = data[at + 3];
        if (threshold >= 1 && threshold <= 0xFD && value >= 1 && value <= 0xFD && value <= threshold)
            return false;
    }
    return true;
}

int SimulatedDisk::writeDescriptor(std::uint8_t *buffer, int size) const
{
    DeviceDescriptor::Fields fields;
    fields.removable = removable;
    fields.busType = busType;
    // An ATA disk has no vendor text: the whole model goes into the product.
    fields.vendor = vendor;
    fields.product = identifyText(identify, IdentifyDecoder::kModelOffset, IdentifyDecoder::kModelLength);
    fields.revision = identifyText(identify, IdentifyDecoder::kFirmwareOffset, IdentifyDecoder::kFirmwareLength);
    fields.serial = identifyText(identify, IdentifyDecoder::kSerialOffset, IdentifyDecoder::kSerialLength);
    return DeviceDescriptor::write(fields, buffer, size);
}

bool SimulatedDisk::isSmartReadData(const AtaRegisters &registers)
{
    return registers.command == kSmart && registers.features == kSmartReadData;
}

SimulatedDisk::Outcome SimulatedDisk::classify(int path, const AtaExchange &exchange) const
{
    if (path < firstPath || path < AtaPassThroughPath || path > IdePassThroughPath)
        return Outcome::Refused;
    const AtaRegisters &r = exchange.registers;
    // The SMART driver interface passes on only IDENTIFY and SMART commands.
    if (path == SmartIoctlPath && r.command != kIdentifyDevice && r.command != kIdentifyPacketDevice
        && r.command != kSmart) {
        return Outcome::Refused;
    }

    bool readsSector = true;
    Outcome answer = Outcome::Data;
    if (r.command == kIdentifyDevice) {
        answer = Outcome::Data;
    } else if (r.command == kSmart) {
        const bool smartOn = smartSupported && smartEnabled;
        if (r.cylinderLow != kSmartKeyLow || r.cylinderHigh != kSmartKeyHigh)
            return Outcome::Aborted;
        if (r.features == kSmartReadData) {
            answer = smartOn && smartData ? Outcome::Data : Outcome::Aborted;
        } else if (r.features == kSmartReadThresholds) {
            answer = smartOn && thresholds ? Outcome::Data : Outcome::Aborted;
        } else if (r.features == kSmartReturnStatus) {
            readsSector = false;
            answer = smartOn ? Outcome::Status : Outcome::Aborted;
        } else {
            return Outcome::Aborted;
        }
    } else {
        // IDENTIFY PACKET DEVICE and everything else: not for an ATA disk.
        return Outcome::Aborted;
    }
    // A transfer in the wrong direction is rejected by the interface.
    if (readsSector != exchange.dataIn)
        return Outcome::Refused;
    return answer;
}

void SimulatedDisk::complete(Outcome outcome, int path, AtaExchange &exchange, quint64 poll) const
{
    const bool smartIoctl = path == SmartIoctlPath;
    AtaRegisters &r = exchange.registers;
    exchange.bytesReturned = 0;
    exchange.driverError = 0;
    exchange.registersReturned = false;

    switch (outcome) {
    case Outcome::Refused:
        return;
    case Outcome::Aborted:
        if (smartIoctl) {
            exchange.driverError = kDriverDriveError;
            return;
        }
        r.features = kErrorAbort;
        r.command = kStatusError;
        exchange.registersReturned = true;
        return;
    case Outcome::Data:
        if (r.command == kIdentifyDevice)
            exchange.data = identify;
        else if (r.features == kSmartReadThresholds)
            exchange.data = thresholds.value_or(Sector{});
        else
            exchange.data = smartDataAt(poll);
        exchange.bytesReturned = std::uint32_t(exchange.data.size());
        // The SMART driver interface gives no registers back for data commands.
        if (!smartIoctl) {
            r.features = 0;
            r.command = kStatusReady;
            exchange.registersReturned = true;
        }
        return;
    case Outcome::Status: {
        const bool healthy = healthyAt(poll);
        r.features = 0;
        r.cylinderLow = healthy ? kSmartKeyLow : kSmartExceededLow;
        r.cylinderHigh = healthy ? kSmartKeyHigh : kSmartExceededHigh;
        r.command = kStatusReady;
        exchange.registersReturned = true;
        return;
    }
    }
}
