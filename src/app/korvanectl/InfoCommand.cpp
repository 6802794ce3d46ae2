#include "InfoCommand.h"

#include "CtlBackend.h"
#include "TextReport.h"

#include "device/AccessReport.h"
#include "device/DiskJson.h"
#include "monitor/ATA_Smart.h"

#include <QCoreApplication>
#include <QJsonDocument>
#include <QTextStream>
#include <QTimer>

namespace InfoCommand {

namespace {

// Discovery and the first read, each on workers, while the event loop runs.
void readDisks(ATA_Smart &smart)
{
    QObject::connect(&smart, &ATA_Smart::finishedGetDevices, &smart, &ATA_Smart::getSMART_Info);
    QObject::connect(&smart, &ATA_Smart::finishedScanSMART, qApp, &QCoreApplication::quit);
    QTimer::singleShot(0, &smart, &ATA_Smart::getDevice_Info);
    QCoreApplication::exec();
}

} // namespace

int run(const CtlOptions &options)
{
    QTextStream out(stdout);
    QTextStream err(stderr);

    bool filesRead = true;
    QList<DiskRecord> disks;
    ATA_Smart smart(CtlBackend::open(options.simulate, &filesRead), disks);
    readDisks(smart);

    if (options.json) {
        out << QJsonDocument(DiskJson::diskList(disks)).toJson(QJsonDocument::Indented);
    } else if (disks.isEmpty()) {
        out << "No fixed ATA disks found.\n";
    } else {
        for (int i = 0; i < disks.size(); ++i)
            out << (i ? "\n" : "") << TextReport::disk(disks.at(i), i, smart.timedOut(i)) << '\n';
    }
    out.flush();

    const int seconds = ATA_Smart::watchdogIntervalMs() / 1000;
    for (int i = 0; i < disks.size(); ++i) {
        if (smart.timedOut(i))
            err << "korvanectl: " << disks.at(i).devicePath << ": did not answer the SMART read within " << seconds
                << " seconds\n";
    }
    for (const QString &line : AccessReport::lines(smart.backend(), QCoreApplication::applicationFilePath()))
        err << "korvanectl: " << line << '\n';
    return filesRead ? 0 : 2;
}

} // namespace InfoCommand
