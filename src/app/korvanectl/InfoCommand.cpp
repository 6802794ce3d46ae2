#include "InfoCommand.h"

#include "ConsoleOutput.h"
#include "CtlBackend.h"
#include "TextReport.h"

#include "device/DiskJson.h"
#include "device/SmartReport.h"
#include "device/WholeFile.h"
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

// The report of \a disks in the format asked for.
QByteArray report(const CtlOptions &options, const QList<DiskRecord> &disks, const ATA_Smart &smart)
{
    if (options.format == QLatin1String("json"))
        return QJsonDocument(DiskJson::diskList(disks)).toJson(QJsonDocument::Indented);
    if (options.format == QLatin1String("smartinfo"))
        return SmartReport::text(disks);
    if (disks.isEmpty())
        return "No fixed ATA disks found.\n";
    QString text;
    for (int i = 0; i < disks.size(); ++i)
        text += (i ? QStringLiteral("\n") : QString()) + TextReport::disk(disks.at(i), i, smart.timedOut(i)) + QLatin1Char('\n');
    return text.toUtf8();
}

// What the user should know about disks that were not read.
void reportProblems(const QList<DiskRecord> &disks, const ATA_Smart &smart)
{
    QTextStream err(stderr);
    for (int i = 0; i < disks.size(); ++i) {
        if (smart.timedOut(i))
            err << "korvanectl: " << ATA_Smart::timedOutText(disks.at(i), true) << '\n';
    }
    err.flush();
    CtlBackend::reportAccess(smart.backend());
}

} // namespace

int run(const CtlOptions &options)
{
    bool filesRead = true;
    QList<DiskRecord> disks;
    ATA_Smart smart(CtlBackend::open(options.simulate, &filesRead), disks);
    readDisks(smart);

    const QByteArray bytes = report(options, disks, smart);
    bool written = true;
    if (options.output.isEmpty()) {
        written = ConsoleOutput().write(bytes);
    } else {
        QString error;
        written = WholeFile::write(options.output, bytes, &error);
        if (!written)
            QTextStream(stderr) << "korvanectl: cannot write " << options.output << ": " << error << '\n';
    }
    reportProblems(disks, smart);
    return filesRead && written ? 0 : 2;
}

} // namespace InfoCommand
