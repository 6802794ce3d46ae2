#pragma once

#include "CtlOptions.h"
#include "device/DiskRecord.h"
#include "device/DriveBackend.h"
#include "health/EventLogWriter.h"
#include "health/HealthEvaluator.h"

#include <QList>
#include <QObject>
#include <QTextStream>

class ATA_Smart;
struct HealthEvaluation;

/// The headless monitor loop: discovery and the first read, then one health
/// evaluation per poll, each appended to the event log and reported on stdout.
class MonitorSession : public QObject
{
    Q_OBJECT
public:
    /// Reads through \a backend, which must outlive the session.
    MonitorSession(DriveBackend &backend, const CtlOptions &options, QObject *parent = nullptr);
    ~MonitorSession() override;

    /// Writes the session start, finds the disks and makes the first read and evaluation.
    void start();
    /// Re-reads the monitored disks and evaluates them.
    void poll();
    /// Writes the session end.
    void finish();

private:
    void evaluate();
    void printLine(const QDateTime &when, const QString &text);
    void printJson(const QDateTime &when, const HealthEvaluation &result);

    DriveBackend &m_backend;
    bool m_json = false;
    QList<DiskRecord> m_disks;
    ATA_Smart *m_smart = nullptr;
    HealthEvaluator m_evaluator;
    EventLogWriter m_log;
    QTextStream m_out;
};
