#include "TemperatureGraphLayout.h"

#include "LogHistory.h"

#include <QDateTime>
#include <QHash>

#include <optional>

namespace TemperatureGraphLayout {

namespace {

GraphItem line(double x1, double y1, double x2, double y2, Qt::GlobalColor colour = Qt::white, bool dashed = false)
{
    GraphItem item;
    item.line = QLine(int(x1), int(y1), int(x2), int(y2));
    item.colour = colour;
    item.dashed = dashed;
    return item;
}

GraphItem text(const QString &words, double x, double y, int width, int height, int alignment, int pointSize)
{
    GraphItem item;
    item.kind = GraphItem::Text;
    item.text = words;
    item.box = QRect(int(x), int(y), width, height);
    item.alignment = alignment;
    item.pointSize = pointSize;
    return item;
}

// One day of hour ticks, its day line and its labels.
void addDay(QList<GraphItem> &items, int d, int days, double xstep, int h)
{
    for (int k = 0; k < 24; ++k) {
        const double x = 30 + xstep * k + xstep * 24 * d;
        if (k != 0 && k != 12) {
            items << line(x, h - 20, x, h - 17);
        } else if (k == 12) {
            items << line(x, h - 20, x, h - 15);
            if (xstep >= 3.0)
                items << text(QStringLiteral("12:00"), 5 + xstep * k + xstep * 24 * d, h - 10, 50, 10, Qt::AlignCenter, 6);
        } else {
            items << line(x, h - 20, x, h - 12) << line(x, 10, x, h - 21, Qt::white, true);
            // On a narrow scale only the first and the last day are labelled.
            if (!(xstep < 3.0 && d >= 1 && d < days))
                items << text(QString(), 5 + xstep * 24 * d, h - 10, 50, 10, Qt::AlignCenter, 7);
        }
    }
}

// Seconds since 1970 of a stamp number yyyyMMddhhmmss in local time, from one conversion per
// hour: a year of samples holds 8760 hours, and the offset to local time changes on the hour.
// The toolkit's conversion is slow, so the hours are remembered from one drawing to the next.
class StampClock
{
public:
    std::optional<qint64> seconds(quint64 stamp)
    {
        const quint64 hourKey = stamp / 10000;
        const int minute = int(stamp / 100 % 100);
        const int second = int(stamp % 100);
        if (hourKey != m_hourKey) {
            m_hourKey = hourKey;
            m_hourStart = hourStart(hourKey);
        }
        if (!m_hourStart || minute > 59 || second > 59)
            return std::nullopt;
        return *m_hourStart + minute * 60 + second;
    }

private:
    static std::optional<qint64> hourStart(quint64 hourKey)
    {
        static thread_local QHash<quint64, std::optional<qint64>> known;
        const auto found = known.constFind(hourKey);
        if (found != known.constEnd())
            return found.value();
        const int hour = int(hourKey % 100);
        const QDate day(int(hourKey / 1000000), int(hourKey / 10000 % 100), int(hourKey / 100 % 100));
        const QDateTime start(day, QTime(hour, 0));
        const std::optional<qint64> seconds =
            day.isValid() && hour < 24 && start.isValid() ? std::optional(start.toSecsSinceEpoch()) : std::nullopt;
        // Bounded: a damaged log could name any number of hours.
        if (known.size() > 200000)
            known.clear();
        known.insert(hourKey, seconds);
        return seconds;
    }

    quint64 m_hourKey = ~quint64(0);
    std::optional<qint64> m_hourStart;
};

} // namespace

Qt::GlobalColor diskColour(int disk)
{
    static constexpr Qt::GlobalColor table[] = {Qt::white, Qt::green, Qt::blue, Qt::cyan, Qt::magenta,
                                                Qt::darkRed, Qt::darkGreen, Qt::darkBlue};
    return disk >= 1 && disk <= 7 ? table[disk] : Qt::white;
}

QList<GraphItem> frame(QSize size, QDate from, QDate to)
{
    const int w = size.width();
    const int h = size.height();
    QList<GraphItem> items;
    items << line(30, 10, 30, h - 20) << line(30, h - 20, w - 10, h - 20);
    GraphItem unit;
    unit.kind = GraphItem::Text;
    unit.text = QStringLiteral("\u00b0C");
    unit.at = QPoint(35, 20);
    unit.pointSize = 10;
    items << unit;
    const double ystep = (h - 70) / 10.0;
    for (int i = 1; i <= 10; ++i) {
        const double y = (h - 20) - i * ystep;
        items << line(27, y, 30, y) << line(31, y, w - 10, y, Qt::white, true)
              << text(QString::number(i * 10), 10, (h - 25) - i * ystep, 15, 10, Qt::AlignRight, 7);
    }
    const qint64 days = from.daysTo(to);
    if (days < 0 || !from.isValid() || !to.isValid())
        return items;
    // Real division, so that the hour ticks and the points share one scale.
    const double xstep = (w - 50) / double(days * 24 + 24);
    for (int d = 0; d <= days; ++d) {
        const qsizetype before = items.size();
        addDay(items, d, int(days), xstep, h);
        for (qsizetype k = before; k < items.size(); ++k) {
            if (items[k].kind == GraphItem::Text && items[k].text.isEmpty())
                items[k].text = from.addDays(d).toString(QStringLiteral("MM/dd/yyyy"));
        }
    }
    return items;
}

QList<GraphItem> thresholds(QSize size, int warning, int critical)
{
    const int w = size.width();
    const int h = size.height();
    const double ystep = (h - 70) / 10.0;
    QList<GraphItem> items;
    const std::pair<int, Qt::GlobalColor> lines[] = {{warning, Qt::yellow}, {critical, Qt::red}};
    for (const auto &[value, colour] : lines) {
        if (value > 30) {
            const double y = (h - 20) - value * ystep / 10.0;
            items << line(31, y, w - 10, y, colour);
        }
    }
    return items;
}

QList<GraphItem> legend(QSize size, const LogHistory &history)
{
    QList<GraphItem> items;
    for (qsizetype i = 0; i < history.legend().size(); ++i) {
        GraphItem item;
        item.kind = GraphItem::Text;
        item.text = history.legend().at(i).serial;
        item.colour = diskColour(history.legend().at(i).disk);
        item.at = QPoint(size.width() - 100, int(i * 12 + 20));
        items << item;
    }
    return items;
}

namespace {

// Where one sample of the history goes, and which samples draw the same pixels: those of one
// (column, temperature, colour).
struct PointGrid
{
    int w = 0;
    int h = 0;
    qint64 start = 0;
    double xscale = 0;
    double ystep = 0;
    int diskFilter = -1;
    int temperatures = 0; // temperatures 0..temperatures-1 can be seen

    struct Placed
    {
        int column = 0; // x + 4, from 0
        int local = 0;  // temperature and colour within the column
        GraphPoint point;
    };

    // Where \a sample goes; nothing when it is filtered out, has no time or leaves no pixel.
    std::optional<Placed> place(const TemperatureSample &sample, StampClock &clock) const
    {
        if ((diskFilter > -1 && sample.disk != diskFilter) || sample.temperature >= temperatures)
            return std::nullopt;
        const std::optional<qint64> seconds = clock.seconds(sample.stamp);
        if (!seconds)
            return std::nullopt;
        const double x = 30 + xscale * double(*seconds - start);
        const double y = (h - 20) - sample.temperature * ystep / 10.0;
        // The pen is two pixels wide: a point further off than this leaves no pixel.
        if (x < -4 || x > w + 4 || y < -4 || y > h + 4)
            return std::nullopt;
        const int colour = sample.disk >= 1 && sample.disk <= 7 ? sample.disk : 0;
        return Placed{int(x) + 4, sample.temperature * 8 + colour, {int(x), int(y), diskColour(sample.disk)}};
    }
};

// The samples of one column in a row, each remembered until a later one of the same place
// replaces it. Keeping, in file order, only the last sample of each place within each such
// run still keeps the last sample of each place over the whole history, and the last point
// drawn over a pixel is all that decides its colour: the picture stays the same.
class ColumnRun
{
public:
    explicit ColumnRun(int places) : m_last(places, -1) {}

    void add(const PointGrid::Placed &placed, QList<GraphPoint> &out)
    {
        if (placed.column != m_column) {
            flush(out);
            m_column = placed.column;
        }
        qint32 &last = m_last[placed.local];
        if (last < 0)
            m_touched.append(placed.local);
        last = qint32(m_points.size());
        m_points.append(placed.point);
        m_locals.append(placed.local);
    }
    void flush(QList<GraphPoint> &out)
    {
        for (qsizetype i = 0; i < m_points.size(); ++i) {
            if (m_last.at(m_locals.at(i)) == i)
                out.append(m_points.at(i));
        }
        for (const int local : std::as_const(m_touched))
            m_last[local] = -1;
        m_touched.clear();
        m_points.clear();
        m_locals.clear();
    }

private:
    int m_column = -1;
    QList<qint32> m_last; // by place within the column: position in m_points, or -1
    QList<int> m_touched;
    QList<GraphPoint> m_points;
    QList<int> m_locals;
};

} // namespace

QList<GraphPoint> points(QSize size, QDate from, QDate to, int diskFilter, const LogHistory &history)
{
    if (from.daysTo(to) < 0 || !from.isValid() || !to.isValid() || history.temperatureCount() == 0)
        return {};
    PointGrid grid;
    grid.w = size.width();
    grid.h = size.height();
    grid.start = QDateTime(from, QTime(0, 0)).toSecsSinceEpoch();
    grid.xscale = (grid.w - 50) / double(QDateTime(to, QTime(23, 59, 59)).toSecsSinceEpoch() - grid.start);
    grid.ystep = (grid.h - 70) / 10.0;
    grid.diskFilter = diskFilter;
    grid.temperatures = 0x10000;
    if (grid.ystep > 0) // no visible point is hotter than the top of the widget
        grid.temperatures = int(qMin<double>(0x10000, (grid.h + 4 - 20 + 4) * 10.0 / grid.ystep + 2));

    QList<GraphPoint> result;
    ColumnRun run(grid.temperatures * 8);
    StampClock clock;
    for (const LogHistory::SampleChunk &chunk : history.sampleChunks()) {
        for (const TemperatureSample &sample : chunk.samples) {
            if (const std::optional<PointGrid::Placed> placed = grid.place(sample, clock))
                run.add(*placed, result);
        }
    }
    run.flush(result);
    return result;
}

} // namespace TemperatureGraphLayout
