#include "graph_widget.h"

#include "health/WindowTexts.h"
#include "stats/LogHistory.h"
#include "stats/TemperatureGraphLayout.h"

#include <QPaintEvent>
#include <QPainter>

namespace {

QPen pointPen(Qt::GlobalColor colour)
{
    QPen pen{QColor(colour)};
    pen.setWidth(2);
    return pen;
}

// The pixels a two-pixel point at (0, 0) covers, as this toolkit draws it; empty when it
// does not cover whole pixels (then the points are drawn one by one instead).
const QList<QPoint> &pointFootprint()
{
    static const QList<QPoint> footprint = [] {
        QImage probe(16, 16, QImage::Format_ARGB32_Premultiplied);
        probe.fill(Qt::transparent);
        {
            QPainter painter(&probe);
            painter.setPen(pointPen(Qt::white));
            painter.drawPoint(8, 8);
        }
        QList<QPoint> covered;
        for (int y = 0; y < probe.height(); ++y) {
            for (int x = 0; x < probe.width(); ++x) {
                const int alpha = qAlpha(probe.pixel(x, y));
                if (alpha != 0 && alpha != 255)
                    return QList<QPoint>();
                if (alpha == 255)
                    covered << QPoint(x - 8, y - 8);
            }
        }
        return covered;
    }();
    return footprint;
}

} // namespace

graph_widget::graph_widget(QWidget *parent)
    : QWidget(parent), m_fromDay(QDate::currentDate()), m_toDay(QDate::currentDate()),
      m_background(WindowTexts::imagePath(QLatin1StringView("blakBackground.png")))
{
    setMinimumSize(200, 150);
}

void graph_widget::setDays(QDate from, QDate to)
{
    m_fromDay = from;
    m_toDay = to;
    forgetPoints();
}

void graph_widget::setLines(int warning, int critical)
{
    m_warningLine = warning;
    m_criticalLine = critical;
    update();
}

void graph_widget::setDiskFilter(int disk)
{
    m_diskFilter = disk;
    forgetPoints();
}

void graph_widget::setHistory(const LogHistory *history)
{
    m_history = history;
    forgetPoints();
}

void graph_widget::historyChanged()
{
    forgetPoints();
}

void graph_widget::forgetPoints()
{
    m_pointsSize = QSize();
    m_points.clear();
    m_pointsPicture = QImage();
    update();
}

void graph_widget::drawItems(QPainter &painter, const QList<GraphItem> &items) const
{
    QFont font(QString::fromLatin1(TemperatureGraphLayout::fontFamily));
    for (const GraphItem &item : items) {
        if (item.kind == GraphItem::Line) {
            painter.setPen(QPen(QColor(item.colour), 1, item.dashed ? Qt::DashLine : Qt::SolidLine));
            painter.drawLine(item.line);
            continue;
        }
        if (font.pointSize() != item.pointSize || painter.font() != font) {
            font.setPointSize(item.pointSize);
            painter.setFont(font);
        }
        painter.setPen(QColor(item.colour));
        if (item.box.isNull())
            painter.drawText(item.at, item.text);
        else
            painter.drawText(item.box, item.alignment, item.text);
    }
}

void graph_widget::paintEvent(QPaintEvent *)
{
    QPainter painter(this);
    if (m_scaledBackground.size() != size())
        m_scaledBackground = m_background.scaled(size(), Qt::IgnoreAspectRatio);
    painter.drawPixmap(0, 0, m_scaledBackground);
    drawItems(painter, TemperatureGraphLayout::frame(size(), m_fromDay, m_toDay));
    if (m_fromDay.daysTo(m_toDay) < 0)
        return;
    drawItems(painter, TemperatureGraphLayout::thresholds(size(), m_warningLine, m_criticalLine));
    if (m_history) {
        drawPoints(painter);
        drawItems(painter, TemperatureGraphLayout::legend(size(), *m_history));
    }
}

void graph_widget::drawPoints(QPainter &painter)
{
    if (m_pointsSize != size()) {
        m_points = TemperatureGraphLayout::points(size(), m_fromDay, m_toDay, m_diskFilter, *m_history);
        m_pointsSize = size();
        m_pointsPicture = QImage();
    }
    const QList<QPoint> &footprint = pointFootprint();
    if (footprint.isEmpty() || devicePixelRatio() != 1.0) {
        for (const GraphPoint &point : m_points) {
            painter.setPen(pointPen(point.colour));
            painter.drawPoint(point.x, point.y);
        }
        return;
    }
    painter.drawImage(0, 0, pointsPicture());
}

// The points on a clear picture, each over the ones before it, as the painter would put them.
const QImage &graph_widget::pointsPicture()
{
    if (!m_pointsPicture.isNull())
        return m_pointsPicture;
    m_pointsPicture = QImage(size(), QImage::Format_ARGB32_Premultiplied);
    m_pointsPicture.fill(Qt::transparent);
    const int w = m_pointsPicture.width();
    const int h = m_pointsPicture.height();
    const QList<QPoint> &footprint = pointFootprint();
    for (const GraphPoint &point : m_points) {
        const QRgb colour = QColor(point.colour).rgba();
        for (const QPoint &offset : footprint) {
            const int x = point.x + offset.x();
            const int y = point.y + offset.y();
            if (x >= 0 && x < w && y >= 0 && y < h)
                reinterpret_cast<QRgb *>(m_pointsPicture.scanLine(y))[x] = colour;
        }
    }
    return m_pointsPicture;
}
