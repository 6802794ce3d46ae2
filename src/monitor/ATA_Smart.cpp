#include "ATA_Smart.h"

#include "SMART_thread.h"
#include "SMART_timer.h"

#include "device/AtaCommands.h"
#include "device/SmartDecoder.h"

namespace {

int watchdogMs = ATA_Smart::kWatchdogMs;

} // namespace

ATA_Smart::ATA_Smart(DriveBackend &backend, QList<DiskRecord> &disks, QObject *parent)
    : QObject(parent)
    , m_backend(backend)
    , m_disks(disks)
{
}

ATA_Smart::~ATA_Smart()
{
    releaseWorkers();
}

void ATA_Smart::setWatchdogIntervalForTests(int ms)
{
    watchdogMs = ms > 0 ? ms : kWatchdogMs;
}

void ATA_Smart::abandon(SMART_thread *thread)
{
    disconnect(thread, nullptr, this, nullptr);
    // Every worker deletes itself once it has finished, so one that is still
    // inside the drive needs nobody to wait for it, and our own destruction
    // must not take it along.
    if (!thread->isFinished())
        thread->setParent(nullptr);
}

void ATA_Smart::releaseWorkers()
{
    qDeleteAll(m_timers);
    m_timers.clear();
    for (const QPointer<SMART_thread> &thread : std::as_const(m_threads)) {
        if (!thread)
            continue;
        abandon(thread);
        if (thread->parent() == this)
            delete thread.data();
    }
    m_threads.clear();
    m_waiting.clear();
    m_running = 0;
}

void ATA_Smart::getSMART_Info()
{
    releaseWorkers();
    if (m_disks.isEmpty()) {
        emit finishedScanSMART();
        return;
    }

    for (int i = 0; i < m_disks.size(); ++i) {
        auto *thread = new SMART_thread(m_backend, this);
        auto *timer = new SMART_timer(this);
        m_threads.append(thread);
        m_timers.append(timer);
        m_waiting.append(true);
        connect(timer, &SMART_timer::needTerminated, this, &ATA_Smart::terminate_S_thread);

        thread->setDevicePath(m_disks.at(i).devicePath);
        thread->setIndex(i);
        thread->setDisk(m_disks.at(i));
        connect(thread, &SMART_thread::finishReadSMART, this, &ATA_Smart::finishedReadSMART);
        connect(thread, &QThread::finished, thread, &QObject::deleteLater);
        thread->start(QThread::InheritPriority);

        timer->setIndex(i);
        timer->start(watchdogMs);
        ++m_running;
    }
}

void ATA_Smart::finishedReadSMART(int i)
{
    // A report from a worker of an earlier round, or from one the watchdog
    // has already counted off, is stale.
    if (!m_waiting.value(i, false))
        return;
    SMART_thread *thread = m_threads.value(i);
    if (sender() && sender() != thread)
        return;

    stopTimer(i);
    m_waiting[i] = false;
    const std::optional<DiskRecord> disk = thread ? thread->takeResult() : std::nullopt;
    // The list may have been rebuilt since the read started.
    if (disk && i < m_disks.size() && m_disks.at(i).devicePath == disk->devicePath)
        m_disks[i] = *disk;
    if (--m_running == 0)
        emit finishedScanSMART();
}

void ATA_Smart::S_thread_terminated()
{
    if (m_running > 0 && --m_running == 0)
        emit finishedScanSMART();
}

void ATA_Smart::terminate_S_thread(int i)
{
    if (!m_waiting.value(i, false))
        return;
    m_waiting[i] = false;
    stopTimer(i);
    // The worker keeps its handle and closes it when the drive lets go.
    if (SMART_thread *thread = m_threads.value(i))
        abandon(thread);
    S_thread_terminated();
}

void ATA_Smart::stopTimer(int i)
{
    if (i >= 0 && i < m_timers.size())
        m_timers.at(i)->stop();
}

void ATA_Smart::reReadSMART(bool force)
{
    for (DiskRecord &disk : m_disks) {
        if (disk.smartState < 1 || (!disk.monitored && !force))
            continue;
        const DiskHandle handle = m_backend.openDisk(disk.devicePath.toStdString());
        if (handle == kNoHandle)
            continue;
        // Unlike the first read, which goes by list position, a re-read
        // addresses the drive by its device number.
        Sector data{};
        if (SMART_thread::readSmartSector(m_backend, handle, disk.diskNumber & 0xFF, AtaCommands::kSmartReadData, data))
            SmartDecoder::applyReRead(disk, data);
        m_backend.closeDisk(handle);
    }
}
