#include "device/DiskRecord.h"
#include "health/EventLogRecord.h"
#include "health/EventLogWriter.h"

#include <QFile>
#include <QRegularExpression>
#include <QTemporaryDir>
#include <QTest>

namespace {

DiskRecord disk(const QString &serial, int level, int health, int celsius, const QList<quint32> &values)
{
    DiskRecord d;
    d.serial = serial;
    d.smartState = 1;
    d.healthState = level;
    d.healthValue = health;
    d.temperature = celsius;
    quint32 id = 1;
    for (quint32 v : values) {
        SmartAttribute a;
        a.id = id++;
        a.current = v;
        a.threshold = 10;
        d.attributes.append(a);
    }
    return d;
}

QByteArray readAll(const QString &path)
{
    QFile f(path);
    return f.open(QIODevice::ReadOnly) ? f.readAll() : QByteArray();
}

// Stamp, separator, body, a bare line feed.
const QRegularExpression kLine(QStringLiteral("^(\\d{8})(\\d{6})\\]!\\[(.*)$"));

} // namespace

class TestEventLog : public QObject
{
    Q_OBJECT

private:
    QTemporaryDir m_dir;

    QString freshPath(const QString &name)
    {
        const QString path = m_dir.filePath(name);
        QFile::remove(path);
        return path;
    }

private slots:
    void recordLine()
    {
        const EventLogRecord morning{QDateTime(QDate(2026, 3, 14), QTime(9, 30, 15)), EventLogRecord::sessionStartedBody()};
        QCOMPARE(morning.toLine(), QStringLiteral("20260314093015]![INFO]![Session started\n"));
        const EventLogRecord evening{QDateTime(QDate(2025, 12, 1), QTime(21, 5, 7)), EventLogRecord::sessionFinishedBody()};
        QCOMPARE(evening.toLine(), QStringLiteral("20251201210507]![INFO]![Session finished\n"));
    }

    void smartBody()
    {
        DiskRecord d = disk(QStringLiteral("S1234ABCD"), 1, 100, 36, {200, 200, 100, 253});
        d.attributes[2].performance = 1; // written although the evaluation ignores it
        QCOMPARE(EventLogRecord::smartBody(0, d), QStringLiteral("SMART]![0]![S1234ABCD]![1]![100]![36~;200~;200~;100~;253"));

        const DiskRecord bare = disk(QStringLiteral("Z9"), 3, 4, 0, {});
        QCOMPARE(EventLogRecord::smartBody(12, bare), QStringLiteral("SMART]![12]![Z9]![3]![4]![0"));

        // A serial with placeholder text is written as it stands.
        const DiskRecord odd = disk(QStringLiteral("%1%2"), 2, 50, -3, {7});
        QCOMPARE(EventLogRecord::smartBody(1, odd), QStringLiteral("SMART]![1]![%1%2]![2]![50]![-3~;7"));
    }

    void writeAppendsStampedLines()
    {
        const QString path = freshPath(QStringLiteral("KV_f.log"));
        {
            QFile f(path);
            QVERIFY(f.open(QIODevice::WriteOnly));
            f.write("earlier session\n");
        }
        const QDateTime before = QDateTime::currentDateTime().addSecs(-1);
        QVERIFY(EventLogWriter(path).writeLog(EventLogRecord::sessionStartedBody()));
        EventLogWriter second(path); // a new writer appends, it does not truncate
        QVERIFY(second.writeLog(QStringLiteral("SMART]![0]![X]![1]![100]![40")));
        QVERIFY(second.writeLog(EventLogRecord::sessionFinishedBody()));
        const QDateTime after = QDateTime::currentDateTime().addSecs(1);

        const QByteArray bytes = readAll(path);
        QVERIFY(!bytes.contains('\r'));
        QVERIFY(bytes.endsWith('\n'));
        const QStringList lines = QString::fromUtf8(bytes).split(QLatin1Char('\n'));
        QCOMPARE(lines.size(), 5);
        QCOMPARE(lines[0], QStringLiteral("earlier session"));
        const QStringList bodies{QStringLiteral("INFO]![Session started"), QStringLiteral("SMART]![0]![X]![1]![100]![40"),
                                 QStringLiteral("INFO]![Session finished")};
        for (int i = 0; i < 3; ++i) {
            const QRegularExpressionMatch m = kLine.match(lines[i + 1]);
            QVERIFY2(m.hasMatch(), qPrintable(lines[i + 1]));
            QCOMPARE(m.captured(3), bodies[i]);
            const QDateTime stamp(QDate::fromString(m.captured(1), QStringLiteral("yyyyMMdd")),
                                  QTime::fromString(m.captured(2), QStringLiteral("hhmmss")));
            QVERIFY(stamp.isValid());
            QVERIFY(stamp >= before.addMSecs(-before.time().msec()) && stamp <= after);
        }
        QVERIFY(lines[4].isEmpty());
    }

    void nonAsciiIsWrittenInTheLocalEncoding()
    {
        const QString path = freshPath(QStringLiteral("local.log"));
        const QString body = QStringLiteral("SMART]![0]![Prüf-ÄÖ]![1]![100]![40");
        QVERIFY(EventLogWriter(path).writeLog(body));
        const QByteArray bytes = readAll(path);
        QVERIFY(bytes.endsWith(body.toLocal8Bit() + '\n'));
#ifdef Q_OS_UNIX
        // Unix locales are taken as UTF-8.
        QVERIFY(bytes.contains("Pr\xC3\xBC" "f-\xC3\x84\xC3\x96"));
#endif
    }

    void unwritablePathLosesTheLineQuietly()
    {
        EventLogWriter inMissingDir(m_dir.filePath(QStringLiteral("no/such/dir/KV_f.log")));
        QVERIFY(!inMissingDir.writeLog(EventLogRecord::sessionStartedBody()));
        QVERIFY(!QFile::exists(inMissingDir.path()));

        EventLogWriter onDirectory(m_dir.path());
        QVERIFY(!onDirectory.writeLog(EventLogRecord::sessionStartedBody()));
        QVERIFY(!EventLogWriter().writeLog(EventLogRecord::sessionStartedBody()));

        // The evaluation's records go nowhere, and nothing else breaks.
        const QStringList changes = inMissingDir.compareValues({disk(QStringLiteral("A"), 1, 100, 30, {100})});
        QCOMPARE(changes, QStringList{QStringLiteral("1=100,")});
    }

    void compareValuesWritesEveryMonitoredDisk()
    {
        const QString path = freshPath(QStringLiteral("smart.log"));
        EventLogWriter writer(path);
        DiskRecord idle = disk(QStringLiteral("B"), 2, 50, 45, {90});
        idle.monitored = false;
        DiskRecord noSmart = disk(QStringLiteral("C"), 0, 0, 0, {});
        noSmart.smartState = 0;
        QList<DiskRecord> disks{disk(QStringLiteral("A"), 1, 100, 36, {100, 200}), idle, noSmart};

        QCOMPARE(writer.compareValues(disks),
                 (QStringList{QStringLiteral("1=100,2=200,"), QStringLiteral("1=90,"), QString()}));
        // Unchanged values are still written in full on the next poll.
        QCOMPARE(writer.compareValues(disks), (QStringList{QString(), QString(), QString()}));
        disks[0].attributes[1].current = 199;
        disks[0].temperature = 37;
        QCOMPARE(writer.compareValues(disks), (QStringList{QStringLiteral("2=199,"), QString(), QString()}));

        QStringList bodies;
        for (const QString &line : QString::fromUtf8(readAll(path)).split(QLatin1Char('\n'), Qt::SkipEmptyParts))
            bodies.append(kLine.match(line).captured(3));
        QCOMPARE(bodies, (QStringList{
                             QStringLiteral("SMART]![0]![A]![1]![100]![36~;100~;200"),
                             QStringLiteral("SMART]![2]![C]![0]![0]![0"),
                             QStringLiteral("SMART]![0]![A]![1]![100]![36~;100~;200"),
                             QStringLiteral("SMART]![2]![C]![0]![0]![0"),
                             QStringLiteral("SMART]![0]![A]![1]![100]![37~;100~;199"),
                             QStringLiteral("SMART]![2]![C]![0]![0]![0"),
                         }));
    }

    void compareValuesStartsOverWhenTheDisksChange()
    {
        EventLogWriter writer; // no file: only the snapshots are of interest here
        QList<DiskRecord> disks{disk(QStringLiteral("A"), 1, 100, 36, {100})};
        writer.compareValues(disks);
        disks.append(disk(QStringLiteral("B"), 1, 100, 36, {100}));
        QCOMPARE(writer.compareValues(disks), (QStringList{QStringLiteral("1=100,"), QStringLiteral("1=100,")}));
        disks[1].attributes.append(disks[1].attributes[0]);
        disks[1].attributes[1].id = 5;
        QCOMPARE(writer.compareValues(disks), (QStringList{QString(), QStringLiteral("1=100,5=100,")}));
    }
};

QTEST_GUILESS_MAIN(TestEventLog)
#include "tst_eventlog.moc"
