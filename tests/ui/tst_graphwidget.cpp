#include "ui/graph_widget.h"

#include "KorvaneImages.h"
#include "TestFiles.h"
#include "stats/GeneratedLog.h"
#include "stats/LogHistory.h"
#include "stats/LogScanner.h"
#include "stats/TemperatureGraphLayout.h"

#include <QApplication>
#include <QDateTime>
#include <QPainter>
#include <QTemporaryDir>
#include <QTest>

#include <atomic>

namespace {

// Draws every sample, one by one in file order, as the graph's rule has it: the picture the
// fast widget must reproduce pixel for pixel.
class EverySampleGraph : public graph_widget
{
protected:
    void drawPoints(QPainter &painter) override
    {
        const qint64 start = QDateTime(fromDay(), QTime(0, 0)).toSecsSinceEpoch();
        const qint64 end = QDateTime(toDay(), QTime(23, 59, 59)).toSecsSinceEpoch();
        const double xscale = (width() - 50) / double(end - start);
        const double ystep = (height() - 70) / 10.0;
        for (const LogHistory::SampleChunk &chunk : history()->sampleChunks()) {
            for (const TemperatureSample &sample : chunk.samples) {
                if (diskFilter() > -1 && sample.disk != diskFilter())
                    continue;
                const QDateTime when = QDateTime::fromString(QStringLiteral("%1").arg(sample.stamp, 14, 10, QLatin1Char('0')),
                                                             QStringLiteral("yyyyMMddhhmmss"));
                QPen pen{QColor(TemperatureGraphLayout::diskColour(sample.disk))};
                pen.setWidth(2);
                painter.setPen(pen);
                painter.drawPoint(int(30 + xscale * double(when.toSecsSinceEpoch() - start)),
                                  int((height() - 20) - sample.temperature * ystep / 10.0));
            }
        }
    }
};

QImage picture(graph_widget &graph, QSize size, QDate from, QDate to, int disk, const LogHistory *history)
{
    graph.resize(size);
    graph.setDays(from, to);
    graph.setDiskFilter(disk);
    graph.setLines(50, 65);
    graph.setHistory(history);
    return graph.grab().toImage();
}

} // namespace

class TestGraphWidget : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase() { initKorvaneImages(); }

    void samePixelsAsEverySample_data()
    {
        QTest::addColumn<QSize>("size");
        QTest::addColumn<QDate>("from");
        QTest::addColumn<QDate>("to");
        QTest::addColumn<int>("disk");
        QTest::addColumn<bool>("backInTime"); // a second history, earlier and overlapping, after the first

        // Nine disks (white twice, every colour), overlapping where the scale is narrow.
        QTest::newRow("the whole history, narrow") << QSize(300, 200) << QDate(2026, 1, 1) << QDate(2026, 2, 28) << -1 << false;
        QTest::newRow("one day, wide") << QSize(900, 600) << QDate(2026, 2, 14) << QDate(2026, 2, 14) << -1 << false;
        QTest::newRow("samples on both sides of the days")
            << QSize(600, 400) << QDate(2026, 1, 20) << QDate(2026, 2, 3) << -1 << false;
        QTest::newRow("one disk") << QSize(400, 300) << QDate(2026, 1, 1) << QDate(2026, 2, 28) << 5 << false;
        QTest::newRow("too small for a scale") << QSize(200, 60) << QDate(2026, 1, 1) << QDate(2026, 2, 28) << -1 << false;
        QTest::newRow("samples going back in time") << QSize(300, 200) << QDate(2026, 1, 1) << QDate(2026, 2, 28) << -1 << true;
    }
    void samePixelsAsEverySample()
    {
        QFETCH(QSize, size);
        QFETCH(QDate, from);
        QFETCH(QDate, to);
        QFETCH(int, disk);
        QFETCH(bool, backInTime);
        QTemporaryDir dir;
        const QString path = dir.filePath(QStringLiteral("KV_f.log"));
        QVERIFY(GeneratedLog::write(path, {backInTime ? QDate(2026, 1, 20) : QDate(2026, 1, 1), QDate(2026, 2, 28), 9, 1800, 2}));
        if (backInTime) {
            const QString earlier = dir.filePath(QStringLiteral("earlier.log"));
            QVERIFY(GeneratedLog::write(earlier, {QDate(2026, 1, 1), QDate(2026, 2, 5), 5, 1200, 2}));
            QVERIFY(TestFiles::write(path, TestFiles::read(path) + TestFiles::read(earlier)));
        }
        LogHistory history;
        LogScanner scanner(path, QDate(2026, 1, 1), QDate(2026, 2, 28));
        const std::atomic<bool> stop{false};
        QVERIFY(scanner.run(stop, [&](LogBatch &&batch) { history.append(batch); }));

        graph_widget fast;
        EverySampleGraph slow;
        const QImage expected = picture(slow, size, from, to, disk, &history);
        QCOMPARE(picture(fast, size, from, to, disk, &history), expected);
        graph_widget empty;
        QVERIFY(picture(empty, size, from, to, disk, nullptr) != expected);
    }
};

QTEST_MAIN(TestGraphWidget)
#include "tst_graphwidget.moc"
