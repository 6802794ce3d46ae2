#include "DiskMonitor.h"

#include "ATA_Smart.h"
#include "BackgroundTask.h"

#include "device/PowerOnTime.h"
#include "device/VolumeMapper.h"
#include "health/EventLogRecord.h"
#include "health/SmtpClient.h"
#include "settings/AppSettings.h"
#include "settings/LanguageTable.h"
#include "settings/SettingsStore.h"

#include <QDir>

#include <algorithm>

DiskMonitor::DiskMonitor(std::shared_ptr<DriveBackend> backend, QObject *parent)
    : QObject(parent)
    , m_backend(std::move(backend))
    , m_smart(new ATA_Smart(m_backend, m_disks, this))
    , m_mail(new SmtpClient(this))
{
    connect(m_mail, &SmtpClient::failed, this,
            [this](const EventLine &line) { emit mailFailed(line, QDateTime::currentDateTime()); });
    connect(m_smart, &ATA_Smart::finishedGetDevices, this, [this] {
        trace(QStringLiteral("Before getSMART_Info"));
        m_smart->getSMART_Info();
    });
    connect(m_smart, &ATA_Smart::finishedScanSMART, this, &DiskMonitor::get_devices_complette);
    connect(m_smart, &ATA_Smart::reReadOver, this, &DiskMonitor::onReReadOver);
    connect(m_smart, &ATA_Smart::diskTimedOut, this, &DiskMonitor::onDiskTimedOut);

    connect(&m_smartTimer, &QTimer::timeout, this, &DiskMonitor::update_SMART);
    connect(&m_volumeTimer, &QTimer::timeout, this, &DiskMonitor::Volume_updateDisplay);
    m_unitCheckTimer.setSingleShot(true);
    connect(&m_unitCheckTimer, &QTimer::timeout, this, &DiskMonitor::set_attr9);
    m_pollDeadline.setSingleShot(true);
    connect(&m_pollDeadline, &QTimer::timeout, this, &DiskMonitor::finishPoll);
    connect(&SettingsStore::instance(), &SettingsStore::settingsChanged, this, &DiskMonitor::restartTimers);
}

DiskMonitor::~DiskMonitor() = default;

void DiskMonitor::setSmartIntervalMs(int ms)
{
    m_intervalOverrideMs = std::max(ms, 0);
    restartTimers();
}

int DiskMonitor::smartIntervalMs() const
{
    return m_intervalOverrideMs > 0 ? m_intervalOverrideMs : int(appSettings().smartIntervalMs());
}

void DiskMonitor::start()
{
    m_log.setPath(SettingsStore::instance().eventLogPath());
    writeLog(EventLogRecord::sessionStartedBody());
    emit sessionStarted(QDateTime::currentDateTime());
    initSystem();
}

void DiskMonitor::finish()
{
    if (m_finished)
        return;
    m_finished = true;
    m_smartTimer.stop();
    m_volumeTimer.stop();
    m_unitCheckTimer.stop();
    m_pollDeadline.stop();
    m_poll.reset();
    // A simulated hang would otherwise keep its worker busy long after we are gone.
    m_backend->cancelWaits();
    writeLog(EventLogRecord::sessionFinishedBody());
    emit sessionFinished(QDateTime::currentDateTime());
}

void DiskMonitor::initSystem()
{
    m_discoveryBusy = true;
    trace(QStringLiteral("Before getDevice_Info"));
    // Discovery, then the first read of every disk; each ends in a signal.
    m_smart->getDevice_Info();
}

void DiskMonitor::get_devices_complette()
{
    if (m_finished)
        return;
    trace(QStringLiteral("get_device_coplette"));
    // The remembered settings go on after the first read: only then does a
    // disk have the power-on unit that a remembered one may replace.
    for (int i = 0; i < m_disks.size(); ++i) {
        m_disks[i].monitored = true;
        applyDiskSettings(m_disks, i);
    }
    m_discoveryBusy = false;
    emit discoveryFinished(m_disks, QDateTime::currentDateTime());

    checkHealthStatus();
    m_unitCheckTimer.start(m_unitCheckDelayMs);
    startTimers();
    trace(QStringLiteral("End initSystem"));
}

void DiskMonitor::trace(const QString &entry)
{
    if (m_trace)
        m_trace(entry);
}

void DiskMonitor::startTimers()
{
    m_smartTimer.start(smartIntervalMs());
    m_volumeTimer.start(int(appSettings().spaceCheckIntervalMs()));
}

void DiskMonitor::restartTimers()
{
    // Only timers that run take new intervals: before discovery and after the end there are none.
    if (m_smartTimer.isActive())
        startTimers();
}

void DiskMonitor::update_SMART()
{
    startPoll(PollKind::Smart);
}

void DiskMonitor::update_ALL()
{
    trace(QStringLiteral("update_ALL: before update_SMART()"));
    update_SMART();
    trace(QStringLiteral("update_ALL: before Volume_updateDisplay()"));
    Volume_updateDisplay();
}

void DiskMonitor::set_attr9()
{
    // The unit check reads every disk, monitored or not.
    startPoll(PollKind::UnitCheck);
}

void DiskMonitor::startPoll(PollKind kind)
{
    if (m_discoveryBusy || m_finished)
        return;
    // One evaluation per poll: a poll still waiting for a slow disk is
    // evaluated now with what it has.
    if (m_poll)
        finishPoll();
    m_poll = Poll{kind, m_smart->reReadSMART(kind == PollKind::UnitCheck)};
    if (m_poll->pending.isEmpty()) {
        finishPoll();
        return;
    }
    // A disk that keeps the others waiting longer than the watchdog, or past
    // the next poll, keeps its previous values for this one.
    m_pollDeadline.start(std::min(ATA_Smart::watchdogIntervalMs(), smartIntervalMs()));
}

void DiskMonitor::onReReadOver(int index)
{
    if (m_poll && m_poll->pending.removeOne(index) && m_poll->pending.isEmpty())
        finishPoll();
}

void DiskMonitor::finishPoll()
{
    if (!m_poll)
        return;
    m_pollDeadline.stop();
    const PollKind kind = m_poll->kind;
    m_poll.reset();
    m_smart->applyReReadResults();
    checkHealthStatus();
    if (kind == PollKind::UnitCheck) {
        settleUnits();
        checkHealthStatus();
    }
}

void DiskMonitor::settleUnits()
{
    for (int i = 0; i < m_disks.size(); ++i) {
        DiskRecord &disk = m_disks[i];
        if (disk.attributes.isEmpty() || disk.powerOnUnit == 0)
            continue;
        const quint64 growth = disk.powerOnRaw > disk.powerOnRawAtStart ? disk.powerOnRaw - disk.powerOnRawAtStart : 0;
        disk.powerOnUnit = PowerOnTime::unitFromGrowth(growth);
        disk.powerOnUnitFixed = true;
        emit diskChanged(i, disk);
    }
}

void DiskMonitor::setMonitored(int index, bool monitored)
{
    if (index < 0 || index >= m_disks.size() || m_discoveryBusy)
        return;
    m_disks[index].monitored = monitored;
    emit diskChanged(index, m_disks.at(index));
    if (!monitored)
        checkHealthStatus();
}

void DiskMonitor::checkHealthStatus()
{
    if (m_finished)
        return;
    const QDateTime now = QDateTime::currentDateTime();
    const HealthEvaluation result = m_evaluator.checkHealthStatus(m_disks, appSettings(), languageTable(), m_mail);
    if (result.mail)
        m_mail->sendNotification(result.mail->level, result.mail->text);
    emit evaluated(result, m_disks, now);
    // One sample per monitored disk and evaluation, after everyone has seen the result.
    m_log.compareValues(m_disks);
    noteLogResult();
}

void DiskMonitor::Volume_updateDisplay()
{
    // A refresh still blocked in the kernel is not joined by a second one.
    if (m_discoveryBusy || m_finished || m_volumeRefresh)
        return;
    QList<DiskRecord> shells;
    for (const DiskRecord &disk : std::as_const(m_disks)) {
        DiskRecord shell;
        shell.devicePath = disk.devicePath;
        shell.diskNumber = disk.diskNumber;
        shells.append(shell);
    }
    const std::shared_ptr<DriveBackend> backend = m_backend;
    m_volumeRefresh = BackgroundTask::run<QList<DiskRecord>>(
        this,
        [backend, shells]() mutable {
            findLogicalVolumes(*backend, shells);
            return shells;
        },
        [this](QList<DiskRecord> found) { applyVolumes(found); });
}

void DiskMonitor::applyVolumes(const QList<DiskRecord> &found)
{
    if (m_finished)
        return;
    for (int i = 0; i < std::min(m_disks.size(), found.size()); ++i) {
        if (m_disks.at(i).devicePath == found.at(i).devicePath)
            m_disks[i].volumes = found.at(i).volumes;
    }
    emit volumesRefreshed(m_disks, QDateTime::currentDateTime());
}

void DiskMonitor::writeLog(const QString &body)
{
    m_log.writeLog(body);
    noteLogResult();
}

void DiskMonitor::noteLogResult()
{
    // Said once when records start getting lost, and once when they are kept again.
    const QString error = m_log.lastError();
    if (error.isEmpty() == !m_logFailing)
        return;
    m_logFailing = !error.isEmpty();
    if (m_logFailing)
        emit notice({EventLineKind::Warning,
                     QStringLiteral("%1; the event log's records are lost until it can be written.").arg(error)});
    else
        emit notice({EventLineKind::Information, QStringLiteral("The event log %1 can be written again.")
                                                     .arg(QDir::toNativeSeparators(m_log.path()))});
}

void DiskMonitor::onDiskTimedOut(int index)
{
    if (index < 0 || index >= m_disks.size())
        return;
    emit notice({EventLineKind::Warning, ATA_Smart::timedOutText(m_disks.at(index), m_discoveryBusy)});
}
