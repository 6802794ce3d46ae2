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
    for (quint32 v : values) {
        SmartAttribute a;
        a.id = quint32(d.attributes.size() + 1);
        a.current = v;
        d.attributes.append(a);
    }
    return d;
}

// The bodies of the lines in \a path, each checked for a stamp no older than \a since.
QStringList bodiesIn(const QString &path, const QDateTime &since = QDateTime::currentDateTime().addDays(-1))
{
    static const QRegularExpression line(QStringLiteral("^(\\d{14})\\]!\\[(.*)$"));
    QFile f(path);
    if (!f.open(QIODevice::ReadOnly))
        return {QStringLiteral("<unreadable>")};
    QStringList bodies;
    for (const QString &text : QString::fromLocal8Bit(f.readAll()).split(QLatin1Char('\n'), Qt::SkipEmptyParts)) {
        const QRegularExpressionMatch m = line.match(text);
        const QDateTime stamp = QDateTime::fromString(m.captured(1), QStringLiteral("yyyyMMddhhmmss"));
        bodies.append(stamp.isValid() && stamp >= since.addSecs(-1) && stamp <= QDateTime::currentDateTime()
                          ? m.captured(2)
                          : QStringLiteral("<bad line> ") + text);
    }
    return bodies;
}

} // namespace

class TestEventLog : public QObject
{
    Q_OBJECT

    QTemporaryDir m_dir;

private slots:
    void bodiesAndLine()
    {
        const EventLogRecord line{QDateTime(QDate(2025, 12, 1), QTime(21, 5, 7)), EventLogRecord::sessionStartedBody()};
        QCOMPARE(line.toLine(), QStringLiteral("20251201210507]![INFO]![Session started\n"));

        DiskRecord d = disk(QStringLiteral("S1234ABCD"), 1, 100, 36, {200, 200, 100, 253});
        d.attributes[2].performance = 1; // written although the evaluation ignores it
        QCOMPARE(EventLogRecord::smartBody(0, d),
                 QStringLiteral("SMART]![0]![S1234ABCD]![1]![100]![36~;200~;200~;100~;253"));
        QCOMPARE(EventLogRecord::smartBody(12, disk(QStringLiteral("Z9"), 3, 4, 0, {})),
                 QStringLiteral("SMART]![12]![Z9]![3]![4]![0"));
        // A serial with placeholder text is written as it stands.
        QCOMPARE(EventLogRecord::smartBody(1, disk(QStringLiteral("%1%2"), 2, 50, -3, {7})),
                 QStringLiteral("SMART]![1]![%1%2]![2]![50]![-3~;7"));
    }

    void writeAppendsLinesInTheLocalEncoding()
    {
        const QString path = m_dir.filePath(QStringLiteral("KV_f.log"));
        {
            QFile f(path);
            QVERIFY(f.open(QIODevice::WriteOnly));
            f.write("20000101000000]![earlier session\n");
        }
        const QDateTime start = QDateTime::currentDateTime();
        QVERIFY(EventLogWriter(path).writeLog(EventLogRecord::sessionStartedBody()));
        EventLogWriter second(path); // a new writer appends, it does not truncate
        const QString body = QStringLiteral("SMART]![0]![Prüf-ÄÖ]![1]![100]![40");
        QVERIFY(second.writeLog(body));

        QFile f(path);
        QVERIFY(f.open(QIODevice::ReadOnly));
        const QByteArray bytes = f.readAll();
        QVERIFY(bytes.startsWith("20000101000000]![earlier session\n"));
        QVERIFY(bytes.endsWith(body.toLocal8Bit() + '\n'));
        QVERIFY(!bytes.contains('\r'));
#ifdef Q_OS_UNIX
        QVERIFY(bytes.contains("Pr\xC3\xBC" "f-\xC3\x84\xC3\x96")); // Unix locales are taken as UTF-8
#endif
        QCOMPARE(bodiesIn(path, start).mid(1), (QStringList{EventLogRecord::sessionStartedBody(), body}));
    }

    void unwritablePathLosesTheLineQuietly()
    {
        EventLogWriter inMissingDir(m_dir.filePath(QStringLiteral("no/such/dir/KV_f.log")));
        QVERIFY(!inMissingDir.writeLog(EventLogRecord::sessionStartedBody()));
        QVERIFY(!QFile::exists(inMissingDir.path()));
        QVERIFY(!EventLogWriter(m_dir.path()).writeLog(EventLogRecord::sessionStartedBody()));
        QVERIFY(!EventLogWriter().writeLog(EventLogRecord::sessionStartedBody()));
        // The evaluation's records go nowhere, and nothing else breaks.
        QCOMPARE(inMissingDir.compareValues({disk(QStringLiteral("A"), 1, 100, 30, {100})}), QStringList{"1=100,"});
    }

    // Every monitored disk is written on every poll under its list position; changes are per disk.
    void compareValues()
    {
        const QString path = m_dir.filePath(QStringLiteral("smart.log"));
        EventLogWriter writer(path);
        QList<DiskRecord> disks{disk(QStringLiteral("A"), 1, 100, 36, {100, 200}),
                                disk(QStringLiteral("B"), 2, 50, 45, {90}), disk(QStringLiteral("C"), 0, 0, 0, {})};
        disks[1].monitored = false;
        disks[2].smartState = 0;

        QCOMPARE(writer.compareValues(disks), (QStringList{"1=100,2=200,", "1=90,", ""}));
        QCOMPARE(writer.compareValues(disks), (QStringList{"", "", ""}));
        disks[0].attributes[1].current = 199;
        disks[0].temperature = 37;
        QCOMPARE(writer.compareValues(disks), (QStringList{"2=199,", "", ""}));
        const QString a = QStringLiteral("SMART]![0]![A]![1]![100]![36~;100~;200");
        const QString c = QStringLiteral("SMART]![2]![C]![0]![0]![0");
        const QString later = QStringLiteral("SMART]![0]![A]![1]![100]![37~;100~;199");
        QCOMPARE(bodiesIn(path), (QStringList{a, c, a, c, later, c}));

        // Another disk list, or another attribute table, starts that comparison over.
        disks.append(disk(QStringLiteral("D"), 1, 100, 36, {100}));
        QCOMPARE(writer.compareValues(disks), (QStringList{"1=100,2=199,", "1=90,", "", "1=100,"}));
        disks[3].attributes.append(disks[3].attributes[0]);
        disks[3].attributes[1].id = 5;
        QCOMPARE(writer.compareValues(disks), (QStringList{"", "", "", "1=100,5=100,"}));
    }
};

QTEST_GUILESS_MAIN(TestEventLog)
#include "tst_eventlog.moc"
