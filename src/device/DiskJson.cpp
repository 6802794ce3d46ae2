#include "DiskJson.h"

namespace DiskJson {

namespace {

// JSON numbers are doubles for most readers; counts and capacities fit well
// within the 53 bits a double holds exactly.
QJsonValue number(quint64 value)
{
    return QJsonValue(qint64(value));
}

} // namespace

QJsonObject attribute(const SmartAttribute &a)
{
    return QJsonObject{
        {QStringLiteral("id"), qint64(a.id)},
        {QStringLiteral("name"), a.name},
        {QStringLiteral("current"), qint64(a.current)},
        {QStringLiteral("worst"), qint64(a.worst)},
        {QStringLiteral("threshold"), qint64(a.threshold)},
        {QStringLiteral("raw"), a.raw},
        {QStringLiteral("flags"), qint64(a.flags)},
    };
}

QJsonObject volume(const VolumeRecord &v)
{
    return QJsonObject{
        {QStringLiteral("index"), v.index},
        {QStringLiteral("volumeName"), v.volumeName},
        {QStringLiteral("rootPath"), v.rootPath},
        {QStringLiteral("label"), v.label},
        {QStringLiteral("fileSystem"), v.fileSystem},
        {QStringLiteral("serialText"), v.serialText},
        {QStringLiteral("diskNumber"), v.diskNumber},
        {QStringLiteral("totalBytes"), number(v.totalBytes)},
        {QStringLiteral("freeBytes"), number(v.freeBytes)},
    };
}

QJsonObject disk(const DiskRecord &d, int index)
{
    QJsonArray volumes;
    for (const VolumeRecord &v : d.volumes)
        volumes.append(volume(v));
    QJsonArray attributes;
    for (const SmartAttribute &a : d.attributes)
        attributes.append(attribute(a));

    return QJsonObject{
        {QStringLiteral("index"), index},
        {QStringLiteral("diskNumber"), d.diskNumber},
        {QStringLiteral("devicePath"), d.devicePath},
        {QStringLiteral("mediaType"), qint64(d.mediaType)},
        {QStringLiteral("cylinders"), number(d.cylinders)},
        {QStringLiteral("tracksPerCylinder"), qint64(d.tracksPerCylinder)},
        {QStringLiteral("sectorsPerTrack"), qint64(d.sectorsPerTrack)},
        {QStringLiteral("bytesPerSector"), qint64(d.bytesPerSector)},
        {QStringLiteral("smartSupported"), d.smartSupported},
        {QStringLiteral("smartEnabled"), d.smartEnabled},
        {QStringLiteral("smartState"), d.smartState},
        {QStringLiteral("smartVersion"), d.smartVersion},
        {QStringLiteral("smartRevision"), d.smartRevision},
        {QStringLiteral("model"), d.model},
        {QStringLiteral("serial"), d.serial},
        {QStringLiteral("firmware"), d.firmware},
        {QStringLiteral("capacityBytes"), number(d.capacityBytes)},
        {QStringLiteral("ataMajorVersion"), d.ataMajorVersion},
        {QStringLiteral("ataStandardText"), d.ataStandardText},
        {QStringLiteral("hasTemperature"), d.hasTemperature},
        {QStringLiteral("temperature"), d.temperature},
        {QStringLiteral("powerOnUnit"), d.powerOnUnit},
        {QStringLiteral("powerOnUnitFixed"), d.powerOnUnitFixed},
        {QStringLiteral("powerOnRaw"), number(d.powerOnRaw)},
        {QStringLiteral("powerOnRawAtStart"), number(d.powerOnRawAtStart)},
        {QStringLiteral("healthState"), d.healthState},
        {QStringLiteral("healthValue"), d.healthValue},
        {QStringLiteral("attributeCount"), d.attributeCount},
        {QStringLiteral("monitored"), d.monitored},
        {QStringLiteral("note"), d.note},
        {QStringLiteral("offlineStatus"), qint64(d.offlineStatus)},
        {QStringLiteral("offlineCapability"), qint64(d.offlineCapability)},
        {QStringLiteral("smartCapability"), qint64(d.smartCapability)},
        {QStringLiteral("volumes"), volumes},
        {QStringLiteral("attributes"), attributes},
    };
}

QJsonObject diskList(const QList<DiskRecord> &disks)
{
    QJsonArray array;
    for (int i = 0; i < disks.size(); ++i)
        array.append(disk(disks.at(i), i));
    return QJsonObject{{QStringLiteral("disks"), array}};
}

} // namespace DiskJson
