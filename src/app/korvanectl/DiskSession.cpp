#include "DiskSession.h"

#include "device/BackendFactory.h"
#include "device/DiskDiscovery.h"
#include "monitor/ATA_Smart.h"

#include <QCoreApplication>
#include <QEventLoop>
#include <QTextStream>


namespace DiskSession {

DriveBackend &openBackend(const QStringList &simulatePaths, bool *filesRead)
{
    QStringList errors;
    static DriveBackend *const backend = createDriveBackend(simulatePaths, &errors).release();
    QTextStream err(stderr);
    for (const QString &e : std::as_const(errors))
        err << "korvanectl: " << e << '\n';
    *filesRead = errors.isEmpty();
    return *backend;
}

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

QStringList accessProblems(DriveBackend &backend)
{
    QStringList lines;
    for (const std::string &line : backend.accessProblems())
        lines << QString::fromStdString(line);
    if (!lines.isEmpty())
        lines << QString::fromStdString(backend.accessAdvice(QCoreApplication::applicationFilePath().toStdString()));
    return lines;
}

} // namespace DiskSession
