// korvanectl scan as a user runs it: a simulated disk with bad sectors named three ways, an
// image file, a stop by Ctrl+C, and the arguments it refuses.

#include "TestEnv.h"
#include "TestFiles.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QProcess>
#include <QTemporaryDir>
#include <QtTest>

#include <csignal>

namespace {

// 70 MB: two whole map blocks and a partial third.
const QByteArray kDisk = R"({"size": 73400320, "identity": {"serial": "SCAN-0001"},
    "surface": {"badSectors": [[100, 103], [61439, 61440], 140000]}})";

} // namespace

class TestScanCommand : public QObject
{
    Q_OBJECT
    QTemporaryDir m_dir;

    QString describe(const QString &name, const QByteArray &json)
    {
        const QString path = m_dir.filePath(name);
        if (!TestFiles::write(path, json))
            qFatal("cannot write %s", qPrintable(path));
        return path;
    }

private slots:
    void simulatedDisk_data()
    {
        QTest::addColumn<QString>("disk");
        QTest::newRow("by index") << "0";
        QTest::newRow("by serial") << "SCAN-0001";
        QTest::newRow("by device path") << "sim://0";
    }
    void simulatedDisk()
    {
        QFETCH(QString, disk);
        const QString path = describe(QStringLiteral("bad.json"), kDisk);
        const auto json = TestEnv::runKorvanectl({"scan", disk, "--json", "--simulate", path});
        QCOMPARE(json.exitCode, 1);
        const QJsonObject result = QJsonDocument::fromJson(json.out.toUtf8()).object();
        const QJsonArray expected = QJsonDocument::fromJson("[[0, 127], [61312, 61439], [61440, 61567], [139904, 140031]]").array();
        QCOMPARE(result.value(QStringLiteral("badRanges")).toArray(), expected);
        QCOMPARE(result.value(QStringLiteral("sectorsScanned")).toInteger(), 143360);
        QCOMPARE(result.value(QStringLiteral("blocksScanned")).toInteger(), 3);
        QCOMPARE(result.value(QStringLiteral("badBlocks")).toInteger(), 1);
        QVERIFY(!result.value(QStringLiteral("openFailed")).toBool() && !result.value(QStringLiteral("stopRequested")).toBool());
        QCOMPARE(result.value(QStringLiteral("readTimes")).toObject().value(QStringLiteral("blocks")).toArray().size(), 3);

        // As text: each bad range as it is found, between plain progress lines, then the result.
        const auto text = TestEnv::runKorvanectl({"scan", disk, "--simulate", path, "--block-size", "512"});
        QCOMPARE(text.exitCode, 1);
        const QStringList lines = text.out.split(QLatin1Char('\n'), Qt::SkipEmptyParts);
        QStringList bad = lines.filter(QStringLiteral("Bad Sectors between"));
        QCOMPARE(bad.first(), QStringLiteral("Bad Sectors between 100 - 100"));
        QCOMPARE(bad.size(), 7);
        QCOMPARE(lines.filter(QRegularExpression(QStringLiteral("^ 50%  [0-9.]+ MB/s  0:00:\\d\\d left$"))).size(), 1);
        QVERIFY(text.out.contains(QLatin1String("Scan Disk Complete\nTotal Blocks scanned: 3\nTotal Sectors scanned: 143360\n"
                                                "Total Bad Blocks: 1\nTime elapsed: ")));
    }

    void imageFileByPath()
    {
        const QString image = m_dir.filePath(QStringLiteral("disk.img"));
        QVERIFY(TestFiles::write(image, QByteArray(3 * 1024 * 1024 + 100, '\x5a'))); // a stray tail of 100 bytes
        const auto run = TestEnv::runKorvanectl({"scan", image, "--from", "10", "--json"});
        QCOMPARE(run.exitCode, 0);
        const QJsonObject result = QJsonDocument::fromJson(run.out.toUtf8()).object();
        QCOMPARE(result.value(QStringLiteral("lastSector")).toInteger(), 6143);
        QCOMPARE(result.value(QStringLiteral("sectorsScanned")).toInteger(), 6134);
        QVERIFY(result.value(QStringLiteral("badRanges")).toArray().isEmpty());
        QCOMPARE(TestFiles::read(image), QByteArray(3 * 1024 * 1024 + 100, '\x5a'));
    }

    void ctrlCStops()
    {
        const QString path = describe(QStringLiteral("slow.json"), R"({"size": 73400320, "surface": {"readLatencyMs": 20}})");
        QProcess scan;
        scan.setProcessEnvironment(TestEnv::ctlEnvironment());
        scan.start(TestEnv::korvanectl(), {"scan", "0", "--json", "--simulate", path});
        QVERIFY(scan.waitForStarted());
        QTest::qWait(700);
        QElapsedTimer clock;
        clock.start();
        ::kill(pid_t(scan.processId()), SIGINT);
        QVERIFY(scan.waitForFinished(5000));
        QVERIFY2(clock.elapsed() < 1000, "the scan took more than a second to stop");
        QCOMPARE(scan.exitCode(), 130);
        const QJsonObject result = QJsonDocument::fromJson(scan.readAllStandardOutput()).object();
        QVERIFY(result.value(QStringLiteral("stopRequested")).toBool());
        QVERIFY(result.value(QStringLiteral("result")).toString().startsWith(QLatin1String("Scan Disk Stopped\n")));
        QCOMPARE(result.value(QStringLiteral("blocksScanned")).toInteger(), 1);
    }

    void refused_data()
    {
        QTest::addColumn<QStringList>("arguments");
        QTest::addColumn<QString>("says"); // on stderr, or on stdout for a disk that cannot be opened
        QTest::newRow("no such disk") << QStringList{"scan", "7"} << "no disk \"7\" in the disk list (0: SCAN-0001 sim://0, 1: b-locked sim://1)";
        QTest::newRow("no disk") << QStringList{"scan"} << "scan needs a DISK";
        QTest::newRow("reversed range") << QStringList{"scan", "0", "--from", "10", "--to", "5"} << "--from 10 lies after --to 5";
        QTest::newRow("past the end") << QStringList{"scan", "0", "--to", "143360"}
                                      << "sim://0 has sectors 0 to 143359; the range 0 to 143360 is not within them";
        QTest::newRow("odd block size") << QStringList{"scan", "0", "--block-size", "4096"} << "--block-size is 512, 65536 or 262144";
        QTest::newRow("scan option elsewhere") << QStringList{"info", "--from", "3"} << "--from is an option of scan and history, not of info";
        QTest::newRow("disk in use") << QStringList{"scan", "1"} << "The disk is in use or locked by another process.";
    }
    void refused()
    {
        QFETCH(QStringList, arguments);
        QFETCH(QString, says);
        const QString disks = describe(QStringLiteral("a-bad.json"), kDisk);
        const QString locked = describe(QStringLiteral("b-locked.json"), R"({"size": 1048576, "behaviour": {"scanLocked": true}})");
        const auto run = TestEnv::runKorvanectl(arguments + QStringList{"--simulate", disks, "--simulate", locked});
        QCOMPARE(run.exitCode, 2);
        QVERIFY2((run.err + run.out).contains(says), qPrintable(run.err + run.out));
    }
};

QTEST_GUILESS_MAIN(TestScanCommand)
#include "tst_scancommand.moc"
