#include "HelperProtocol.h"

#include <QDBusArgument>
#include <QDBusMetaType>

namespace {

// Texts from the disks and the file systems (labels, mount points) are bytes in no promised
// encoding; a D-Bus string must be valid UTF-8, so they travel as byte arrays.
QByteArray bytes(const std::string &text)
{
    return QByteArray(text.data(), qsizetype(text.size()));
}

std::string text(const QVariant &value)
{
    return value.toByteArray().toStdString();
}

std::uint32_t u32(const QVariantMap &map, const char *key)
{
    return map.value(QLatin1String(key)).toUInt();
}

std::uint64_t u64(const QVariantMap &map, const char *key)
{
    return map.value(QLatin1String(key)).toULongLong();
}

} // namespace

namespace HelperProtocol {

void registerTypes()
{
    qDBusRegisterMetaType<QList<QVariantMap>>();
}

QVariantMap diskToMap(const Disk &disk)
{
    return {
        {QStringLiteral("path"), bytes(disk.path)},
        {QStringLiteral("probe"), disk.probe},
        {QStringLiteral("cylinders"), qulonglong(disk.geometry.cylinders)},
        {QStringLiteral("mediaType"), uint(disk.geometry.mediaType)},
        {QStringLiteral("tracksPerCylinder"), uint(disk.geometry.tracksPerCylinder)},
        {QStringLiteral("sectorsPerTrack"), uint(disk.geometry.sectorsPerTrack)},
        {QStringLiteral("bytesPerSector"), uint(disk.geometry.bytesPerSector)},
        {QStringLiteral("length"), qulonglong(disk.length)},
        {QStringLiteral("number"), int(disk.number)},
        {QStringLiteral("descriptor"), bytes(disk.descriptor)},
        {QStringLiteral("hasSmartVersion"), disk.hasSmartVersion},
        {QStringLiteral("smartVersion"), uint(disk.smartVersion)},
        {QStringLiteral("smartRevision"), uint(disk.smartRevision)},
    };
}

std::optional<Disk> diskFromMap(const QVariantMap &map)
{
    Disk disk;
    disk.path = text(map.value(QStringLiteral("path")));
    bool probeOk = false;
    disk.probe = map.value(QStringLiteral("probe")).toInt(&probeOk);
    if (disk.path.empty() || !probeOk || disk.probe < 0 || disk.probe >= kDiskProbes)
        return std::nullopt;
    disk.geometry.cylinders = u64(map, "cylinders");
    disk.geometry.mediaType = u32(map, "mediaType");
    disk.geometry.tracksPerCylinder = u32(map, "tracksPerCylinder");
    disk.geometry.sectorsPerTrack = u32(map, "sectorsPerTrack");
    disk.geometry.bytesPerSector = u32(map, "bytesPerSector");
    disk.length = u64(map, "length");
    disk.number = map.value(QStringLiteral("number"), -1).toInt();
    disk.descriptor = text(map.value(QStringLiteral("descriptor")));
    disk.hasSmartVersion = map.value(QStringLiteral("hasSmartVersion")).toBool();
    disk.smartVersion = std::uint8_t(u32(map, "smartVersion"));
    disk.smartRevision = std::uint8_t(u32(map, "smartRevision"));
    return disk;
}

QVariantMap volumeToMap(const Volume &volume)
{
    return {
        {QStringLiteral("name"), bytes(volume.name)},
        {QStringLiteral("fixed"), volume.fixed},
        {QStringLiteral("hasSpace"), volume.hasSpace},
        {QStringLiteral("sectorsPerCluster"), qulonglong(volume.space.sectorsPerCluster)},
        {QStringLiteral("bytesPerSector"), qulonglong(volume.space.bytesPerSector)},
        {QStringLiteral("freeClusters"), qulonglong(volume.space.freeClusters)},
        {QStringLiteral("totalClusters"), qulonglong(volume.space.totalClusters)},
        {QStringLiteral("hasInformation"), volume.hasInformation},
        {QStringLiteral("label"), bytes(volume.information.label)},
        {QStringLiteral("fileSystem"), bytes(volume.information.fileSystem)},
        {QStringLiteral("serialNumber"), uint(volume.information.serialNumber)},
        {QStringLiteral("hasNumber"), volume.hasNumber},
        {QStringLiteral("number"), int(volume.number)},
    };
}

Volume volumeFromMap(const QVariantMap &map)
{
    Volume volume;
    volume.name = text(map.value(QStringLiteral("name")));
    volume.fixed = map.value(QStringLiteral("fixed")).toBool();
    volume.hasSpace = map.value(QStringLiteral("hasSpace")).toBool();
    volume.space.sectorsPerCluster = u64(map, "sectorsPerCluster");
    volume.space.bytesPerSector = u64(map, "bytesPerSector");
    volume.space.freeClusters = u64(map, "freeClusters");
    volume.space.totalClusters = u64(map, "totalClusters");
    volume.hasInformation = map.value(QStringLiteral("hasInformation")).toBool();
    volume.information.label = text(map.value(QStringLiteral("label")));
    volume.information.fileSystem = text(map.value(QStringLiteral("fileSystem")));
    volume.information.serialNumber = u32(map, "serialNumber");
    volume.hasNumber = map.value(QStringLiteral("hasNumber")).toBool();
    volume.number = map.value(QStringLiteral("number"), -1).toInt();
    return volume;
}

QVariantMap mountToMap(const MountPoint &mount)
{
    return {{QStringLiteral("root"), bytes(mount.root)}, {QStringLiteral("volume"), bytes(mount.volumeName)}};
}

MountPoint mountFromMap(const QVariantMap &map)
{
    return MountPoint{text(map.value(QStringLiteral("root"))), text(map.value(QStringLiteral("volume")))};
}

QByteArray registersToBytes(const AtaRegisters &r)
{
    const char out[8] = {char(r.features),     char(r.sectorCount), char(r.sectorNumber), char(r.cylinderLow),
                         char(r.cylinderHigh), char(r.driveHead),   char(r.command),      char(r.reserved)};
    return QByteArray(out, 8);
}

bool registersFromBytes(const QByteArray &bytes, AtaRegisters &r)
{
    if (bytes.size() != 8)
        return false;
    const auto at = [&](int i) { return std::uint8_t(bytes.at(i)); };
    r = AtaRegisters{at(0), at(1), at(2), at(3), at(4), at(5), at(6), at(7)};
    return true;
}

QVariantMap exchangeToMap(const AtaExchange &exchange, bool answered)
{
    return {
        {QStringLiteral("answered"), answered},
        {QStringLiteral("registers"), registersToBytes(exchange.registers)},
        {QStringLiteral("registersReturned"), exchange.registersReturned},
        {QStringLiteral("data"), QByteArray(reinterpret_cast<const char *>(exchange.data.data()),
                                            qsizetype(exchange.data.size()))},
        {QStringLiteral("bytesReturned"), uint(exchange.bytesReturned)},
        {QStringLiteral("driverError"), uint(exchange.driverError)},
    };
}

bool exchangeFromMap(const QVariantMap &map, AtaExchange &exchange)
{
    const QByteArray data = map.value(QStringLiteral("data")).toByteArray();
    AtaRegisters registers;
    if (data.size() != qsizetype(exchange.data.size())
        || !registersFromBytes(map.value(QStringLiteral("registers")).toByteArray(), registers))
        return false;
    std::copy(data.begin(), data.end(), exchange.data.begin());
    exchange.registers = registers;
    exchange.registersReturned = map.value(QStringLiteral("registersReturned")).toBool();
    exchange.bytesReturned = u32(map, "bytesReturned");
    exchange.driverError = std::uint8_t(u32(map, "driverError"));
    return map.value(QStringLiteral("answered")).toBool();
}

QList<QVariantMap> mapList(const QVariant &value)
{
    if (value.canConvert<QDBusArgument>())
        return qdbus_cast<QList<QVariantMap>>(value.value<QDBusArgument>());
    return value.value<QList<QVariantMap>>();
}

} // namespace HelperProtocol
