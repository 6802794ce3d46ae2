#include "DiskSession.h"

#include "device/DiskDiscovery.h"
#include "monitor/ATA_Smart.h"

#include <QEventLoop>

namespace DiskSession {

QList<DiskRecord> discover(DriveBackend &backend)
{
    QList<DiskRecord> disks = getDevice_Info(backend);
    ATA_Smart smart(backend, disks);
    readFirst(smart);
    return disks;
}

void readFirst(ATA_Smart &smart)
{
    QEventLoop loop;
    QObject::connect(&smart, &ATA_Smart::finishedScanSMART, &loop, &QEventLoop::quit);
    smart.getSMART_Info();
    // With no disks the signal has already been sent from getSMART_Info itself.
    if (smart.runningCount() > 0)
        loop.exec();
}

QStringList accessProblems(DriveBackend &)
{
    return {};
}

} // namespace DiskSession
