#include "FakeDriveBackend.h"

#include "monitor/ATA_Smart.h"
#include "monitor/SMART_thread.h"

#include <QElapsedTimer>
#include <QPointer>
#include <QSignalSpy>
#include <QTest>

#include <chrono>
#include <condition_variable>
#include <memory>
#include <mutex>

namespace {

// Holds back the calls that reach it until released (or 10 s pass, so that a
// broken test cannot leave a thread behind for ever).
class Gate
{
public:
    void pass()
    {
        std::unique_lock lock(m_mutex);
        ++m_waiting;
        m_cv.wait_for(lock, std::chrono::seconds(10), [this] { return m_open; });
    }
    void release()
    {
        {
            std::lock_guard lock(m_mutex);
            m_open = true;
        }
        m_cv.notify_all();
    }
    int waiting() const
    {
        std::lock_guard lock(m_mutex);
        return m_waiting;
    }

private:
    mutable std::mutex m_mutex;
    std::condition_variable m_cv;
    bool m_open = false;
    int m_waiting = 0;
};

struct Entry
{
    quint8 id;
    quint16 flags;
    quint8 current;
    quint8 worst;
    quint64 raw;
};

Sector smartData(std::initializer_list<Entry> entries)
{
    Sector s{};
    int at = 2;
    for (const Entry &e : entries) {
        s[at] = e.id;
        s[at + 1] = quint8(e.flags);
        s[at + 2] = quint8(e.flags >> 8);
        s[at + 3] = e.current;
        s[at + 4] = e.worst;
        for (int b = 0; b < 6; ++b)
            s[at + 5 + b] = quint8(e.raw >> (8 * b));
        at += 12;
    }
    return s;
}

Sector thresholdsFor(std::initializer_list<quint8> thresholds)
{
    Sector s{};
    int at = 2;
    for (quint8 t : thresholds) {
        s[at + 1] = t;
        at += 12;
    }
    return s;
}

AtaRegisters smartCommand(quint8 features)
{
    AtaRegisters r;
    r.features = features;
    r.command = 0xB0;
    return r;
}

const Sector kData = smartData({{1, 0x0B, 100, 99, 5}, {9, 0x32, 98, 98, 1000}, {194, 0x22, 60, 40, 40}});
const Sector kThresholds = thresholdsFor({50, 0, 0});
const Sector kLaterData = smartData({{1, 0x02, 90, 80, 7}, {9, 0x30, 97, 90, 1010}, {194, 0x20, 55, 30, 45}});

} // namespace

class TestAtaSmart : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();

    void noDisksFinishesAtOnce();
    void hangingDiskIsCountedOffAtTheLimit();
    void destructionDoesNotWaitForHungRead();
    void failedReadLeavesDiskUnread_data();
    void failedReadLeavesDiskUnread();
    void reReadHonoursForceAndMonitored();
    void reReadRefreshesOnlyChangingValues();

private:
    FakeDriveBackend::Disk &addDisk(int probe, const Sector &data = kData, const Sector &thresholds = kThresholds);
    void setData(int probe, const Sector &data);
    void hangOnReadData(int probe);
    void startFirstRead(ATA_Smart &service);
    void firstReadAndWait(ATA_Smart &service);

    std::unique_ptr<FakeDriveBackend> m_fake;
    std::unique_ptr<Gate> m_gate;
    QList<DiskRecord> m_disks;
    QList<QPointer<QThread>> m_workers;
};

void TestAtaSmart::init()
{
    ATA_Smart::setWatchdogIntervalForTests(0);
    m_fake = std::make_unique<FakeDriveBackend>();
    m_gate = std::make_unique<Gate>();
    m_disks.clear();
    m_workers.clear();
}

void TestAtaSmart::cleanup()
{
    // Workers may still be inside the fake: let them out and see them gone
    // before the fake goes away.
    m_gate->release();
    for (const QPointer<QThread> &worker : std::as_const(m_workers))
        QTRY_VERIFY_WITH_TIMEOUT(worker.isNull(), 15000);
    m_fake.reset();
    ATA_Smart::setWatchdogIntervalForTests(0);
}

FakeDriveBackend::Disk &TestAtaSmart::addDisk(int probe, const Sector &data, const Sector &thresholds)
{
    FakeDriveBackend::Disk &disk = m_fake->addDisk(probe);
    disk.setReply(SmartIoctlPath, smartCommand(SMART_thread::kReadData), FakeDriveBackend::AtaReply::sector(data));
    disk.setReply(SmartIoctlPath, smartCommand(SMART_thread::kReadThresholds),
                  FakeDriveBackend::AtaReply::sector(thresholds));
    DiskRecord record;
    record.diskNumber = probe;
    record.devicePath = QString::fromStdString(m_fake->diskPath(probe));
    m_disks.append(record);
    return disk;
}

void TestAtaSmart::setData(int probe, const Sector &data)
{
    m_fake->disk(probe)->setReply(SmartIoctlPath, smartCommand(SMART_thread::kReadData),
                                  FakeDriveBackend::AtaReply::sector(data));
}

void TestAtaSmart::hangOnReadData(int probe)
{
    Gate *gate = m_gate.get();
    m_fake->onCall = [gate, probe](const FakeDriveBackend::Call &call) {
        if (call.operation == "ataCommand" && call.probe == probe
            && call.registers.features == SMART_thread::kReadData)
            gate->pass();
    };
}

void TestAtaSmart::startFirstRead(ATA_Smart &service)
{
    service.getSMART_Info();
    const QList<SMART_thread *> workers = service.findChildren<SMART_thread *>();
    for (SMART_thread *worker : workers)
        m_workers.append(worker);
}

void TestAtaSmart::firstReadAndWait(ATA_Smart &service)
{
    QSignalSpy finished(&service, &ATA_Smart::finishedScanSMART);
    startFirstRead(service);
    QTRY_COMPARE(finished.count(), 1);
}

void TestAtaSmart::noDisksFinishesAtOnce()
{
    ATA_Smart service(*m_fake, m_disks);
    QSignalSpy finished(&service, &ATA_Smart::finishedScanSMART);
    service.getSMART_Info();
    QCOMPARE(finished.count(), 1);
}

void TestAtaSmart::hangingDiskIsCountedOffAtTheLimit()
{
    const int limit = 400;
    ATA_Smart::setWatchdogIntervalForTests(limit);
    for (int probe = 0; probe < 3; ++probe)
        addDisk(probe);
    hangOnReadData(1);

    ATA_Smart service(*m_fake, m_disks);
    QSignalSpy finished(&service, &ATA_Smart::finishedScanSMART);
    QList<int> statesAtFinish;
    connect(&service, &ATA_Smart::finishedScanSMART, this, [&] {
        for (const DiskRecord &disk : std::as_const(m_disks))
            statesAtFinish.append(disk.smartState);
    });
    QElapsedTimer clock;
    clock.start();
    startFirstRead(service);
    QTRY_COMPARE_WITH_TIMEOUT(finished.count(), 1, 10000);

    QVERIFY2(clock.elapsed() >= limit * 9 / 10, "finished before the hung disk's watchdog fired");
    QCOMPARE(statesAtFinish, (QList<int>{1, -1, 1}));
    QCOMPARE(m_disks.at(0).attributeCount, 3);
    QCOMPARE(m_disks.at(2).attributes.size(), 3);
    QVERIFY(m_disks.at(1).attributes.isEmpty());

    // Each worker addressed its own drive by its list position with the
    // SMART register block.
    for (const FakeDriveBackend::Call &call : m_fake->calls("ataCommand")) {
        QCOMPARE(call.path, int(SmartIoctlPath));
        QCOMPARE(call.probeIndex, call.probe);
        QVERIFY(call.dataIn);
        QCOMPARE(call.registers.sectorNumber, 1);
        QCOMPARE(call.registers.cylinderLow, 0x4F);
        QCOMPARE(call.registers.cylinderHigh, 0xC2);
        QCOMPARE(call.registers.command, 0xB0);
    }

    // The drive lets go: the late worker closes its handle and goes away,
    // and its result is dropped.
    m_gate->release();
    for (const QPointer<QThread> &worker : std::as_const(m_workers))
        QTRY_VERIFY(worker.isNull());
    QCOMPARE(m_fake->openHandleCount(), 0);
    QCOMPARE(finished.count(), 1);
    QCOMPARE(m_disks.at(1).smartState, -1);
    QVERIFY(m_disks.at(1).attributes.isEmpty());
}

void TestAtaSmart::destructionDoesNotWaitForHungRead()
{
    addDisk(0);
    addDisk(1);
    hangOnReadData(0);

    auto service = std::make_unique<ATA_Smart>(*m_fake, m_disks);
    startFirstRead(*service);
    QTRY_COMPARE(m_gate->waiting(), 1);

    QElapsedTimer clock;
    clock.start();
    service.reset();
    QVERIFY2(clock.elapsed() < 2000, "destruction waited for the hung read");

    m_gate->release();
    for (const QPointer<QThread> &worker : std::as_const(m_workers))
        QTRY_VERIFY(worker.isNull());
    QCOMPARE(m_fake->openHandleCount(), 0);
    QCOMPARE(m_disks.at(0).smartState, -1);
}

void TestAtaSmart::failedReadLeavesDiskUnread_data()
{
    QTest::addColumn<int>("fault");
    QTest::newRow("open fails") << 0;
    QTest::newRow("data refused") << 1;
    QTest::newRow("data driver error") << 2;
    QTest::newRow("thresholds refused") << 3;
    QTest::newRow("thresholds driver error") << 4;
}

void TestAtaSmart::failedReadLeavesDiskUnread()
{
    QFETCH(int, fault);
    FakeDriveBackend::Disk &disk = addDisk(0);
    FakeDriveBackend::AtaReply driverError = FakeDriveBackend::AtaReply::sector(kData);
    driverError.driverError = 1;
    const quint8 command = fault <= 2 ? SMART_thread::kReadData : SMART_thread::kReadThresholds;
    if (fault == 0)
        disk.opens = false;
    else if (fault == 1 || fault == 3)
        disk.setReply(SmartIoctlPath, smartCommand(command), FakeDriveBackend::AtaReply::refused());
    else
        disk.setReply(SmartIoctlPath, smartCommand(command), driverError);

    // The watchdog is at its full 30 s: a worker that failed to report would
    // miss the default wait.
    ATA_Smart service(*m_fake, m_disks);
    firstReadAndWait(service);
    QCOMPARE(m_disks.at(0).smartState, -1);
    QVERIFY(m_disks.at(0).attributes.isEmpty());
    QCOMPARE(m_disks.at(0).attributeCount, 0);
    QCOMPARE(m_fake->openHandleCount(), 0);
}

void TestAtaSmart::reReadHonoursForceAndMonitored()
{
    addDisk(0);
    addDisk(1);
    addDisk(2, smartData({}));
    // The first read addresses a drive by its list position, a re-read by
    // the low byte of its device number.
    m_disks[0].diskNumber = 0x105;
    ATA_Smart service(*m_fake, m_disks);
    firstReadAndWait(service);
    QCOMPARE(m_disks.at(2).smartState, 0);
    m_disks[1].monitored = false;
    for (int probe = 0; probe < 3; ++probe)
        setData(probe, kLaterData);
    m_fake->clearCalls();

    service.reReadSMART(false);
    QCOMPARE(m_disks.at(0).attributes.at(0).current, 90u);
    QCOMPARE(m_disks.at(1).attributes.at(0).current, 100u);
    const auto calls = m_fake->calls("ataCommand");
    QCOMPARE(calls.size(), size_t(1));
    QCOMPARE(calls.at(0).probe, 0);
    QCOMPARE(calls.at(0).probeIndex, 5);
    QCOMPARE(calls.at(0).registers.features, SMART_thread::kReadData);

    service.reReadSMART(true);
    QCOMPARE(m_disks.at(1).attributes.at(0).current, 90u);
    for (const FakeDriveBackend::Call &call : m_fake->calls("openDisk"))
        QVERIFY2(call.probe != 2, "a disk without SMART rows was re-read");
    QCOMPARE(m_fake->openHandleCount(), 0);
}

void TestAtaSmart::reReadRefreshesOnlyChangingValues()
{
    addDisk(0);
    ATA_Smart service(*m_fake, m_disks);
    firstReadAndWait(service);
    const DiskRecord before = m_disks.at(0);
    QCOMPARE(before.temperature, 40);
    QCOMPARE(before.powerOnRaw, 1000u);

    setData(0, kLaterData);
    m_fake->disk(0)->setReply(SmartIoctlPath, smartCommand(SMART_thread::kReadThresholds),
                              FakeDriveBackend::AtaReply::sector(thresholdsFor({70, 70, 70})));
    service.reReadSMART(false);

    const DiskRecord &after = m_disks.at(0);
    QCOMPARE(after.attributeCount, 3);
    const SmartAttribute &row = after.attributes.at(0);
    QCOMPARE(row.current, 90u);
    QCOMPARE(row.raw, 7);
    QCOMPARE(row.worst, 99u);
    QCOMPARE(row.threshold, 50u);
    QCOMPARE(row.flags, 0x0Bu);
    QCOMPARE(after.temperature, 45);
    QCOMPARE(after.powerOnRaw, 1010u);
    QCOMPARE(after.powerOnRawAtStart, 1000u);
    QCOMPARE(after.smartState, 1);
}

QTEST_GUILESS_MAIN(TestAtaSmart)
#include "tst_atasmart.moc"
