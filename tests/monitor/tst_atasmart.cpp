#include "FakeDriveBackend.h"

#include "monitor/ATA_Smart.h"
#include "monitor/SMART_thread.h"
#include "device/AtaCommands.h"

#include <QElapsedTimer>
#include <QPointer>
#include <QSignalSpy>
#include <QTest>

#include <algorithm>
#include <array>
#include <atomic>
#include <chrono>
#include <condition_variable>
#include <memory>
#include <mutex>

namespace {

using Reply = FakeDriveBackend::AtaReply;

// A SMART data or thresholds sector from its 12-byte entries: ID, then flags (2 bytes), current
// and worst, raw (6 bytes, little-endian) for data; ID, then threshold for thresholds.
Sector sector(std::initializer_list<std::array<quint8, 12>> entries)
{
    Sector s{};
    auto at = s.begin() + 2;
    for (const auto &entry : entries)
        at = std::copy(entry.begin(), entry.end(), at);
    return s;
}

// Power-on raw values are 1000 and 1010.
const Sector kData = sector({{1, 0x0B, 0, 100, 99, 5}, {9, 0x32, 0, 98, 98, 0xE8, 3}, {194, 0x22, 0, 60, 40, 40}});
const Sector kLaterData = sector({{1, 0x02, 0, 90, 80, 7}, {9, 0x30, 0, 97, 90, 0xF2, 3}, {194, 0x20, 0, 55, 30, 45}});
const Sector kThresholds = sector({{1, 50}, {9, 50}, {194, 50}});

} // namespace

class TestAtaSmart : public QObject
{
    Q_OBJECT

    std::shared_ptr<FakeDriveBackend> m_fake;
    // Holds back the hung disk's reads until opened (or 10 s pass, so that a
    // broken test cannot leave a thread behind for ever).
    std::mutex m_gateMutex;
    std::condition_variable m_gateChanged;
    bool m_gateOpen = false;
    std::atomic<int> m_held = 0;
    QList<DiskRecord> m_disks;
    QList<QPointer<QThread>> m_workers;

    void addDisk(int probe, const Sector &data = kData)
    {
        m_fake->addDisk(probe);
        setReply(probe, AtaCommands::kSmartReadData, Reply::sector(data));
        setReply(probe, AtaCommands::kSmartReadThresholds, Reply::sector(kThresholds));
        DiskRecord record;
        record.diskNumber = probe;
        record.devicePath = QString::fromStdString(m_fake->diskPath(probe));
        m_disks.append(record);
    }
    void setReply(int probe, quint8 features, const Reply &reply)
    {
        AtaRegisters command;
        command.features = features;
        command.command = AtaCommands::kSmart;
        m_fake->disk(probe)->setReply(SmartIoctlPath, command, reply);
    }
    // Holds back READ DATA of \a probe from its \a fromCall-th call on (0: every call).
    void hangOnReadData(int probe, int fromCall = 0)
    {
        auto calls = std::make_shared<std::atomic<int>>(0);
        m_fake->onCall = [this, probe, fromCall, calls](const FakeDriveBackend::Call &call) {
            if (call.probe != probe || call.registers.features != AtaCommands::kSmartReadData)
                return;
            if ((*calls)++ < fromCall)
                return;
            std::unique_lock lock(m_gateMutex);
            ++m_held;
            m_gateChanged.wait_for(lock, std::chrono::seconds(10), [this] { return m_gateOpen; });
        };
    }
    // Keeps the workers \a service runs now, for cleanup() to see them gone.
    void track(const ATA_Smart &service)
    {
        for (SMART_thread *worker : service.findChildren<SMART_thread *>())
            m_workers.append(worker);
    }
    void startFirstRead(ATA_Smart &service)
    {
        service.getSMART_Info();
        track(service);
    }
    void firstReadAndWait(ATA_Smart &service)
    {
        QSignalSpy finished(&service, &ATA_Smart::finishedScanSMART);
        startFirstRead(service);
        QTRY_COMPARE(finished.count(), 1);
    }
    // Starts a re-read, waits until every disk started has reported, applies the results.
    QList<int> reReadAndWait(ATA_Smart &service, bool force)
    {
        QSignalSpy over(&service, &ATA_Smart::reReadOver);
        const QList<int> started = service.reReadSMART(force);
        track(service);
        [&] { QTRY_COMPARE(over.count(), started.size()); }();
        service.applyReReadResults();
        return started;
    }
    // Lets every held worker out and sees it gone with its handle closed.
    void releaseAndJoin()
    {
        {
            std::lock_guard lock(m_gateMutex);
            m_gateOpen = true;
        }
        m_gateChanged.notify_all();
        for (const QPointer<QThread> &worker : std::as_const(m_workers))
            QTRY_VERIFY_WITH_TIMEOUT(worker.isNull(), 15000);
        QCOMPARE(m_fake->openHandleCount(), 0);
    }

private slots:
    void init()
    {
        ATA_Smart::setWatchdogIntervalForTests(0);
        m_fake = std::make_shared<FakeDriveBackend>();
        m_gateOpen = false;
        m_held = 0;
        m_disks.clear();
        m_workers.clear();
    }
    void cleanup()
    {
        // Workers may still be inside the fake: they must be gone before it goes.
        releaseAndJoin();
        m_fake.reset();
        ATA_Smart::setWatchdogIntervalForTests(0);
    }

    void noDisksFinishesAtOnce()
    {
        ATA_Smart service(m_fake, m_disks);
        QSignalSpy finished(&service, &ATA_Smart::finishedScanSMART);
        service.getSMART_Info();
        QCOMPARE(finished.count(), 1);
    }

    void hangingDiskIsCountedOffOnceAndItsLateResultDropped()
    {
        const int limit = 400;
        ATA_Smart::setWatchdogIntervalForTests(limit);
        for (int probe = 0; probe < 3; ++probe)
            addDisk(probe);
        hangOnReadData(1);

        ATA_Smart service(m_fake, m_disks);
        QSignalSpy finished(&service, &ATA_Smart::finishedScanSMART);
        QElapsedTimer clock;
        clock.start();
        startFirstRead(service);
        QTRY_COMPARE_WITH_TIMEOUT(finished.count(), 1, 10000);
        QVERIFY2(clock.elapsed() >= limit * 9 / 10, "finished before the hung disk's watchdog fired");
        QCOMPARE(m_disks.at(0).smartState, 1);
        QCOMPARE(m_disks.at(1).smartState, -1);
        QCOMPARE(m_disks.at(2).attributeCount, 3);

        // Each worker addressed its own drive by list position over the SMART interface.
        for (const FakeDriveBackend::Call &call : m_fake->calls("ataCommand"))
            QVERIFY(call.path == SmartIoctlPath && call.probeIndex == call.probe && call.registers.sectorNumber == 1);

        releaseAndJoin();
        QCOMPARE(finished.count(), 1);
        QCOMPARE(m_disks.at(1).smartState, -1);
        QVERIFY(m_disks.at(1).attributes.isEmpty());
    }

    void destructionDoesNotWaitForHungRead_data()
    {
        QTest::addColumn<bool>("reRead"); // else the first read hangs
        QTest::newRow("first read") << false;
        QTest::newRow("re-read") << true;
    }
    void destructionDoesNotWaitForHungRead()
    {
        QFETCH(bool, reRead);
        addDisk(0);
        addDisk(1);
        hangOnReadData(0, reRead ? 1 : 0);
        auto service = std::make_unique<ATA_Smart>(m_fake, m_disks);
        if (reRead) {
            firstReadAndWait(*service);
            service->reReadSMART(false);
            track(*service);
        } else {
            startFirstRead(*service);
        }
        QTRY_COMPARE(m_held.load(), 1);

        QElapsedTimer clock;
        clock.start();
        service.reset();
        QVERIFY2(clock.elapsed() < 2000, "destruction waited for the hung read");
        releaseAndJoin();
        QCOMPARE(m_disks.at(0).smartState, reRead ? 1 : -1);
    }

    void failedReadLeavesDiskUnread_data()
    {
        QTest::addColumn<int>("fault");
        QTest::newRow("open fails") << 0;
        QTest::newRow("data with driver error") << 1;
        QTest::newRow("thresholds refused") << 2;
    }
    void failedReadLeavesDiskUnread()
    {
        QFETCH(int, fault);
        addDisk(0);
        Reply driverError = Reply::sector(kData);
        driverError.driverError = 1;
        if (fault == 0)
            m_fake->disk(0)->opens = false;
        else if (fault == 1)
            setReply(0, AtaCommands::kSmartReadData, driverError);
        else
            setReply(0, AtaCommands::kSmartReadThresholds, Reply::refused());

        // The watchdog is at its full 30 s: a worker that failed to report would miss the wait.
        ATA_Smart service(m_fake, m_disks);
        firstReadAndWait(service);
        QCOMPARE(m_disks.at(0).smartState, -1);
        QVERIFY(m_disks.at(0).attributes.isEmpty());
        QCOMPARE(m_fake->openHandleCount(), 0);
    }

    void reRead()
    {
        addDisk(0);
        addDisk(1);
        addDisk(2, Sector{});
        // The first read addresses a drive by its list position, a re-read by
        // the low byte of its device number.
        m_disks[0].diskNumber = 0x105;
        ATA_Smart service(m_fake, m_disks);
        firstReadAndWait(service);
        QCOMPARE(m_disks.at(2).smartState, 0);
        m_disks[1].monitored = false;
        for (int probe = 0; probe < 3; ++probe) {
            setReply(probe, AtaCommands::kSmartReadData, Reply::sector(kLaterData));
            setReply(probe, AtaCommands::kSmartReadThresholds, Reply::sector(sector({{1, 70}, {9, 70}, {194, 70}})));
        }
        m_fake->clearCalls();

        QSignalSpy over(&service, &ATA_Smart::reReadOver);
        QCOMPARE(service.reReadSMART(false), QList<int>{0});
        track(service);
        QTRY_COMPARE(over.count(), 1);
        QCOMPARE(over.at(0), (QVariantList{0, true}));
        // Nothing reaches the record until the owner applies it, on its own thread.
        QCOMPARE(m_disks.at(0).attributes.at(0).current, 100u);
        service.applyReReadResults();
        const auto calls = m_fake->calls("ataCommand");
        QCOMPARE(calls.size(), size_t(1));
        QCOMPARE(calls.at(0).probeIndex, 5);
        QCOMPARE(calls.at(0).registers.features, AtaCommands::kSmartReadData);
        QCOMPARE(m_disks.at(1).attributes.at(0).current, 100u);
        // Only current and raw values (and what derives from them) change; the rest is the first read's.
        const DiskRecord &d = m_disks.at(0);
        const SmartAttribute &row = d.attributes.at(0);
        QCOMPARE(QStringLiteral("%1 rows; %2 now, raw %3, worst %4, threshold %5, flags %6; %7 C; on %8 since %9")
                     .arg(d.attributeCount).arg(row.current).arg(row.raw).arg(row.worst).arg(row.threshold)
                     .arg(row.flags).arg(d.temperature).arg(d.powerOnRaw).arg(d.powerOnRawAtStart),
                 QStringLiteral("3 rows; 90 now, raw 7, worst 99, threshold 50, flags 11; 45 C; on 1010 since 1000"));

        QCOMPARE(reReadAndWait(service, true), (QList<int>{0, 1}));
        QCOMPARE(m_disks.at(1).attributes.at(0).current, 90u);
        for (const FakeDriveBackend::Call &call : m_fake->calls("openDisk"))
            QVERIFY2(call.probe != 2, "a disk without SMART rows was re-read");
        QCOMPARE(m_fake->openHandleCount(), 0);

        // A failed read leaves the values as they were.
        setReply(0, AtaCommands::kSmartReadData, Reply::refused());
        setReply(0, AtaCommands::kSmartReadThresholds, Reply::refused());
        QCOMPARE(reReadAndWait(service, false), QList<int>{0});
        QCOMPARE(m_disks.at(0).attributes.at(0).current, 90u);
    }

    void hungReReadIsGivenUpAndNotRepeated()
    {
        const int limit = 400;
        ATA_Smart::setWatchdogIntervalForTests(limit);
        addDisk(0);
        addDisk(1);
        hangOnReadData(1, 1); // the first read answers, the re-reads hang
        ATA_Smart service(m_fake, m_disks);
        firstReadAndWait(service);
        for (int probe = 0; probe < 2; ++probe)
            setReply(probe, AtaCommands::kSmartReadData, Reply::sector(kLaterData));

        QSignalSpy over(&service, &ATA_Smart::reReadOver);
        QSignalSpy timedOut(&service, &ATA_Smart::diskTimedOut);
        QCOMPARE(service.reReadSMART(false), (QList<int>{0, 1}));
        track(service);
        QTRY_COMPARE(over.count(), 1);
        QCOMPARE(over.at(0).at(0).toInt(), 0);
        QTRY_COMPARE_WITH_TIMEOUT(over.count(), 2, 5000);
        QCOMPARE(over.at(1), (QVariantList{1, false}));
        QCOMPARE(timedOut.count(), 1);
        QVERIFY(service.isReReading(1));

        // The drive still holds the first command: the next poll leaves it alone.
        QCOMPARE(service.reReadSMART(false), QList<int>{0});
        QCOMPARE(m_held.load(), 1);
        QTRY_COMPARE(over.count(), 3); // disk 0 has reported this poll before the next one starts

        // When it lets go at last, what it brings is dropped, and it is read again.
        releaseAndJoin();
        QTRY_VERIFY(!service.isReReading(1));
        service.applyReReadResults();
        QCOMPARE(m_disks.at(0).attributes.at(0).current, 90u);
        QCOMPARE(m_disks.at(1).attributes.at(0).current, 100u);
        QCOMPARE(service.reReadSMART(false), (QList<int>{0, 1}));
        QTRY_COMPARE(over.count(), 5);
    }
};

QTEST_GUILESS_MAIN(TestAtaSmart)
#include "tst_atasmart.moc"
