#include "stats/TemperatureGraphLayout.h"

#include <QTest>

namespace {

struct Counts
{
    int lines = 0;
    int dashed = 0;
    QStringList texts;
};

Counts count(const QList<GraphItem> &items)
{
    Counts c;
    for (const GraphItem &item : items) {
        if (item.kind == GraphItem::Line) {
            ++c.lines;
            c.dashed += item.dashed ? 1 : 0;
        } else {
            c.texts << item.text;
        }
    }
    return c;
}

} // namespace

class TestTemperatureGraph : public QObject
{
    Q_OBJECT

private slots:
    void frame_data()
    {
        QTest::addColumn<QSize>("size");
        QTest::addColumn<int>("days"); // to - from
        QTest::addColumn<int>("lines");
        QTest::addColumn<int>("dashed");
        QTest::addColumn<QStringList>("dayTexts"); // texts after the °C caption and the ten labels

        // Axes 2, grid ticks 10, grid lines 10 (dashed); per day 24 hour ticks and a day line.
        QTest::newRow("last day before the first: axes and grid only") << QSize(900, 600) << -1 << 22 << 10 << QStringList{};
        QTest::newRow("one wide day: its date and noon")
            << QSize(900, 600) << 0 << 22 + 25 << 11 << QStringList{"03/14/2026", "12:00"};
        QTest::newRow("narrow scale: first and last date only, no noon")
            << QSize(300, 200) << 3 << 22 + 4 * 25 << 14 << QStringList{"03/14/2026", "03/17/2026"};
    }
    void frame()
    {
        QFETCH(QSize, size);
        QFETCH(int, days);
        const QDate from(2026, 3, 14);
        const Counts c = count(TemperatureGraphLayout::frame(size, from, from.addDays(days)));
        QTEST(c.lines, "lines");
        QTEST(c.dashed, "dashed");
        QCOMPARE(c.texts.mid(0, 11),
                 (QStringList{"\u00b0C", "10", "20", "30", "40", "50", "60", "70", "80", "90", "100"}));
        QTEST(c.texts.mid(11), "dayTexts");
    }

    // 0 °C sits 20 pixels above the bottom, 100 °C 50 pixels below the top; the hour ticks
    // and the day lines share the points' scale and are cut toward zero.
    void geometry()
    {
        const QSize size(900, 600);
        const QDate day(2026, 3, 14);
        const QList<GraphItem> items = TemperatureGraphLayout::frame(size, day, day.addDays(1));
        QCOMPARE(items.at(0).line, QLine(30, 10, 30, 580));
        QCOMPARE(items.at(1).line, QLine(30, 580, 890, 580));
        QCOMPARE(items.at(3 + 9 * 3 + 1).line, QLine(31, 50, 890, 50)); // the 100 °C grid line
        QCOMPARE(items.at(3 + 9 * 3 + 2).box, QRect(10, 45, 15, 10));
        // Second day's line: x = 30 + 850 / 48 * 24 = 455.
        const auto secondDay = std::find_if(items.cbegin() + 33, items.cend(), [](const GraphItem &item) {
            return item.dashed && item.line.x1() > 30;
        });
        QCOMPARE(secondDay->line, QLine(455, 10, 455, 579));

        const QList<GraphItem> lines = TemperatureGraphLayout::thresholds(size, 55, 70);
        QCOMPARE(lines.size(), 2);
        QCOMPARE(lines.at(0).colour, Qt::yellow);
        QCOMPARE(lines.at(0).line, QLine(31, 288, 890, 288)); // 580 - 55 * 53 / 10 = 288.5, cut to 288
        QCOMPARE(lines.at(1).colour, Qt::red);
        QVERIFY(TemperatureGraphLayout::thresholds(size, 30, -1).isEmpty());
    }

    void diskColours()
    {
        QCOMPARE(TemperatureGraphLayout::diskColour(0), Qt::white);
        QCOMPARE(TemperatureGraphLayout::diskColour(1), Qt::green);
        QCOMPARE(TemperatureGraphLayout::diskColour(7), Qt::darkBlue);
        QCOMPARE(TemperatureGraphLayout::diskColour(8), Qt::white);
        QCOMPARE(TemperatureGraphLayout::diskColour(-1), Qt::white);
    }
};

QTEST_GUILESS_MAIN(TestTemperatureGraph)
#include "tst_temperaturegraph.moc"
