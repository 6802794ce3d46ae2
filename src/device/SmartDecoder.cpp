#include "SmartDecoder.h"

#include "AttributeCatalogue.h"

#include <algorithm>

namespace SmartDecoder {

namespace {

constexpr std::uint8_t kTemperatureId = 194;
constexpr std::uint8_t kPowerOnId = 9;
constexpr int kOfflineStatusByte = 362;
constexpr int kOfflineCapabilityByte = 367;
constexpr int kSmartCapabilityByte = 368;

const std::uint8_t *entryAt(const Sector &sector, int index)
{
    return sector.data() + kFirstEntry + kEntrySize * index;
}

// The values every read refreshes; shared by the first read and re-reads so
// both derive temperature and power-on count the same way.
void applyTemperatureAndPowerOn(DiskRecord &disk, std::uint8_t id, qint64 raw)
{
    if (id == kTemperatureId)
        disk.temperature = qint32(raw);
    else if (id == kPowerOnId)
        disk.powerOnRaw = quint64(raw);
}

} // namespace

qint64 decodeRaw(const std::uint8_t *entry)
{
    if (entry[0] == kTemperatureId) {
        // Only the current temperature word counts; drives put minimum and
        // maximum (or nothing) in the other bytes. Values above 100 are
        // taken for tenths of a degree.
        qint64 value = entry[5] | (entry[6] << 8);
        if (value > 100)
            value /= 10;
        return value;
    }
    qint64 value = 0;
    for (int i = 5; i >= 0; --i)
        value = (value << 8) | entry[5 + i];
    return value;
}

void applyFirstRead(DiskRecord &disk, const Sector &data, const Sector &thresholds)
{
    disk.attributes.clear();
    for (int i = 0; i < kMaxAttributes; ++i) {
        const std::uint8_t *entry = entryAt(data, i);
        if (entry[0] == 0)
            break;

        SmartAttribute row;
        row.id = entry[0];
        row.flags = quint32(entry[1] | (entry[2] << 8));
        row.current = entry[3];
        row.worst = entry[4];
        row.raw = decodeRaw(entry);
        // Same slot, not same ID: drives list thresholds in the data order.
        row.threshold = entryAt(thresholds, i)[1];
        row.advisory = (row.flags & 0x1) ? 0 : 1;
        row.performance = (row.flags & 0x4) ? 1 : 0;
        row.name = AttributeCatalogue::name(row.id);
        row.description = AttributeCatalogue::description(row.id);

        applyTemperatureAndPowerOn(disk, entry[0], row.raw);
        if (row.id == kTemperatureId)
            disk.hasTemperature = true;
        if (row.id == kPowerOnId) {
            disk.powerOnRawAtStart = quint64(row.raw);
            // A count this high is unlikely in hours; guess minutes until the
            // user's per-disk setting says otherwise.
            if (disk.powerOnUnit == 0)
                disk.powerOnUnit = quint64(row.raw) < kPowerOnMinutesFrom ? 1 : 2;
        }
        disk.attributes.append(row);
    }

    disk.offlineStatus = data[kOfflineStatusByte];
    disk.offlineCapability = data[kOfflineCapabilityByte];
    disk.smartCapability = quint32(data[kSmartCapabilityByte] | (data[kSmartCapabilityByte + 1] << 8));
    disk.attributeCount = int(disk.attributes.size());
    if (disk.attributes.isEmpty()) {
        // Nothing to watch: keep this disk out of the periodic re-reads.
        disk.smartState = 0;
        disk.smartEnabled = 0;
    } else {
        disk.smartState = 1;
    }
}

void applyReRead(DiskRecord &disk, const Sector &data)
{
    // Rows are matched by position only, and the entry's own ID decides how
    // its raw value reads; worst values and thresholds keep what the first
    // read saw.
    const int count = std::min({disk.attributeCount, int(disk.attributes.size()), kMaxAttributes});
    for (int i = 0; i < count; ++i) {
        const std::uint8_t *entry = entryAt(data, i);
        SmartAttribute &row = disk.attributes[i];
        row.current = entry[3];
        row.raw = decodeRaw(entry);
        applyTemperatureAndPowerOn(disk, entry[0], row.raw);
    }
}

} // namespace SmartDecoder
