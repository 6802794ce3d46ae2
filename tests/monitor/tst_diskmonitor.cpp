#include "TestFiles.h"

#include "device/simulated/SimulatedBackend.h"
#include "monitor/ATA_Smart.h"
#include "monitor/DiskMonitor.h"
#include "settings/AppSettings.h"
#include "settings/LanguageTable.h"
#include "settings/SettingsStore.h"

#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>

#include <memory>

namespace {

// A simulated disk: serial, attribute 9's raw value (a JSON value: a number or a
// schedule), attribute 1's current value, and what else its behaviour holds.
QByteArray description(const QString &serial, const QByteArray &powerOn, const QByteArray &readErrors = "100",
                       const QByteArray &behaviour = "{}")
{
    return QStringLiteral(R"({"size": 500107862016, "identity": {"model": "Brenner B500", "serial": "%1"},
  "smart": {"attributes": [
    {"id": 1, "flags": 11, "current": %2, "threshold": 50, "raw": 0},
    {"id": 9, "flags": 50, "current": 98, "threshold": 0, "raw": %3},
    {"id": 194, "flags": 34, "current": 100, "threshold": 0, "raw": 38}]},
  "volumes": [{"label": "Data", "total": 500105764864, "free": 123456789504}],
  "behaviour": %4})")
        .arg(serial, QString::fromLatin1(readErrors), QString::fromLatin1(powerOn), QString::fromLatin1(behaviour))
        .toUtf8();
}

} // namespace

class TestDiskMonitor : public QObject
{
    Q_OBJECT

    std::unique_ptr<QTemporaryDir> m_home;
    std::unique_ptr<DiskMonitor> m_monitor;

    // A monitor over the disks described in the home folder, in name order.
    DiskMonitor &monitorOf(const QList<QByteArray> &disks)
    {
        const QString folder = m_home->filePath(QStringLiteral("disks"));
        QDir().mkpath(folder);
        for (int i = 0; i < disks.size(); ++i)
            if (!TestFiles::write(QStringLiteral("%1/%2.json").arg(folder).arg(i), disks.at(i)))
                qFatal("cannot write a disk description");
        QStringList errors;
        std::shared_ptr<DriveBackend> backend = SimulatedBackend::load({folder}, &errors);
        if (!errors.isEmpty())
            qFatal("%s", qPrintable(errors.join(QLatin1Char('\n'))));
        m_monitor = std::make_unique<DiskMonitor>(backend);
        return *m_monitor;
    }
    // Starts the monitor and waits for its first evaluation.
    void startAndWait(DiskMonitor &monitor)
    {
        QSignalSpy evaluated(&monitor, &DiskMonitor::evaluated);
        monitor.start();
        QTRY_COMPARE(evaluated.count(), 1);
    }
    QStringList logLines() const
    {
        QFile file(SettingsStore::instance().eventLogPath());
        if (!file.open(QIODevice::ReadOnly))
            return {};
        return QString::fromLocal8Bit(file.readAll()).split(QLatin1Char('\n'), Qt::SkipEmptyParts);
    }

private slots:
    void initTestCase()
    {
        QVERIFY(LanguageTable::loadLanguage(LanguageTable::English));
    }
    void init()
    {
        m_home = std::make_unique<QTemporaryDir>();
        QString error;
        QVERIFY2(SettingsStore::instance().setHomeFolder(m_home->path(), &error), qPrintable(error));
        setDefaults({});
        diskSettingsList().clear();
        ATA_Smart::setWatchdogIntervalForTests(0);
    }
    void cleanup()
    {
        if (m_monitor)
            m_monitor->finish();
        m_monitor.reset();
        // Let workers that a cancelled hang released delete themselves.
        QTest::qWait(50);
        ATA_Smart::setWatchdogIntervalForTests(0);
    }

    void firstCycleAppliesRememberedSettingsAfterTheFirstRead()
    {
        DiskMonitor &monitor = monitorOf({description(QStringLiteral("PLAIN"), "1000"),
                                          description(QStringLiteral("UNIT"), "1000"),
                                          description(QStringLiteral("IDLE"), "1000")});
        // Remembered: the second disk counts attribute 9 in half-minutes, the third is not watched.
        diskSettingsList() = {DiskSettings{QStringLiteral("UNIT"), true, 3}, DiskSettings{QStringLiteral("IDLE"), false, 0}};
        QStringList order;
        connect(&monitor, &DiskMonitor::sessionStarted, this, [&] { order << QStringLiteral("started"); });
        connect(&monitor, &DiskMonitor::discoveryFinished, this, [&](const QList<DiskRecord> &disks) {
            order << QStringLiteral("found %1").arg(disks.size());
        });
        connect(&monitor, &DiskMonitor::evaluated, this, [&] { order << QStringLiteral("evaluated"); });
        startAndWait(monitor);
        QCOMPARE(order, (QStringList{QStringLiteral("started"), QStringLiteral("found 3"), QStringLiteral("evaluated")}));

        const QList<DiskRecord> &disks = monitor.disks();
        QCOMPARE(disks.at(0).powerOnUnit, 1); // 1000 reads as hours until the check says otherwise
        QCOMPARE(disks.at(1).powerOnUnit, 3);
        QVERIFY(!disks.at(1).powerOnUnitFixed);
        QVERIFY(!disks.at(2).monitored);

        const QStringList log = logLines();
        QCOMPARE(log.size(), 3);
        QVERIFY(log.at(0).endsWith(QLatin1String("]![INFO]![Session started")));
        QVERIFY2(log.at(1).contains(QLatin1String("]![SMART]![0]![PLAIN]![1]![98]![38~;100~;98~;100")), qPrintable(log.at(1)));
        QVERIFY(log.at(2).contains(QLatin1String("]![SMART]![1]![UNIT]![")));
    }

    void unitCheckSettlesThePowerOnUnit_data()
    {
        QTest::addColumn<QByteArray>("powerOn"); // attribute 9's raw value per poll
        QTest::addColumn<int>("unit");
        QTest::newRow("hours") << QByteArray("[1000, 1001]") << 1;
        QTest::newRow("minutes") << QByteArray("[1000, 1003]") << 2;
        QTest::newRow("half-minutes") << QByteArray("[1000, 1010]") << 3;
        QTest::newRow("seconds") << QByteArray("[1000, 1125]") << 4;
    }
    void unitCheckSettlesThePowerOnUnit()
    {
        QFETCH(QByteArray, powerOn);
        QFETCH(int, unit);
        DiskMonitor &monitor = monitorOf({description(QStringLiteral("P1"), powerOn)});
        // Remembered as not monitored: the check reads it all the same.
        diskSettingsList() = {DiskSettings{QStringLiteral("P1"), false, 0}};
        monitor.setUnitCheckDelayMs(50);
        QSignalSpy evaluated(&monitor, &DiskMonitor::evaluated);
        QSignalSpy changed(&monitor, &DiskMonitor::diskChanged);
        monitor.start();
        // The first evaluation, then one before and one after the unit is settled.
        QTRY_COMPARE(evaluated.count(), 3);
        QCOMPARE(changed.count(), 1);
        const DiskRecord disk = changed.at(0).at(1).value<DiskRecord>();
        QCOMPARE(disk.powerOnUnit, unit);
        QVERIFY(disk.powerOnUnitFixed);
        QCOMPARE(monitor.disks().at(0).powerOnUnit, unit);
        QTest::qWait(100);
        QCOMPARE(evaluated.count(), 3); // once only
    }

    void pollsGoOnPastAHungDisk()
    {
        ATA_Smart::setWatchdogIntervalForTests(600);
        // The first disk's first re-read hangs for 3 s; its error-rate value would drop meanwhile.
        DiskMonitor &monitor = monitorOf({description(QStringLiteral("HUNG"), "1000", "[100, 90, 80]",
                                                      R"({"hang": {"seconds": 3, "polls": [1]}})"),
                                          description(QStringLiteral("FINE"), "[1000, 1001, 1002, 1003, 1004, 1005]")});
        monitor.setSmartIntervalMs(150);
        QSignalSpy notices(&monitor, &DiskMonitor::notice);
        QList<quint64> powerOn;
        QList<quint32> hungValue;
        connect(&monitor, &DiskMonitor::evaluated, this, [&](const HealthEvaluation &, const QList<DiskRecord> &disks) {
            powerOn << disks.at(1).powerOnRaw;
            hungValue << disks.at(0).attributes.at(0).current;
        });
        monitor.start();
        QTRY_VERIFY_WITH_TIMEOUT(powerOn.size() >= 6, 2500);
        // The others, also those after it, go on every poll; the hung disk keeps the values it had.
        QCOMPARE(powerOn.mid(0, 6), (QList<quint64>{1000, 1001, 1002, 1003, 1004, 1005}));
        QCOMPARE(hungValue.mid(0, 6), QList<quint32>(6, 100));
        QTRY_COMPARE(notices.count(), 1);
        const EventLine notice = notices.at(0).at(0).value<EventLine>();
        QVERIFY2(notice.text.contains(QLatin1String("Serial: HUNG has not answered a SMART read")),
                 qPrintable(notice.text));

        QElapsedTimer clock;
        clock.start();
        QSignalSpy finished(&monitor, &DiskMonitor::sessionFinished);
        monitor.finish();
        QCOMPARE(finished.count(), 1);
        QVERIFY(clock.elapsed() < 500);
        QVERIFY(logLines().last().endsWith(QLatin1String("]![INFO]![Session finished")));
    }

    void eventLogTroubleIsToldOnceAndItsEnd()
    {
        DiskMonitor &monitor = monitorOf({description(QStringLiteral("D1"), "1000")});
        const QString log = SettingsStore::instance().eventLogPath();
        QVERIFY(QDir().mkpath(log)); // a folder where the file should be
        QSignalSpy notices(&monitor, &DiskMonitor::notice);
        startAndWait(monitor);
        monitor.checkHealthStatus();
        QCOMPARE(notices.count(), 1);
        const EventLine lost = notices.at(0).at(0).value<EventLine>();
        QCOMPARE(lost.kind, EventLineKind::Warning);
        QVERIFY2(lost.text.contains(QLatin1String("records are lost until it can be written")) && lost.text.contains(QDir::toNativeSeparators(log)),
                 qPrintable(lost.text));

        QVERIFY(QDir(log).removeRecursively());
        monitor.checkHealthStatus();
        monitor.checkHealthStatus();
        QCOMPARE(notices.count(), 2);
        QCOMPARE(notices.at(1).at(0).value<EventLine>().kind, EventLineKind::Information);
        QCOMPARE(logLines().size(), 2);
    }

    void monitoringSwitchedOffEvaluatesAtOnce()
    {
        DiskMonitor &monitor = monitorOf({description(QStringLiteral("D1"), "1000"), description(QStringLiteral("D2"), "1000")});
        startAndWait(monitor);
        QSignalSpy evaluated(&monitor, &DiskMonitor::evaluated);
        QSignalSpy changed(&monitor, &DiskMonitor::diskChanged);
        monitor.setMonitored(0, false);
        QCOMPARE(changed.count(), 1);
        QCOMPARE(evaluated.count(), 1);
        QVERIFY(logLines().last().contains(QLatin1String("]![SMART]![1]![D2]![")));
        monitor.setMonitored(0, true); // switching on waits for the next poll
        QCOMPARE(evaluated.count(), 1);
        QVERIFY(monitor.disks().at(0).monitored);
    }

    void volumesAreRefreshed()
    {
        DiskMonitor &monitor = monitorOf({description(QStringLiteral("D1"), "1000")});
        startAndWait(monitor);
        QSignalSpy refreshed(&monitor, &DiskMonitor::volumesRefreshed);
        monitor.Volume_updateDisplay();
        QCOMPARE(refreshed.count(), 0); // the volumes are read on a worker
        QTRY_COMPARE(refreshed.count(), 1);
        const QList<DiskRecord> disks = refreshed.at(0).at(0).value<QList<DiskRecord>>();
        QCOMPARE(disks.at(0).volumes.size(), 1);
        QCOMPARE(disks.at(0).volumes.at(0).label, QStringLiteral("Data"));
        QCOMPARE(monitor.disks().at(0).volumes.size(), 1);
    }
};

QTEST_GUILESS_MAIN(TestDiskMonitor)
#include "tst_diskmonitor.moc"
