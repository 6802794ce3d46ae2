#pragma once

#include "device/DiskRecord.h"
#include "device/DriveBackend.h"
#include "device/TraceFunction.h"
#include "health/EventLine.h"
#include "health/EventLogWriter.h"
#include "health/HealthEvaluation.h"
#include "health/HealthEvaluator.h"

#include <QDateTime>
#include <QList>
#include <QObject>
#include <QPointer>
#include <QTimer>

#include <memory>
#include <optional>

class ATA_Smart;
class SmtpClient;
class QThread;

/// The monitoring cycle, the one implementation both front ends share: it owns the disk
/// list, the SMART reading service, the health evaluation and the event log writer, finds
/// the disks and reads them once, then re-reads and evaluates them on the SMART timer,
/// refreshes their volumes on the free-space timer and settles the power-on unit once.
///
/// Lives on the GUI thread (or the command-line tool's main thread) and never waits for a
/// disk there: every disk call runs on a worker. It reports by signals that carry values;
/// the window draws them, `korvanectl monitor` prints them.
class DiskMonitor : public QObject
{
    Q_OBJECT
public:
    /// Time from the end of discovery to the power-on unit check.
    static constexpr int kUnitCheckDelayMs = 125000;

    /// Reads through \a backend; workers keep it alive for as long as they may call into it.
    explicit DiskMonitor(std::shared_ptr<DriveBackend> backend, QObject *parent = nullptr);
    /// Returns at once, even while a worker is blocked in a drive.
    ~DiskMonitor() override;

    /// The disks in discovery order; empty until discovery has finished.
    const QList<DiskRecord> &disks() const { return m_disks; }
    /// The backend the disks are read through.
    DriveBackend &backend() const { return *m_backend; }
    /// The same backend, for workers that must keep it alive (the surface scan).
    std::shared_ptr<DriveBackend> sharedBackend() const { return m_backend; }
    /// True from start() until discovery and the first read have finished.
    bool isDiscovering() const { return m_discoveryBusy; }

    /// The e-mail client the evaluation hands its notifications to.
    SmtpClient &mailClient() const { return *m_mail; }
    /// Polls every \a ms milliseconds instead of the settings' interval; 0 goes back to the settings.
    void setSmartIntervalMs(int ms);
    /// The SMART poll interval in force.
    int smartIntervalMs() const;
    /// Receives the detailed-log entries of discovery and of the "Refresh" action; none by default.
    void setTrace(TraceFunction trace) { m_trace = std::move(trace); }
    /// Moves the power-on unit check (tests; the program keeps kUnitCheckDelayMs).
    void setUnitCheckDelayMs(int ms) { m_unitCheckDelayMs = ms; }

    /// Records the session start and starts discovery; discoveryFinished follows.
    void start();
    /// Records the session end and stops the timers; nothing is read or written afterwards.
    void finish();

public slots:
    /// Re-reads the monitored disks on workers and evaluates them once all have answered (or
    /// the watchdog, or the next poll, says not to wait longer).
    void update_SMART();
    /// update_SMART() and Volume_updateDisplay() (the "Refresh" action).
    void update_ALL();
    /// Refreshes the volumes of every disk on a worker; volumesRefreshed follows.
    void Volume_updateDisplay();
    /// Re-reads every disk, evaluates, settles each disk's power-on unit from how far attribute 9
    /// moved since the first read, and evaluates again.
    void set_attr9();
    /// Switches the monitoring of disk \a index on or off; switching off evaluates at once.
    void setMonitored(int index, bool monitored);
    /// Evaluates every disk now, writes the event log records and reports the result.
    void checkHealthStatus();

signals:
    /// The session has started (the event log has its record).
    void sessionStarted(const QDateTime &when);
    /// Discovery and the first read are over; the disks carry their remembered settings. The first evaluation follows.
    void discoveryFinished(const QList<DiskRecord> &disks, const QDateTime &when);
    /// An evaluation is done: \a result says what to show and raise, \a disks are the records after it.
    void evaluated(const HealthEvaluation &result, const QList<DiskRecord> &disks, const QDateTime &when);
    /// Disk \a index changed outside an evaluation (monitoring switched, power-on unit settled).
    void diskChanged(int index, const DiskRecord &disk);
    /// The volumes of the disks were read again.
    void volumesRefreshed(const QList<DiskRecord> &disks, const QDateTime &when);
    /// Something the user should hear about that is not a health event: the event log cannot be
    /// written (or can again), a disk does not answer.
    void notice(const EventLine &line);
    /// An e-mail notification could not be sent: \a line (mail-error kind) for the Events Log.
    void mailFailed(const EventLine &line, const QDateTime &when);
    /// The session has ended (the event log has its record).
    void sessionFinished(const QDateTime &when);

private:
    enum class PollKind { Smart, UnitCheck };
    struct Poll
    {
        PollKind kind = PollKind::Smart;
        QList<int> pending; ///< disks whose re-read has not reported yet
    };

    void initSystem();
    void get_devices_complette();
    void startPoll(PollKind kind);
    void onReReadOver(int index);
    void finishPoll();
    void settleUnits();
    void startTimers();
    void restartTimers();
    void applyVolumes(const QList<DiskRecord> &found);
    void writeLog(const QString &body);
    void noteLogResult();
    void onDiskTimedOut(int index);
    void trace(const QString &entry);

    std::shared_ptr<DriveBackend> m_backend;
    QList<DiskRecord> m_disks;
    ATA_Smart *m_smart = nullptr;
    HealthEvaluator m_evaluator;
    EventLogWriter m_log;
    SmtpClient *m_mail = nullptr;
    TraceFunction m_trace;
    QTimer m_smartTimer;
    QTimer m_volumeTimer;
    QTimer m_unitCheckTimer;
    QTimer m_pollDeadline;
    int m_intervalOverrideMs = 0;
    int m_unitCheckDelayMs = kUnitCheckDelayMs;
    bool m_discoveryBusy = false;
    bool m_finished = false;
    bool m_logFailing = false;
    std::optional<Poll> m_poll;
    QPointer<QThread> m_volumeRefresh;
};
