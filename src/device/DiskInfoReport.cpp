#include "DiskInfoReport.h"

#include "SizeText.h"
#include "SmartTexts.h"

namespace DiskInfoReport {

namespace {

InfoRow row(const QString &label, const QString &value = QString())
{
    return InfoRow{label, value, {}};
}

} // namespace

QList<InfoRow> identityRows(const DiskRecord &disk)
{
    const QString capacity = QStringLiteral("%1 (%2)").arg(SizeText::byteCount(disk.capacityBytes),
                                                           SizeText::shortSize(qint64(disk.capacityBytes)));
    // -1 (unknown) and -3 (ATA-3 draft) are not version numbers to show; the
    // draft still shows through the standard text.
    const QString ataVersion = disk.ataMajorVersion >= 0 ? QString::number(disk.ataMajorVersion)
                                                         : QStringLiteral("N/A");
    // What the SMART read achieved, not what IDENTIFY claims.
    const QString smart = disk.smartState >= 1 ? QStringLiteral("Enabled") : QStringLiteral("Disabled");

    return {
        row(QStringLiteral("Disk Model"), disk.model),
        row(QStringLiteral("Serial Number"), disk.serial),
        row(QStringLiteral("Firmware Version"), disk.firmware),
        row(QStringLiteral("User Capacity"), capacity),
        row(QStringLiteral("ATA Version"), ataVersion),
        row(QStringLiteral("ATA Standart"), disk.ataStandardText),
        row(QStringLiteral("SMART Support"), smart),
    };
}

InfoRow volumeRow(const VolumeRecord &volume)
{
    // One multi-argument arg() so a "%1" inside a label is not substituted again.
    return row(QStringLiteral("%1 (%2) Free %3 of %4")
                   .arg(volume.label, volume.rootPath, SizeText::shortSize(qint64(volume.freeBytes)),
                        SizeText::shortSize(qint64(volume.totalBytes))),
               QStringLiteral("File system (%1). Serial number (%2).").arg(volume.fileSystem, volume.serialText));
}

QList<InfoRow> geometryRows(const DiskRecord &disk)
{
    QList<InfoRow> rows{
        row(QStringLiteral("Cylinders"), QString::number(disk.cylinders)),
        row(QStringLiteral("Tracks per cylinder"), QString::number(disk.tracksPerCylinder)),
        row(QStringLiteral("Sectors per track"), QString::number(disk.sectorsPerTrack)),
        row(QStringLiteral("Bytes per sector"), QString::number(disk.bytesPerSector)),
    };

    InfoRow status = row(QStringLiteral("Offline data collection status"));
    status.children.append(row(QStringLiteral("Offline data collection activity %1.")
                                   .arg(SmartTexts::offlineStatusText(disk.offlineStatus))));
    status.children.append(row((disk.offlineStatus & 0x80) ? QStringLiteral("Auto Offline Data Collection: Enabled.")
                                                           : QStringLiteral("Auto Offline Data Collection: Disabled.")));
    rows.append(status);

    InfoRow offline = row(QStringLiteral("Offline data collection capabilities"));
    for (const QString &text : SmartTexts::offlineCapabilityTexts(disk.offlineCapability))
        offline.children.append(row(text));
    rows.append(offline);

    InfoRow smart = row(QStringLiteral("SMART capabilities"));
    for (const QString &text : SmartTexts::smartCapabilityTexts(disk.smartCapability))
        smart.children.append(row(QStringLiteral("..."), text));
    rows.append(smart);

    // Under this label the page shows the number of attribute rows, not the
    // revision word of the SMART data.
    rows.append(row(QStringLiteral("SMART Attributes Data Structure revision number"),
                    QString::number(disk.attributes.size())));
    return rows;
}

QList<InfoRow> allRows(const DiskRecord &disk)
{
    QList<InfoRow> rows = identityRows(disk);
    for (const VolumeRecord &volume : disk.volumes)
        rows.append(volumeRow(volume));
    rows.append(geometryRows(disk));
    return rows;
}

} // namespace DiskInfoReport
