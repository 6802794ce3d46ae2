#include "Skdump.h"
#include "TestEnv.h"
#include "TestFiles.h"

#include <QDir>
#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QTemporaryDir>
#include <QtTest>

namespace {

using Run = TestEnv::CtlRun;

Run korvanectl(const QStringList &arguments)
{
    return TestEnv::runKorvanectl(arguments);
}

QJsonArray disksOf(const Run &run)
{
    return QJsonDocument::fromJson(run.out.toUtf8()).object().value(QStringLiteral("disks")).toArray();
}

QStringList dumpFiles()
{
    const QString dir = TestEnv::smartDumpDir();
    QStringList files;
    for (const QString &name : QDir(dir).entryList(QDir::Files, QDir::Name))
        if (!name.endsWith(QLatin1String(".md")) && name != QLatin1String("README"))
            files << QDir(dir).filePath(name);
    return files;
}

} // namespace

class TestKorvanectl : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase()
    {
        QVERIFY2(QFileInfo(TestEnv::korvanectl()).isExecutable(), "KORVANECTL must name the built korvanectl");
    }

    void realDumpsAgreeWithSkdump_data()
    {
        QTest::addColumn<QString>("path");
        if (TestEnv::smartDumpDir().isEmpty())
            QSKIP("No SMART dump folder (set KORVANE_TESTDATA to the folder holding smart-dumps/)");
        for (const QString &file : dumpFiles())
            QTest::newRow(qPrintable(QFileInfo(file).fileName())) << file;
    }

    // Each real dump goes the whole way: simulated disk, discovery, first SMART
    // read on a worker, JSON. What comes out must match skdump's reading of the
    // same file, row by row up to the first empty slot, where our table ends.
    void realDumpsAgreeWithSkdump()
    {
        QFETCH(QString, path);
        const Run run = korvanectl({"info", "--json", "--simulate", path});
        QCOMPARE(run.exitCode, 0);
        const QJsonArray disks = disksOf(run);
        QCOMPARE(disks.size(), 1);
        const QJsonObject disk = disks.at(0).toObject();
        const QJsonArray attributes = disk.value(QStringLiteral("attributes")).toArray();
        QCOMPARE(disk.value(QStringLiteral("smartState")).toInt(), 1);
        QVERIFY(disk.value(QStringLiteral("capacityBytes")).toInteger() > 0);
        QCOMPARE(disk.value(QStringLiteral("attributeCount")).toInt(), attributes.size());

        if (Skdump::program().isEmpty())
            QSKIP("skdump (libatasmart-bin) is not installed: read without comparing");
        bool ok = false;
        const Skdump::Report expected = Skdump::load(path, &ok);
        QVERIFY(ok);

        QCOMPARE(Skdump::folded(disk.value(QStringLiteral("model")).toString()), expected.model);
        QCOMPARE(Skdump::folded(disk.value(QStringLiteral("serial")).toString()), expected.serial);
        QCOMPARE(Skdump::folded(disk.value(QStringLiteral("firmware")).toString()), expected.firmware);
        QCOMPARE(disk.value(QStringLiteral("smartSupported")).toInt() == 1, true);

        QVERIFY(expected.rows.size() >= attributes.size());
        for (int i = 0; i < attributes.size(); ++i) {
            const QJsonObject ours = attributes.at(i).toObject();
            const Skdump::Row &theirs = expected.rows.at(i);
            const quint32 id = quint32(ours.value(QStringLiteral("id")).toInt());
            const QByteArray place = "attribute " + QByteArray::number(id) + " in slot " + QByteArray::number(i);
            const char *where = place.constData();
            QVERIFY2(id == theirs.id, where);
            QVERIFY2(Skdump::sameNormalised(theirs.value, ours.value(QStringLiteral("current")).toInt()), where);
            QVERIFY2(Skdump::sameNormalised(theirs.worst, ours.value(QStringLiteral("worst")).toInt()), where);
            // In these files the thresholds sit in the same slots as the
            // attributes, so matching by slot (ours) and by ID (skdump's) agree;
            // skdump hides the 0xFE "always passing" threshold as n/a.
            const int threshold = ours.value(QStringLiteral("threshold")).toInt();
            if (theirs.threshold == QLatin1String("n/a"))
                QVERIFY2(threshold == 0xFE, where);
            else
                QVERIFY2(threshold == theirs.threshold.toInt(), where);

            QCOMPARE(theirs.raw.size(), 6);
            const qint64 raw = ours.value(QStringLiteral("raw")).toInteger();
            const auto byte = [&](int k) { return qint64(quint8(theirs.raw.at(k))); };
            if (id == 194) {
                // The temperature is the first word only, in tenths above 100.
                const qint64 word = byte(0) | byte(1) << 8;
                QVERIFY2(raw == (word > 100 ? word / 10 : word), where);
                QCOMPARE(disk.value(QStringLiteral("temperature")).toInteger(), raw);
            } else {
                qint64 expectedRaw = 0;
                for (int k = 0; k < 6; ++k)
                    expectedRaw |= byte(k) << (8 * k);
                QVERIFY2(raw == expectedRaw, where);
            }
        }
    }

    void badArguments_data()
    {
        QTest::addColumn<QStringList>("arguments");
        QTest::addColumn<QString>("complaint");
        QTest::newRow("no command") << QStringList{} << "no command";
        QTest::newRow("unknown command") << QStringList{"frobnicate"} << "unknown command";
        QTest::newRow("unknown option") << QStringList{"info", "--colour"} << "unknown option --colour";
        QTest::newRow("simulate without path") << QStringList{"info", "--simulate"} << "--simulate needs a value";
        QTest::newRow("monitor option for info") << QStringList{"info", "--once"} << "--once is an option of monitor";
        QTest::newRow("empty home") << QStringList{"info", "--home="} << "--home needs a folder";
        QTest::newRow("interval beyond the timer") << QStringList{"info", "--interval", "2147484"} << "from 1 to 2147483";
        QTest::newRow("missing file") << QStringList{"info", "--simulate", "/nonexistent/disk.json"} << "/nonexistent/disk.json";
        QTest::newRow("unknown format") << QStringList{"info", "--format", "xml"} << "--format is one of text, json, smartinfo";
        QTest::newRow("two formats") << QStringList{"info", "--format=smartinfo", "--json"} << "ask for two formats";
        QTest::newRow("info option for monitor") << QStringList{"monitor", "--output", "x"} << "--output is an option of info";
        QTest::newRow("output that cannot be written")
            << QStringList{"info", "--output", "/nonexistent/r.txt", "--simulate", TestEnv::demoDir()}
            << "cannot write /nonexistent/r.txt";
    }

    void badArguments()
    {
        QFETCH(QStringList, arguments);
        QFETCH(QString, complaint);
        const Run run = korvanectl(arguments);
        QCOMPARE(run.exitCode, 2);
        QVERIFY2(run.err.contains(complaint), qPrintable(run.err));
    }

    // A description that cannot be read is named and fails the run; the other disks are still reported.
    void unreadableFileIsNamedAndOthersStillLoad()
    {
        QTemporaryDir dir;
        const QString broken = dir.filePath(QStringLiteral("truncated.dump"));
        QVERIFY(TestFiles::write(broken, QByteArray("IDFY\0\0\x02\0", 8) + QByteArray(100, 'x')));
        const Run run = korvanectl({"info", "--json", "--simulate", broken, "--simulate",
                                    TestEnv::demoDir() + QStringLiteral("/01-halvard-system.json")});
        QCOMPARE(run.exitCode, 2);
        QVERIFY2(run.err.contains(QStringLiteral("truncated.dump")), qPrintable(run.err));
        QCOMPARE(disksOf(run).size(), 1);
    }

    void demoDisksReport()
    {
        const Run json = korvanectl({"info", "--json", "--simulate", TestEnv::demoDir()});
        QCOMPARE(json.exitCode, 0);
        const QJsonArray disks = disksOf(json);
        QCOMPARE(disks.size(), 5);
        const QJsonArray volumes = disks.at(3).toObject().value(QStringLiteral("volumes")).toArray();
        QCOMPARE(volumes.at(1).toObject().value(QStringLiteral("rootPath")).toString(), QStringLiteral("1:\\"));
        QCOMPARE(disks.at(4).toObject().value(QStringLiteral("smartState")).toInt(), -1);

        // The desktop program's "Save SMART info" report, into a file that is replaced whole.
        QTemporaryDir dir;
        const QString file = dir.filePath(QStringLiteral("SMARTinfo.txt"));
        QVERIFY(TestFiles::write(file, QByteArray(100000, 'x')));
        const Run saved = korvanectl({"info", "--format", "smartinfo",
                                     "--output", file, "--simulate", TestEnv::demoDir()});
        QCOMPARE(saved.exitCode, 0);
        QVERIFY(saved.out.isEmpty());
        const QByteArray bytes = TestFiles::read(file);
        QVERIFY(bytes.startsWith("Device Halvard HX1000-7K2 SMART Info (ID/Value/Raw Value/Worst/Treshold)\r\n"
                                 "1 200 0 200 51\r\n"));
        QVERIFY(bytes.endsWith("Device Corlin CF64 Industrial SMART Info (ID/Value/Raw Value/Worst/Treshold)\r\n"
                               "------------------------\r\n"));

        const Run text = korvanectl({"info", "--simulate", TestEnv::demoDir()});
        QCOMPARE(text.exitCode, 0);
        for (const char *expected : {"Disk Model: ", "User Capacity: ", "Free ", "Threshold", "Temperature"})
            QVERIFY2(text.out.contains(expected), expected);
    }
};

QTEST_GUILESS_MAIN(TestKorvanectl)
#include "tst_korvanectl.moc"
