#pragma once

#include "health/EventLine.h"
#include "health/HealthEvaluation.h"

#include "device/DiskRecord.h"

#include <QDateTime>
#include <QObject>

class ConsoleOutput;
class DiskMonitor;

/// `korvanectl monitor`'s front end: prints what the monitoring service reports, each
/// event and failed e-mail as "DATE TIME TEXT" or each as one JSON object, and the notices
/// (event log trouble, disks that do not answer or cannot be read) on stderr.
class MonitorPrinter : public QObject
{
    Q_OBJECT
public:
    /// Prints the signals of \a monitor to \a out; JSON objects when \a json is set.
    MonitorPrinter(DiskMonitor &monitor, ConsoleOutput &out, bool json, QObject *parent = nullptr);

private:
    void printLine(const QDateTime &when, const QString &text);
    void printEvaluation(const HealthEvaluation &result, const QList<DiskRecord> &disks, const QDateTime &when);
    void printDiscovery(const QList<DiskRecord> &disks);
    void printNotice(const EventLine &line);
    void printMailFailure(const EventLine &line, const QDateTime &when);

    DiskMonitor &m_monitor;
    ConsoleOutput &m_out;
    bool m_json = false;
};
