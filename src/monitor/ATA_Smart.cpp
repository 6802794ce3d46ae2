#include "ATA_Smart.h"

#include "BackgroundTask.h"
#include "DetachedThreads.h"
#include "SMART_thread.h"
#include "SMART_timer.h"

#include "device/DiskDiscovery.h"
#include "device/SmartDecoder.h"
#include "device/TextLine.h"

namespace {

int watchdogMs = ATA_Smart::kWatchdogMs;

} // namespace

ATA_Smart::ATA_Smart(std::shared_ptr<DriveBackend> backend, QList<DiskRecord> &disks, QObject *parent)
    : QObject(parent)
    , m_backend(std::move(backend))
    , m_disks(disks)
{
}

ATA_Smart::~ATA_Smart()
{
    releaseWorkers();
    for (ReRead &read : m_reReads) {
        if (read.worker)
            abandon(read.worker);
    }
}

void ATA_Smart::setWatchdogIntervalForTests(int ms)
{
    watchdogMs = ms > 0 ? ms : kWatchdogMs;
}

int ATA_Smart::watchdogIntervalMs()
{
    return watchdogMs;
}

QString ATA_Smart::timedOutText(const DiskRecord &disk, bool firstRead)
{
    const int seconds = watchdogMs / 1000;
    const QString who = TextLine::oneLine(QStringLiteral("Disk: %1  Serial: %2").arg(disk.model, disk.serial));
    if (firstRead)
        return QStringLiteral("%1 did not answer the first SMART read within %2 seconds; it is shown without "
                              "SMART data").arg(who).arg(seconds);
    return QStringLiteral("%1 has not answered a SMART read for %2 seconds; its last values are kept until it does")
        .arg(who)
        .arg(seconds);
}

void ATA_Smart::getDevice_Info()
{
    if (m_discovering)
        return;
    m_discovering = true;
    const std::shared_ptr<DriveBackend> backend = m_backend;
    BackgroundTask::run<QList<DiskRecord>>(
        this, [backend] { return ::getDevice_Info(*backend); },
        [this](QList<DiskRecord> disks) {
            m_discovering = false;
            m_disks = std::move(disks);
            emit finishedGetDevices();
        });
}

void ATA_Smart::abandon(SMART_thread *thread)
{
    disconnect(thread, nullptr, this, nullptr);
    // Every worker deletes itself once it has finished, so one that is still
    // inside the drive needs nobody to wait for it, and our own destruction
    // must not take it along.
    if (!thread->isFinished()) {
        thread->setParent(nullptr);
        DetachedThreads::adopt(thread);
    }
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
    m_timedOut = QList<bool>(m_disks.size(), false);
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
        // The first read addresses the drive by its list position.
        thread->setDriveNumber(i);
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
    if (i < m_timedOut.size())
        m_timedOut[i] = true;
    stopTimer(i);
    // The worker keeps its handle and closes it when the drive lets go.
    if (SMART_thread *thread = m_threads.value(i))
        abandon(thread);
    emit diskTimedOut(i);
    S_thread_terminated();
}

void ATA_Smart::stopTimer(int i)
{
    if (i >= 0 && i < m_timers.size())
        m_timers.at(i)->stop();
}

bool ATA_Smart::isReReading(int i) const
{
    return i >= 0 && i < m_reReads.size() && m_reReads.at(i).busy;
}

QList<int> ATA_Smart::reReadSMART(bool force)
{
    if (m_reReads.size() < m_disks.size())
        m_reReads.resize(m_disks.size());
    QList<int> started;
    for (int i = 0; i < m_disks.size(); ++i) {
        const DiskRecord &disk = m_disks.at(i);
        if (disk.smartState < 1 || (!disk.monitored && !force))
            continue;
        // A drive still inside the previous command gets no second one: it
        // keeps its last values until it lets go.
        if (m_reReads.at(i).busy)
            continue;
        startReRead(i);
        started.append(i);
    }
    return started;
}

void ATA_Smart::startReRead(int i)
{
    ReRead &read = m_reReads[i];
    const DiskRecord &disk = m_disks.at(i);
    auto *thread = new SMART_thread(m_backend, this);
    thread->setMode(SMART_thread::Mode::ReRead);
    thread->setDevicePath(disk.devicePath);
    thread->setIndex(i);
    // Unlike the first read, which goes by list position, a re-read addresses
    // the drive by its device number.
    thread->setDriveNumber(disk.diskNumber & 0xFF);
    connect(thread, &SMART_thread::finishReadSMART, this, &ATA_Smart::finishedReReadSMART);
    connect(thread, &QThread::finished, thread, &QObject::deleteLater);

    if (!read.timer) {
        read.timer = new SMART_timer(this);
        read.timer->setIndex(i);
        connect(read.timer, &SMART_timer::needTerminated, this, &ATA_Smart::reReadTimedOut);
    }
    read.worker = thread;
    read.devicePath = disk.devicePath;
    read.waiting = true;
    read.busy = true;
    thread->start(QThread::InheritPriority);
    read.timer->start(watchdogMs);
}

void ATA_Smart::finishedReReadSMART(int i)
{
    if (i < 0 || i >= m_reReads.size() || sender() != m_reReads.at(i).worker)
        return;
    ReRead &read = m_reReads[i];
    read.busy = false;
    const std::optional<Sector> sector = read.worker->takeSector();
    if (!read.waiting)
        return; // given up already: the values it brings are no longer wanted
    read.waiting = false;
    read.timer->stop();
    if (sector)
        m_reReadSectors.insert(i, {read.devicePath, *sector});
    emit reReadOver(i, sector.has_value());
}

void ATA_Smart::reReadTimedOut(int i)
{
    if (i < 0 || i >= m_reReads.size() || !m_reReads.at(i).waiting)
        return;
    m_reReads[i].waiting = false;
    emit diskTimedOut(i);
    emit reReadOver(i, false);
}

void ATA_Smart::applyReReadResults()
{
    // QMap keeps its keys in order: the disks are updated in list order.
    for (auto it = m_reReadSectors.cbegin(); it != m_reReadSectors.cend(); ++it) {
        const int i = it.key();
        // The list may have been rebuilt since the read started.
        if (i < m_disks.size() && m_disks.at(i).devicePath == it.value().first)
            SmartDecoder::applyReRead(m_disks[i], it.value().second);
    }
    m_reReadSectors.clear();
}
