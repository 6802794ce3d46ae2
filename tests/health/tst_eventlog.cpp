#include "device/DiskRecord.h"
#include "health/EventLogRecord.h"
#include "health/EventLogWriter.h"

#include "TestFiles.h"

#include <QDir>
#include <QFile>
#include <QRegularExpression>
#include <QTemporaryDir>
#include <QTest>

#include <fcntl.h>
#include <future>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

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

// Calls writeLog on another thread; a writer stuck in open() on a FIFO is freed by opening the
// FIFO's other end, so the test fails instead of hanging.
bool writeLogWithin(EventLogWriter &writer, const QString &body, bool *returned)
{
    auto done = std::async(std::launch::async, [&] { return writer.writeLog(body); });
    *returned = done.wait_for(std::chrono::seconds(5)) == std::future_status::ready;
    if (!*returned) {
        const int fd = ::open(QFile::encodeName(writer.path()).constData(), O_RDONLY | O_NONBLOCK);
        done.wait();
        ::close(fd);
    }
    return done.get();
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
        // A serial cannot break the line and forge a record of its own.
        QCOMPARE(EventLogRecord::smartBody(2, disk(QStringLiteral("A\n20991231235959]![X\r"), 1, 90, 30, {})),
                 QStringLiteral("SMART]![2]![A 20991231235959]![X ]![1]![90]![30"));
    }

    void writeAppendsLinesInTheLocalEncoding()
    {
        const QString path = m_dir.filePath(QStringLiteral("KV_f.log"));
        QVERIFY(TestFiles::write(path, "20000101000000]![earlier session\n"));
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

    // Places the log cannot go: the writer refuses them without opening anything, says why
    // naming the file, and creates nothing.
    void unusablePlaces_data()
    {
        QTest::addColumn<QString>("place");
        QTest::addColumn<QString>("reason");
        QTest::newRow("missing folder") << "no/such/dir/KV_f.log" << "the folder";
        QTest::newRow("folder") << "." << "a directory, not a regular file";
        QTest::newRow("FIFO") << "fifo" << "a FIFO (named pipe), not a regular file";
        QTest::newRow("link to a device") << "null" << "a character device, not a regular file";
        QTest::newRow("link to nothing") << "dangling" << "a symbolic link to";
        QTest::newRow("no path") << "" << "No event log file is set";
    }
    void unusablePlaces()
    {
        QFETCH(QString, place);
        QFETCH(QString, reason);
        QTemporaryDir dir;
        const QString path = place.isEmpty() ? QString() : dir.filePath(place);
        QCOMPARE(::mkfifo(QFile::encodeName(dir.filePath(QStringLiteral("fifo"))).constData(), 0600), 0);
        QVERIFY(QFile::link(QStringLiteral("/dev/null"), dir.filePath(QStringLiteral("null"))));
        QVERIFY(QFile::link(dir.filePath(QStringLiteral("gone/KV_f.log")), dir.filePath(QStringLiteral("dangling"))));
        QVERIFY(QDir(dir.path()).mkdir(QStringLiteral("gone")));
        const QStringList before = QDir(dir.path()).entryList(QDir::AllEntries | QDir::System, QDir::Name);

        EventLogWriter writer(path);
        bool returned = false;
        QVERIFY(!writeLogWithin(writer, EventLogRecord::sessionStartedBody(), &returned));
        QVERIFY2(returned, "writeLog blocked");
        QVERIFY2(writer.lastError().contains(reason), qPrintable(writer.lastError()));
        QVERIFY2(writer.lastError().contains(QDir::toNativeSeparators(path)), qPrintable(writer.lastError()));
        QCOMPARE(QDir(dir.path()).entryList(QDir::AllEntries | QDir::System, QDir::Name), before);
        QVERIFY(QDir(dir.filePath(QStringLiteral("gone"))).isEmpty());
        // The evaluation's records go nowhere, and nothing else breaks.
        QCOMPARE(writer.compareValues({disk(QStringLiteral("A"), 1, 100, 30, {100})}), QStringList{"1=100,"});
        QVERIFY(writer.lastError().contains(reason));
    }

    // Over the file size limit a write stops short (the process must not be killed for it); the
    // record after it starts on a line of its own, and a success clears the error.
    void fileSizeLimitCutsOneRecord()
    {
        const QString path = m_dir.filePath(QStringLiteral("limited.log"));
        const QString body = EventLogRecord::sessionStartedBody();
        EventLogWriter writer(path);
        QVERIFY(writer.writeLog(body));
        struct rlimit saved {};
        QCOMPARE(::getrlimit(RLIMIT_FSIZE, &saved), 0);
        struct rlimit tight = saved;
        tight.rlim_cur = rlim_t(QFileInfo(path).size() + 10);
        QCOMPARE(::setrlimit(RLIMIT_FSIZE, &tight), 0);
        const bool written = writer.writeLog(body);
        const bool again = writer.writeLog(body);
        QCOMPARE(::setrlimit(RLIMIT_FSIZE, &saved), 0);

        QVERIFY(!written && !again);
        QVERIFY2(writer.lastError().contains(QStringLiteral("file size limit")), qPrintable(writer.lastError()));
        QVERIFY(writer.lastError().contains(QDir::toNativeSeparators(path)));
        QVERIFY(writer.writeLog(body));
        QVERIFY(writer.lastError().isEmpty());
        // The second record was cut after ten bytes, inside its stamp; the third starts a line of its own.
        QString text = QString::fromLocal8Bit(TestFiles::read(path));
        text.replace(QRegularExpression(QStringLiteral("^\\d{14}\\]"), QRegularExpression::MultilineOption), "S]");
        text.replace(QRegularExpression(QStringLiteral("^\\d{10}$"), QRegularExpression::MultilineOption), "cut");
        const QString record = QStringLiteral("S]![") + body + QLatin1Char('\n');
        QCOMPARE(text, record + QStringLiteral("cut\n") + record);
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
        QVERIFY(writer.lastError().isEmpty());
    }
};

QTEST_GUILESS_MAIN(TestEventLog)
#include "tst_eventlog.moc"
