#include "MonitorPrinter.h"

#include "ConsoleOutput.h"
#include "CtlBackend.h"

#include "device/TextLine.h"
#include "health/HealthJson.h"
#include "monitor/DiskMonitor.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QTextStream>

MonitorPrinter::MonitorPrinter(DiskMonitor &monitor, ConsoleOutput &out, bool json, QObject *parent)
    : QObject(parent)
    , m_monitor(monitor)
    , m_out(out)
    , m_json(json)
{
    connect(&monitor, &DiskMonitor::discoveryFinished, this, &MonitorPrinter::printDiscovery);
    connect(&monitor, &DiskMonitor::evaluated, this, &MonitorPrinter::printEvaluation);
    connect(&monitor, &DiskMonitor::notice, this, &MonitorPrinter::printNotice);
    connect(&monitor, &DiskMonitor::mailFailed, this, &MonitorPrinter::printMailFailure);
    if (json)
        return;
    connect(&monitor, &DiskMonitor::sessionStarted, this,
            [this](const QDateTime &when) { printLine(when, QStringLiteral("Session started")); });
    connect(&monitor, &DiskMonitor::sessionFinished, this,
            [this](const QDateTime &when) { printLine(when, QStringLiteral("Session finished")); });
}

void MonitorPrinter::printLine(const QDateTime &when, const QString &text)
{
    m_out.writeLine(QStringLiteral("%1 %2 %3").arg(when.date().toString(Qt::ISODate),
                                                   when.time().toString(Qt::ISODate), TextLine::oneLine(text)));
}

void MonitorPrinter::printEvaluation(const HealthEvaluation &result, const QList<DiskRecord> &disks,
                                     const QDateTime &when)
{
    if (m_json) {
        m_out.writeLine(QString::fromUtf8(
            QJsonDocument(HealthJson::evaluation(result, disks, when)).toJson(QJsonDocument::Compact)));
        return;
    }
    for (const EventLine &line : result.eventLines)
        printLine(when, line.text);
}

void MonitorPrinter::printMailFailure(const EventLine &line, const QDateTime &when)
{
    if (!m_json) {
        printLine(when, line.text);
        return;
    }
    // Shaped like the lines of an evaluation, so that a script reads both alike.
    const QJsonObject report{
        {QStringLiteral("time"), when.toString(Qt::ISODate)},
        {QStringLiteral("lines"), QJsonArray{QJsonObject{{QStringLiteral("kind"), int(line.kind)},
                                                         {QStringLiteral("text"), line.text}}}},
    };
    m_out.writeLine(QString::fromUtf8(QJsonDocument(report).toJson(QJsonDocument::Compact)));
}

void MonitorPrinter::printDiscovery(const QList<DiskRecord> &disks)
{
    // A monitor that watches nothing must say so, and why it may have missed disks.
    QTextStream err(stderr);
    if (disks.isEmpty())
        err << "korvanectl: no fixed ATA disks found; nothing to monitor\n";
    err.flush();
    CtlBackend::reportAccess(m_monitor.backend());
}

void MonitorPrinter::printNotice(const EventLine &line)
{
    QTextStream(stderr) << "korvanectl: " << TextLine::oneLine(line.text) << '\n';
}
