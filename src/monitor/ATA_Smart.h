#pragma once

#include "device/DiskRecord.h"
#include "device/DriveBackend.h"

#include <QList>
#include <QMap>
#include <QObject>
#include <QPointer>

#include <memory>

class SMART_thread;
class SMART_timer;

/// Finds the disks and reads their SMART data, never on the calling thread:
/// discovery on a worker, the first read and every re-read on one worker per
/// disk, each read under a watchdog.
///
/// The disk list is written only on the thread this object lives on. A worker
/// that has not reported when its watchdog fires is counted off and left to
/// finish on its own; its result is then dropped, and neither this object's
/// destruction nor the end of the program waits for it.
class ATA_Smart : public QObject
{
    Q_OBJECT
public:
    /// Watchdog limit of one SMART read, in milliseconds.
    static constexpr int kWatchdogMs = 30000;

    /// Reads through \a backend into \a disks; the list must outlive this object.
    /// Workers keep the backend alive for as long as they may call into it.
    ATA_Smart(std::shared_ptr<DriveBackend> backend, QList<DiskRecord> &disks, QObject *parent = nullptr);
    /// Returns at once, even while a worker is blocked in the drive.
    ~ATA_Smart() override;

    /// The backend the reads go through.
    DriveBackend &backend() const { return *m_backend; }

    /// Starts discovery on a worker thread; finishedGetDevices follows once the disk list holds its result.
    void getDevice_Info();
    /// True from getDevice_Info() until finishedGetDevices.
    bool isDiscovering() const { return m_discovering; }

    /// Starts the first read of every disk; finishedScanSMART follows once every worker is counted off.
    void getSMART_Info();
    /// Workers of the current first read that have not been counted off yet.
    int runningCount() const { return m_running; }
    /// True when the first read of disk \a i was given up by its watchdog.
    bool timedOut(int i) const { return m_timedOut.value(i, false); }

    /// Starts a re-read of the current and raw values of every read disk (those that are not
    /// monitored only when \a force is set) whose previous re-read is not still blocked.
    /// Returns the disks started; reReadOver follows for each of them.
    QList<int> reReadSMART(bool force);
    /// Applies the re-read results that have come in, in disk order; a result that came after
    /// its watchdog fired has been dropped.
    void applyReReadResults();
    /// True while a re-read of disk \a i has not returned from the drive.
    bool isReReading(int i) const;

    /// Shortens the watchdog limit so that tests need not wait 30 seconds; 0 or less restores it.
    static void setWatchdogIntervalForTests(int ms);
    /// The watchdog limit in force, in milliseconds.
    static int watchdogIntervalMs();
    /// What to tell the user about \a disk, whose read the watchdog gave up on: its first read
    /// (\a firstRead) or a re-read.
    static QString timedOutText(const DiskRecord &disk, bool firstRead);

signals:
    /// Discovery has put its disks into the list (possibly none).
    void finishedGetDevices();
    /// Every worker of the first read has been counted off (at once when there are no disks).
    void finishedScanSMART();
    /// The re-read of disk \a index has reported (\a answered: with data) or has been given up.
    void reReadOver(int index, bool answered);
    /// A read of disk \a index has not answered within the watchdog limit and has been given up.
    void diskTimedOut(int index);

public slots:
    /// Gives up on first-read worker \a i: counts it off and lets it finish on its own; its result will be dropped.
    void terminate_S_thread(int i);
    /// Counts off one abandoned worker.
    void S_thread_terminated();
    /// Takes the result of first-read worker \a i into the disk list and counts the worker off.
    void finishedReadSMART(int i);
    /// Stops the watchdog of first-read worker \a i.
    void stopTimer(int i);

private slots:
    /// Keeps the sector re-read from disk \a i for applyReReadResults().
    void finishedReReadSMART(int i);
    /// Gives up waiting for the re-read of disk \a i.
    void reReadTimedOut(int i);

private:
    /// One re-read in flight or just over.
    struct ReRead
    {
        QPointer<SMART_thread> worker; ///< null once the worker has deleted itself
        SMART_timer *timer = nullptr;
        QString devicePath;            ///< the disk the read was started for
        bool waiting = false;          ///< not counted off yet
        bool busy = false;             ///< the worker has not returned from the drive
    };

    /// Lets go of the workers and watchdogs of the previous first read.
    void releaseWorkers();
    /// Detaches a worker that is still running so that it deletes itself when its call returns.
    void abandon(SMART_thread *thread);
    /// Starts the re-read of disk \a i.
    void startReRead(int i);

    std::shared_ptr<DriveBackend> m_backend;
    QList<DiskRecord> &m_disks;
    bool m_discovering = false;
    QList<QPointer<SMART_thread>> m_threads;
    QList<SMART_timer *> m_timers;
    QList<bool> m_waiting; ///< first-read worker i has not been counted off yet
    QList<bool> m_timedOut;
    int m_running = 0;
    QList<ReRead> m_reReads;           ///< by disk index
    QMap<int, QPair<QString, Sector>> m_reReadSectors; ///< results to apply, by disk index, with their device path
};
