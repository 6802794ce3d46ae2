// Korvane's disk helper and the backend that calls it, end to end on a private bus: a
// dbus-daemon of the test's own, a stand-in for polkit's authority (polkit_standin.py) and the
// helper's test build over the demo disks, all run as the test user.

#include "TestEnv.h"
#include "TestFiles.h"

#include "device/AccessReport.h"
#include "device/AtaCommandIssuer.h"
#include "device/DiskDiscovery.h"
#include "device/DiskJson.h"
#include "device/SmartDecoder.h"
#include "device/helper/HelperBackend.h"
#include "device/helper/HelperProtocol.h"
#include "device/simulated/SimulatedBackend.h"

#include <QDBusConnectionInterface>
#include <QDBusMessage>
#include <QFile>
#include <QJsonDocument>
#include <QProcess>
#include <QStandardPaths>
#include <QTemporaryDir>
#include <QtTest>

namespace {

const QString Python = QStringLiteral("/usr/bin/python3");
const QString ReadAction = QLatin1String(HelperProtocol::kReadAction);
const QString ScanAction = QLatin1String(HelperProtocol::kScanAction);

// What discovery and the first SMART read make of every disk a backend offers.
QList<DiskRecord> readDisks(DriveBackend &backend)
{
    QList<DiskRecord> disks = getDevice_Info(backend);
    for (DiskRecord &disk : disks) {
        const DiskHandle handle = backend.openDisk(disk.devicePath.toStdString());
        AtaRegisters data = AtaCommandIssuer::smartReadData();
        AtaRegisters thresholds = AtaCommandIssuer::smartReadThresholds();
        Sector dataSector{}, thresholdSector{};
        if (AtaCommandIssuer::issue(backend, handle, disk.diskNumber, data, dataSector) >= 0
            && AtaCommandIssuer::issue(backend, handle, disk.diskNumber, thresholds, thresholdSector) >= 0)
            SmartDecoder::applyFirstRead(disk, dataSector, thresholdSector);
        backend.closeDisk(handle);
    }
    return disks;
}

QByteArray registers(std::uint8_t features, std::uint8_t count, std::uint8_t number, std::uint8_t low,
                     std::uint8_t high, std::uint8_t device, std::uint8_t command)
{
    return HelperProtocol::registersToBytes(AtaRegisters{features, count, number, low, high, device, command, 0});
}

} // namespace

class TestHelperBackend : public QObject
{
    Q_OBJECT

    QTemporaryDir m_dir;
    QProcess m_daemon;
    QProcess m_polkit;
    QProcess m_helper;
    QString m_address;
    std::unique_ptr<QDBusConnection> m_bus;

    void allow(const QStringList &actions)
    {
        QVERIFY(TestFiles::write(m_dir.filePath(QStringLiteral("allow")), actions.join(QLatin1Char('\n')).toUtf8()));
    }

    QStringList polkitLog()
    {
        QFile file(m_dir.filePath(QStringLiteral("polkit.log")));
        return file.open(QIODevice::ReadOnly) ? QString::fromUtf8(file.readAll()).split(QLatin1Char('\n'), Qt::SkipEmptyParts)
                                              : QStringList();
    }

    bool startHelper(int idleMs)
    {
        m_helper.start(qEnvironmentVariable("KORVANE_HELPER_TESTBED"),
                       {QStringLiteral("--bus"), m_address, QStringLiteral("--simulate"), TestEnv::demoDir(),
                        QStringLiteral("--idle-ms"), QString::number(idleMs)});
        QDeadlineTimer deadline(10000);
        while (!deadline.hasExpired()) {
            if (m_bus->interface()->isServiceRegistered(QLatin1String(HelperProtocol::kService)))
                return true;
            QTest::qWait(20);
        }
        return false;
    }

    QDBusMessage callHelper(const QString &method, const QVariantList &arguments)
    {
        QDBusMessage call = QDBusMessage::createMethodCall(QLatin1String(HelperProtocol::kService),
                                                           QLatin1String(HelperProtocol::kObjectPath),
                                                           QLatin1String(HelperProtocol::kInterface), method);
        call.setArguments(arguments);
        return m_bus->call(call, QDBus::Block, 10000);
    }

    HelperProtocol::Disk firstDisk()
    {
        const QDBusMessage reply = callHelper(QStringLiteral("ListDisks"), {});
        const QList<QVariantMap> disks = HelperProtocol::mapList(reply.arguments().value(0));
        return disks.isEmpty() ? HelperProtocol::Disk{} : HelperProtocol::diskFromMap(disks.first()).value();
    }

private slots:
    void initTestCase()
    {
        HelperProtocol::registerTypes();
        const QString daemon = QStandardPaths::findExecutable(QStringLiteral("dbus-daemon"));
        if (daemon.isEmpty())
            QSKIP("dbus-daemon is not installed (apt-get install dbus-daemon)");
        if (QProcess::execute(Python, {QStringLiteral("-c"), QStringLiteral("from gi.repository import Gio")}) != 0)
            QSKIP("python3-gi is not installed (apt-get install python3-gi)");
        QVERIFY(m_dir.isValid());
        const QString config = m_dir.filePath(QStringLiteral("bus.conf"));
        QVERIFY(TestFiles::write(config, QStringLiteral("<busconfig><type>session</type><listen>unix:dir=%1</listen>"
                                    "<auth>EXTERNAL</auth><policy context=\"default\"><allow send_destination=\"*\" eavesdrop=\"true\"/>"
                                    "<allow eavesdrop=\"true\"/><allow own=\"*\"/></policy></busconfig>").arg(m_dir.path()).toUtf8()));
        m_daemon.start(daemon, {QStringLiteral("--nofork"), QStringLiteral("--print-address"),
                                QStringLiteral("--config-file=") + config});
        QVERIFY(m_daemon.waitForReadyRead(10000));
        m_address = QString::fromUtf8(m_daemon.readLine()).trimmed();
        m_bus = std::make_unique<QDBusConnection>(QDBusConnection::connectToBus(m_address, QStringLiteral("test")));
        QVERIFY2(m_bus->isConnected(), qPrintable(m_address));

        allow({ReadAction, ScanAction});
        m_polkit.start(Python, {TestEnv::sourceDir() + QStringLiteral("/tests/support/polkit_standin.py"), m_address,
                                m_dir.filePath(QStringLiteral("allow")), m_dir.filePath(QStringLiteral("polkit.log"))});
        QVERIFY(m_polkit.waitForReadyRead(10000));
        QCOMPARE(m_polkit.readLine().trimmed(), QByteArray("READY"));
    }

    void cleanupTestCase()
    {
        m_polkit.closeWriteChannel();
        m_polkit.waitForFinished(5000);
        m_bus.reset();
        QDBusConnection::disconnectFromBus(QStringLiteral("test"));
        m_daemon.terminate();
        m_daemon.waitForFinished(5000);
    }

    void init()
    {
        allow({ReadAction, ScanAction});
        QVERIFY2(startHelper(60000), m_helper.readAllStandardError().constData());
    }

    void cleanup()
    {
        m_helper.kill();
        m_helper.waitForFinished(5000);
    }

    // Discovery, SMART reads, volumes and sector reads through the helper give what the disks
    // themselves give.
    void theHelperCarriesTheSeam()
    {
        QStringList errors;
        const auto direct = SimulatedBackend::load({TestEnv::demoDir()}, &errors);
        HelperBackend viaHelper(*m_bus);
        const QList<DiskRecord> expected = readDisks(*direct);
        const QList<DiskRecord> got = readDisks(viaHelper);
        QVERIFY(!got.isEmpty());
        QCOMPARE(QJsonDocument(DiskJson::diskList(got)).toJson(), QJsonDocument(DiskJson::diskList(expected)).toJson());
        QVERIFY(viaHelper.accessProblems().empty());

        const std::string path = got.constFirst().devicePath.toStdString();
        std::vector<std::uint8_t> a(8192, 1), b(8192, 2);
        const DiskHandle da = direct->openForRead(path, false), db = viaHelper.openForRead(path, false);
        QCOMPARE(viaHelper.readAt(db, 4096, b.data(), 8192), direct->readAt(da, 4096, a.data(), 8192));
        QVERIFY(a == b);
    }

    // The policy's cases are its own test's; here, that the helper applies it, and what only the
    // helper decides: the register block, the disks it found.
    void refusedCommands_data()
    {
        QTest::addColumn<QByteArray>("disk");
        QTest::addColumn<int>("path");
        QTest::addColumn<QByteArray>("registers");
        QTest::addColumn<QString>("says");
        const QByteArray disk("sim://0");
        QTest::newRow("WRITE SECTORS") << disk << 0 << registers(0, 1, 0, 0, 0, 0xE0, 0x30) << "0x30";
        QTest::newRow("SMART READ DATA without the key") << disk << 0 << registers(0xD0, 1, 1, 0, 0, 0, 0xB0) << "0xB0";
        QTest::newRow("IDENTIFY with an address") << disk << 0 << registers(0, 1, 0, 0, 0, 0x4F, 0xEC) << "not allowed";
        QTest::newRow("SMART READ DATA of 255 sectors") << disk << 1 << registers(0xD0, 0xFF, 1, 0x4F, 0xC2, 0, 0xB0)
                                                        << "not allowed";
        QTest::newRow("access path 3") << disk << 3 << registers(0, 1, 0, 0, 0, 0, 0xEC) << "access path 3";
        QTest::newRow("seven registers") << disk << 0 << registers(0, 1, 0, 0, 0, 0, 0xEC).left(7) << "8 bytes";
        QTest::newRow("a disk not listed") << QByteArray("/dev/sda") << 0 << registers(0, 1, 0, 0, 0, 0, 0xEC)
                                           << "/dev/sda is not a disk the helper found";
        QTest::newRow("a file") << QByteArray("/etc/shadow") << 0 << registers(0, 1, 0, 0, 0, 0, 0xEC)
                                << "/etc/shadow is not a disk";
    }

    void refusedCommands()
    {
        QFETCH(QByteArray, disk);
        QFETCH(int, path);
        QFETCH(QByteArray, registers);
        QFETCH(QString, says);
        const QDBusMessage reply = callHelper(QStringLiteral("AtaCommand"), {disk, path, registers});
        QCOMPARE(reply.errorName(), QLatin1String(HelperProtocol::kErrorRefused));
        QVERIFY2(reply.errorMessage().contains(says), qPrintable(reply.errorMessage()));
    }

    void refusedReads_data()
    {
        QTest::addColumn<QByteArray>("disk");
        QTest::addColumn<qint64>("fromEnd"); // offset counted back from the disk's end; 0 = the end
        QTest::addColumn<qulonglong>("offset"); // used when fromEnd is -1
        QTest::addColumn<uint>("length");
        QTest::addColumn<QString>("says");
        const QByteArray disk("sim://0");
        QTest::newRow("across the end") << disk << qint64(512) << 0ull << 1024u << "outside the disk";
        QTest::newRow("half a sector") << disk << qint64(-1) << 100ull << 512u << "whole 512-byte sectors";
        QTest::newRow("nothing") << disk << qint64(-1) << 0ull << 0u << "whole 512-byte sectors";
        QTest::newRow("too much at once") << disk << qint64(-1) << 0ull << (2u << 20) << "at most";
        QTest::newRow("a disk not listed") << QByteArray("/dev/sdb") << qint64(-1) << 0ull << 512u << "not a disk";
    }

    void refusedReads()
    {
        QFETCH(QByteArray, disk);
        QFETCH(qint64, fromEnd);
        QFETCH(qulonglong, offset);
        QFETCH(uint, length);
        QFETCH(QString, says);
        if (fromEnd >= 0)
            offset = firstDisk().length - quint64(fromEnd);
        const QDBusMessage reply = callHelper(QStringLiteral("ReadSectors"), {disk, offset, length});
        QCOMPARE(reply.errorName(), QLatin1String(HelperProtocol::kErrorRefused));
        QVERIFY2(reply.errorMessage().contains(says), qPrintable(reply.errorMessage()));
    }

    // polkit is asked about the caller's own bus name; a no means no disk and a report that says
    // which authorisation is missing. Reading sectors is an authorisation of its own.
    void unauthorisedCallersGetNothing()
    {
        allow({});
        HelperBackend viaHelper(*m_bus);
        QVERIFY(getDevice_Info(viaHelper).isEmpty());
        QCOMPARE(polkitLog().constLast(), ReadAction + QStringLiteral(" system-bus-name ") + m_bus->baseService());
        const QString report = AccessReport::lines(viaHelper, QStringLiteral("korvanectl")).join(QLatin1Char('\n'));
        QVERIFY2(report.contains(QStringLiteral("not authorised for org.korvane.read-smart")), qPrintable(report));
        QVERIFY2(report.contains(QStringLiteral("allow the polkit action org.korvane.read-smart")), qPrintable(report));

        allow({ReadAction});
        const QDBusMessage read = callHelper(QStringLiteral("ReadSectors"), {QByteArray("sim://0"), 0ull, 512u});
        QCOMPARE(read.errorName(), QLatin1String(HelperProtocol::kErrorNotAuthorized));
        QVERIFY2(read.errorMessage().contains(ScanAction), qPrintable(read.errorMessage()));
    }

    // A scan is authorised when it opens the disk, and once: polkit keeps a password for five
    // minutes, a scan reads for hours. The yes belongs to this connection alone, lapses when its
    // reads stop, and a no is a disk that does not open, never a disk full of bad sectors.
    void aScanIsAuthorisedOnceWhenItOpens()
    {
        cleanup();
        QVERIFY(startHelper(1000));
        const std::string path = firstDisk().path;
        const QString scanQuestion = ScanAction + QStringLiteral(" system-bus-name ") + m_bus->baseService();
        const qsizetype asked = polkitLog().count(scanQuestion);
        HelperBackend viaHelper(*m_bus);
        const DiskHandle h = viaHelper.openForRead(path, false);
        QVERIFY(h != kNoHandle);
        allow({ReadAction});
        std::vector<std::uint8_t> buffer(65536);
        for (int i = 0; i < 20; ++i)
            QCOMPARE(viaHelper.readAt(h, std::uint64_t(i) * 65536, buffer.data(), 65536), std::int64_t(65536));
        QCOMPARE(polkitLog().count(scanQuestion), asked + 1);

        QDBusConnection other = QDBusConnection::connectToBus(m_address, QStringLiteral("other"));
        {
            HelperBackend second(other);
            QCOMPARE(second.openForRead(path, false), kNoHandle);
            const QString report = AccessReport::lines(second, QStringLiteral("Korvane")).join(QLatin1Char('\n'));
            QVERIFY2(report.contains(ScanAction), qPrintable(report));
        }
        QDBusConnection::disconnectFromBus(QStringLiteral("other"));

        // SMART reads keep the helper running after the scan's reads stop; the grant lapses.
        for (int i = 0; i < 6; ++i) {
            QTest::qWait(250);
            QVERIFY(callHelper(QStringLiteral("ListDisks"), {}).type() == QDBusMessage::ReplyMessage);
        }
        QCOMPARE(viaHelper.readAt(h, 0, buffer.data(), 512), std::int64_t(-1));
    }

    void anIdleHelperLeaves()
    {
        cleanup();
        QVERIFY(startHelper(300));
        QVERIFY(m_helper.waitForFinished(5000));
        QCOMPARE(m_helper.exitStatus(), QProcess::NormalExit);
        QCOMPARE(m_helper.exitCode(), 0);
        QVERIFY(!m_bus->interface()->isServiceRegistered(QLatin1String(HelperProtocol::kService)));
    }
};

QTEST_GUILESS_MAIN(TestHelperBackend)
#include "tst_helperbackend.moc"
