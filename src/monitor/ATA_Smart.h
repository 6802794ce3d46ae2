#pragma once

#include "device/DiskRecord.h"
#include "device/DriveBackend.h"

#include <QList>
#include <QObject>
#include <QPointer>

class SMART_thread;
class SMART_timer;

/// Reads the SMART data of the disks in the disk list: the first read on one
/// worker thread per disk under a watchdog, later re-reads synchronously.
///
/// The disk list is written only on the thread this object lives on. A worker
/// that has not reported when its watchdog fires is counted off and left to
/// finish on its own; its result is then dropped, and neither this object's
/// destruction nor the end of the program waits for it.
class ATA_Smart : public QObject
{
    Q_OBJECT
public:
    /// Watchdog limit of one first read, in milliseconds.
    static constexpr int kWatchdogMs = 30000;

    /// Reads through \a backend into \a disks; both must outlive this object,
    /// and the backend also any worker still blocked in it.
    ATA_Smart(DriveBackend &backend, QList<DiskRecord> &disks, QObject *parent = nullptr);
    /// Returns at once, even while a worker is blocked in the drive.
    ~ATA_Smart() override;

    /// Starts the first read of every disk; finishedScanSMART follows once every worker is counted off.
    void getSMART_Info();
    /// Refreshes current and raw values of every read disk now, on the calling
    /// thread; disks that are not monitored only when \a force is set.
    void reReadSMART(bool force);

    /// Workers of the current first read that have not been counted off yet.
    int runningCount() const { return m_running; }

    /// Shortens the watchdog limit so that tests need not wait 30 seconds; 0 or less restores it.
    static void setWatchdogIntervalForTests(int ms);

signals:
    /// Every worker of the first read has been counted off (at once when there are no disks).
    void finishedScanSMART();

public slots:
    /// Gives up on worker \a i: counts it off and lets it finish on its own; its result will be dropped.
    void terminate_S_thread(int i);
    /// Counts off one abandoned worker.
    void S_thread_terminated();
    /// Takes the result of worker \a i into the disk list and counts the worker off.
    void finishedReadSMART(int i);
    /// Stops the watchdog of worker \a i.
    void stopTimer(int i);

private:
    /// Lets go of the workers and watchdogs of the previous first read.
    void releaseWorkers();
    /// Detaches a worker that is still running so that it deletes itself when its call returns.
    void abandon(SMART_thread *thread);

    DriveBackend &m_backend;
    QList<DiskRecord> &m_disks;
    QList<QPointer<SMART_thread>> m_threads;
    QList<SMART_timer *> m_timers;
    QList<bool> m_waiting; ///< worker i has not been counted off yet
    int m_running = 0;
};
