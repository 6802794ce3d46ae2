#include "stats/GeneratedLog.h"
#include "stats/LogHistory.h"
#include "stats/LogScanner.h"
#include "stats/load_log.h"

#include "LogRules.h"
#include "TestFiles.h"

#include <QFile>
#include <QRandomGenerator>
#include <QTemporaryDir>
#include <QTest>

#include <atomic>
#include <thread>

namespace {

using LogRules::Rows;

Rows scan(const QString &path, QDate from, QDate to, int batchRows = 65536, LogHistory *kept = nullptr)
{
    LogScanner scanner(path, from, to);
    scanner.setBatchRows(batchRows);
    LogHistory history;
    const std::atomic<bool> stop{false};
    scanner.run(stop, [&](LogBatch &&batch) { history.append(batch); });
    Rows rows;
    for (qsizetype i = 0; i < history.eventCount(); ++i)
        rows.events << history.eventFields(i);
    for (qsizetype i = 0; i < history.temperatureCount(); ++i)
        rows.temperatures << history.temperatureRow(i);
    if (kept)
        *kept = history;
    return rows;
}

QByteArray smart(const char *stamp, const char *disk, const char *serial, const char *level, const char *values)
{
    return QByteArray(stamp) + "]![SMART]![" + disk + "]![" + serial + "]![" + level + "]![90]![" + values + "\n";
}

} // namespace

class TestLoadLog : public QObject
{
    Q_OBJECT

private slots:
    void rules_data()
    {
        QTest::addColumn<QByteArray>("log");
        QTest::addColumn<int>("events");
        QTest::addColumn<QStringList>("temperatures"); // "stamp disk temperature serial", one a row

        const QByteArray ok = smart("20260314093015", "0", "S1", "1", "36~;200~;100");
        QTest::newRow("level 1: a sample only") << ok << 0 << QStringList{"20260314093015 0 36 S1"};
        QTest::newRow("levels 2 and 3: both rows")
            << smart("20260314093015", "1", "S2", "2", "41~;200") + smart("20260314093115", "1", "S2", "3", "42")
            << 2 << QStringList{"20260314093015 1 41 S2", "20260314093115 1 42\n S2"};
        QTest::newRow("temperature 0 or text: no sample")
            << smart("20260314093015", "0", "S1", "3", "0~;200") + smart("20260314093015", "0", "S1", "1", "x~;200")
            << 1 << QStringList{};
        QTest::newRow("info, short and foreign lines skipped")
            << QByteArray("20260314093015]![INFO]![Session started\n20260314]![SMART]![0]![S1]![3]![90\n"
                          "20260314093015]![smart]![0]![S1]![3]![90]![36\n\n")
            << 0 << QStringList{};
        QTest::newRow("days outside the range, damaged date")
            << smart("20260313235959", "0", "S1", "3", "36") + smart("20260316000000", "0", "S1", "3", "36")
                   + smart("2026X314093015", "0", "S1", "3", "36") + smart("20260231093015", "0", "S1", "3", "36")
            << 0 << QStringList{};
        QTest::newRow("serial holding the separator shifts the fields")
            << smart("20260315120000", "0", "AB]![CD", "1", "36") << 0 << QStringList{"20260315120000 0 90 AB"};
        QTest::newRow("CR LF, a cut last line, bytes that are not UTF-8")
            << QByteArray("20260315120000]![SMART]![0]![S\xe9]![2]![80]![37~;1\r\n"
                          "20260315120100]![SMART]![0]![S\xe9]![2]![80]![38")
            << 2 << QStringList{"20260315120000 0 37 S\u00e9", "20260315120100 0 38 S\u00e9"};
        QTest::newRow("numbers as the toolkit reads them")
            << smart("20260315120000", " 03", "S1", "+2", "+36") << 1 << QStringList{"20260315120000  03 +36\n S1"};
    }
    void rules()
    {
        QFETCH(QByteArray, log);
        QFETCH(int, events);
        QFETCH(QStringList, temperatures);
        QTemporaryDir dir;
        const QString path = dir.filePath(QStringLiteral("KV_f.log"));
        QVERIFY(TestFiles::write(path, log));
        const Rows rows = scan(path, QDate(2026, 3, 14), QDate(2026, 3, 15));
        QCOMPARE(rows.events.size(), events);
        QStringList got;
        for (const QStringList &row : rows.temperatures)
            got << row.join(QLatin1Char(' '));
        QCOMPARE(got, temperatures);
        const Rows reference = LogRules::read(path, QDate(2026, 3, 14), QDate(2026, 3, 15));
        QCOMPARE(rows.events, reference.events);
    }

    void oneDayAndLegend()
    {
        QTemporaryDir dir;
        const QString path = dir.filePath(QStringLiteral("KV_f.log"));
        QVERIFY(GeneratedLog::write(path, {QDate(2026, 3, 1), QDate(2026, 3, 3), 3, 600, 5}));
        LogHistory history;
        const Rows rows = scan(path, QDate(2026, 3, 2), QDate(2026, 3, 2), 50, &history);
        QCOMPARE(rows.temperatures.size(), 3 * 144);
        for (const QStringList &row : rows.temperatures)
            QVERIFY2(row.at(0).startsWith(QLatin1String("20260302")), qPrintable(row.at(0)));
        QCOMPARE(history.legend().size(), 3);
        QCOMPARE(history.legend().at(2).disk, 2);
        QCOMPARE(history.legend().at(2).serial, GeneratedLog::serial(2));
    }

    // The tick counts SMART records only, one step for nine of them, and wraps after 100.
    void progressTickWraps()
    {
        QTemporaryDir dir;
        const QString path = dir.filePath(QStringLiteral("KV_f.log"));
        QByteArray log;
        for (int line = 0; line < 909; ++line)
            log += "20260314093015]![INFO]![Session started\n" + smart("20260314093015", "0", "S1", "1", "36");
        QVERIFY(TestFiles::write(path, log));
        LogScanner scanner(path, QDate(2026, 3, 14), QDate(2026, 3, 14));
        scanner.setBatchRows(1);
        QList<int> reported;
        const std::atomic<bool> stop{false};
        scanner.run(stop, [&](LogBatch &&batch) {
            if (batch.progress >= 0)
                reported << batch.progress;
        });
        QCOMPARE(reported.size(), 101);
        QCOMPARE(reported.at(0), 1);
        QCOMPARE(reported.at(99), 100);
        QCOMPARE(reported.at(100), 1);
    }

    // Random logs built from good records, damaged copies of them and plain noise.
    void fuzzAgainstTheRules()
    {
        QTemporaryDir dir;
        const QString path = dir.filePath(QStringLiteral("KV_f.log"));
        QRandomGenerator random(20261125);
        const QList<QByteArray> pieces = {"]![", "~;", "SMART", "INFO", "\n", "\r", "0", "1", "2", "3", "-",
                                          "+", " ", "\xff", "\x00", "2026", "0314", "36"};
        for (int round = 0; round < 300; ++round) {
            QByteArray log;
            const int lines = int(random.bounded(1, 60));
            for (int l = 0; l < lines; ++l) {
                QByteArray line = smart("20260314093015", "0", "S1", "2", "36~;100");
                const int damage = int(random.bounded(4));
                for (int d = 0; d < damage * 3; ++d) {
                    const qsizetype at = random.bounded(line.size() + 1);
                    if (random.bounded(2))
                        line.insert(at, pieces.at(random.bounded(pieces.size())));
                    else
                        line.remove(at, random.bounded(1, 4));
                }
                log += line;
            }
            QVERIFY(TestFiles::write(path, log));
            const QDate from(2026, 3, 14);
            const Rows rows = scan(path, from, from, int(random.bounded(1, 8)));
            const Rows reference = LogRules::read(path, from, from);
            QCOMPARE(rows.events, reference.events);
            QCOMPARE(rows.temperatures, reference.temperatures);
        }
    }

    void lineLongerThanTheBuffer()
    {
        QTemporaryDir dir;
        const QString path = dir.filePath(QStringLiteral("KV_f.log"));
        const QByteArray serial(3 << 20, 'S');
        QVERIFY(TestFiles::write(path, smart("20260314093015", "0", serial.constData(), "2", "36")
                                           + smart("20260314093016", "0", "S2", "1", "37")));
        const Rows rows = scan(path, QDate(2026, 3, 14), QDate(2026, 3, 14));
        QCOMPARE(rows.events.size(), 1);
        QCOMPARE(rows.temperatures.size(), 2);
        QCOMPARE(rows.temperatures.at(0).at(3).size(), serial.size());
    }

    // The writer appends while the reader reads: what is read is a beginning of the file.
    void appendedWhileRead()
    {
        QTemporaryDir dir;
        const QString path = dir.filePath(QStringLiteral("KV_f.log"));
        QVERIFY(TestFiles::write(path, QByteArray()));
        std::atomic<bool> done{false};
        std::thread writer([&] {
            QFile file(path);
            for (int i = 0; i < 4000; ++i) {
                file.open(QIODevice::Append);
                file.write(smart("20260314093015", QByteArray::number(i % 4).constData(), "S1", "2", "36"));
                file.close();
            }
            done = true;
        });
        int reads = 0;
        while (!done || reads == 0) {
            const Rows rows = scan(path, QDate(2026, 3, 14), QDate(2026, 3, 14), 100);
            for (qsizetype i = 0; i < rows.events.size(); ++i)
                QCOMPARE(rows.events.at(i).at(2), QString::number(i % 4));
            ++reads;
        }
        writer.join();
        QCOMPARE(scan(path, QDate(2026, 3, 14), QDate(2026, 3, 14)).temperatures.size(), 4000);
    }

    // A reading restarted before the first has ended: only the second one's rows count, and a
    // file that is not there ends the reading with the reason.
    void threadRestartsAndReportsFailure()
    {
        QTemporaryDir dir;
        const QString path = dir.filePath(QStringLiteral("KV_f.log"));
        QVERIFY(GeneratedLog::write(path, {QDate(2026, 3, 1), QDate(2026, 3, 20), 4, 60, 10}));
        load_log reader;
        // Received on this thread: a spy would record on the reader's.
        QList<quint64> finished;
        connect(&reader, &load_log::readingFinished, this, [&](quint64 runId) { finished << runId; });
        qsizetype samples = 0;
        QList<quint64> runs;
        const auto take = [&] {
            for (const LogBatch &batch : reader.takeRows()) {
                runs << batch.runId;
                samples += batch.temperatures.size();
            }
        };
        connect(&reader, &load_log::lineToAdd, this, take);
        reader.startReading(path, QDate(2026, 3, 1), QDate(2026, 3, 20));
        const quint64 second = reader.startReading(path, QDate(2026, 3, 5), QDate(2026, 3, 5));
        QTRY_COMPARE(finished.size(), 2);
        take();
        QCOMPARE(samples, 4 * 1440);
        QCOMPARE(runs, QList<quint64>(runs.size(), second));
        QCOMPARE(finished.at(1), second);
        QVERIFY(reader.error().isEmpty());

        reader.startReading(dir.filePath(QStringLiteral("missing.log")), QDate(2026, 3, 5), QDate(2026, 3, 5));
        QTRY_COMPARE(finished.size(), 3);
        QVERIFY(reader.error().contains(QLatin1String("missing.log")));
    }
};

QTEST_GUILESS_MAIN(TestLoadLog)
#include "tst_loadlog.moc"
