#include "VolumeMapper.h"

#include <algorithm>

namespace {

QString serialText(std::uint32_t serial)
{
    QString text = QString::asprintf("%08X", serial);
    text.insert(4, QLatin1Char('-'));
    return text.left(9);
}

VolumeRecord readVolume(DriveBackend &backend, const std::string &name, int index)
{
    VolumeRecord volume;
    volume.index = index;
    volume.volumeName = QString::fromStdString(name);

    VolumeSpace space;
    if (backend.volumeSpace(name, space)) {
        const quint64 cluster = space.sectorsPerCluster * space.bytesPerSector;
        volume.totalBytes = cluster * space.totalClusters;
        volume.freeBytes = cluster * space.freeClusters;
    }
    VolumeInformation info;
    if (backend.volumeInformation(name, info)) {
        volume.label = QString::fromStdString(info.label);
        volume.fileSystem = QString::fromStdString(info.fileSystem);
        volume.serialText = serialText(info.serialNumber);
    }
    std::int32_t number = -1;
    if (backend.volumeDeviceNumber(name, number))
        volume.diskNumber = number;
    return volume;
}

void assignRoots(DriveBackend &backend, QList<VolumeRecord> &volumes)
{
    for (const MountPoint &mount : backend.mountPoints()) {
        const QString name = QString::fromStdString(mount.volumeName);
        for (VolumeRecord &volume : volumes) {
            if (volume.volumeName == name && volume.rootPath.isEmpty()) {
                volume.rootPath = QString::fromStdString(mount.root);
                break;
            }
        }
    }
    // Volumes without a letter still need a root to be shown and told apart.
    int next = 1;
    for (VolumeRecord &volume : volumes) {
        if (volume.rootPath.isEmpty())
            volume.rootPath = QStringLiteral("%1:\\").arg(next++);
    }
}

} // namespace

QList<VolumeRecord> findLogicalVolumes(DriveBackend &backend, QList<DiskRecord> &disks, const TraceFunction &trace)
{
    QList<VolumeRecord> volumes;
    int index = 0;
    for (const std::string &name : backend.volumeNames()) {
        const int current = index++;
        if (trace)
            trace(QStringLiteral("Logical Volume: ") + QString::fromStdString(name));
        if (backend.isFixedVolume(name))
            volumes.append(readVolume(backend, name, current));
    }

    assignRoots(backend, volumes);

    for (const VolumeRecord &volume : volumes) {
        const auto disk = std::find_if(disks.begin(), disks.end(), [&](const DiskRecord &d) {
            return d.diskNumber == volume.diskNumber;
        });
        if (disk != disks.end())
            disk->volumes.append(volume);
    }
    return volumes;
}
