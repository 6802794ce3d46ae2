#include "stats/GeneratedLog.h"

#include "LogRules.h"
#include "TestEnv.h"

#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QTemporaryDir>
#include <QTest>

namespace {

QList<QStringList> rowsOf(const QJsonArray &array)
{
    QList<QStringList> rows;
    for (const QJsonValue &row : array) {
        QStringList fields;
        for (const QJsonValue &field : row.toArray())
            fields << field.toString();
        rows << fields;
    }
    return rows;
}

QList<QStringList> ofDisk(const QList<QStringList> &rows, int diskField, int serialField, const QString &disk)
{
    QList<QStringList> kept;
    for (const QStringList &row : rows) {
        bool number = false;
        const int index = disk.toInt(&number);
        if (disk.isEmpty() || row.at(serialField) == disk || (number && row.at(diskField).toInt() == index))
            kept << row;
    }
    return kept;
}

} // namespace

class TestHistoryCommand : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase()
    {
        QVERIFY(m_home.isValid());
        m_log = m_home.filePath(QStringLiteral("KV_f.log"));
        QVERIFY(GeneratedLog::write(m_log, {QDate(2026, 3, 1), QDate(2026, 3, 3), 3, 900, 4}));
        // What a long-lived log also holds: a serial with the separator, bytes that are not
        // UTF-8, a DOS line end, a record cut off by a crash.
        QFile file(m_log);
        QVERIFY(file.open(QIODevice::Append));
        file.write("20260302120000]![SMART]![1]![X]![Y]![2]![90]![44~;1\n"
                   "20260302120000]![SMART]![2]![S\xe9\"]![3]![10]![45\r\n"
                   "20260303120000]![SMART]![0]![S0]![2]![9");
    }

    // The rows, in file order, as the reader's rules give them for the period and disk asked.
    void json_data()
    {
        QTest::addColumn<QStringList>("arguments");
        QTest::addColumn<QDate>("from");
        QTest::addColumn<QDate>("to");
        QTest::addColumn<QString>("disk");
        const QDate start(1, 1, 1);
        const QDate end(9999, 12, 31);
        QTest::newRow("whole file") << QStringList{} << start << end << QString();
        QTest::newRow("one day") << QStringList{"--from", "2026-03-02", "--to", "2026-03-02"} << QDate(2026, 3, 2)
                                 << QDate(2026, 3, 2) << QString();
        QTest::newRow("from a day on, one disk by index") << QStringList{"--from", "2026-03-02", "--disk", "1"}
                                                          << QDate(2026, 3, 2) << end << QStringLiteral("1");
        QTest::newRow("up to a day, one disk by serial") << QStringList{"--to", "2026-03-02", "--disk", GeneratedLog::serial(2)}
                                                         << start << QDate(2026, 3, 2) << GeneratedLog::serial(2);
    }
    void json()
    {
        QFETCH(QStringList, arguments);
        QFETCH(QString, disk);
        QFETCH(QDate, from);
        QFETCH(QDate, to);
        const TestEnv::CtlRun run = TestEnv::runKorvanectl(QStringList{"history", "--json", "--home", m_home.path()} + arguments);
        QCOMPARE(run.exitCode, 0);
        QJsonParseError error;
        const QJsonObject result = QJsonDocument::fromJson(run.out.toUtf8(), &error).object();
        QCOMPARE(error.error, QJsonParseError::NoError);
        const LogRules::Rows expected = LogRules::read(m_log, from, to);
        QVERIFY(!expected.events.isEmpty() && !expected.temperatures.isEmpty());
        QCOMPARE(rowsOf(result.value(QLatin1String("events")).toArray()), ofDisk(expected.events, 2, 3, disk));
        QCOMPARE(rowsOf(result.value(QLatin1String("temperatures")).toArray()), ofDisk(expected.temperatures, 1, 3, disk));
    }

    void text()
    {
        const TestEnv::CtlRun run = TestEnv::runKorvanectl({"history", "--home", m_home.path(), "--from", "2026-03-02",
                                                            "--to", "2026-03-02", "--disk", "2"});
        QCOMPARE(run.exitCode, 0);
        const QStringList lines = run.out.split(QLatin1Char('\n'), Qt::SkipEmptyParts);
        QCOMPARE(lines.first(), QStringLiteral("Warning and alarm records:"));
        QVERIFY(lines.contains(QStringLiteral("2026-03-02 12:00:00  disk 2  S\u00e9\"  ALARM  health 10  45 \u00b0C")));
        const qsizetype samples = lines.size() - lines.indexOf(QStringLiteral("Temperature samples:")) - 1;
        QCOMPARE(samples, 96 + 1);
    }

    void refusals_data()
    {
        QTest::addColumn<QStringList>("arguments");
        QTest::addColumn<int>("exitCode");
        QTest::addColumn<QString>("message");
        QTest::newRow("no such day") << QStringList{"--from", "2026-02-30"} << 2 << "--from needs a date as yyyy-MM-dd";
        QTest::newRow("days the wrong way round") << QStringList{"--from", "2026-03-02", "--to", "2026-03-01"} << 2
                                                  << "--from 2026-03-02 is after --to 2026-03-01";
        QTest::newRow("home that is not there") << QStringList{"--home", "/nonexistent/korvane"} << 2 << "is not a folder";
        QTest::newRow("no log in the home") << QStringList{"--home", m_empty.path()} << 1
                                            << "cannot read the event log";
    }
    void refusals()
    {
        QFETCH(QStringList, arguments);
        QFETCH(QString, message);
        const TestEnv::CtlRun run = TestEnv::runKorvanectl(QStringList{"history"} + arguments);
        QTEST(run.exitCode, "exitCode");
        QVERIFY2(run.err.contains(message), qPrintable(run.err));
        QVERIFY(run.out.isEmpty());
    }

private:
    QTemporaryDir m_home;
    QTemporaryDir m_empty;
    QString m_log;
};

QTEST_GUILESS_MAIN(TestHistoryCommand)
#include "tst_historycommand.moc"
