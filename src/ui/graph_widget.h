#pragma once

#include "stats/GraphItem.h"

#include <QDate>
#include <QImage>
#include <QList>
#include <QPixmap>
#include <QWidget>

class LogHistory;

/// The temperature graph: the samples of a LogHistory as points, 0..100 °C upwards over the
/// chosen days, one colour per disk, two threshold lines and the legend of disks.
/// TemperatureGraphLayout decides where everything goes; this widget draws it. However long
/// the history, a repaint draws each distinct point once, from a picture of the points kept
/// until the size, the days, the filter or the history change.
class graph_widget : public QWidget
{
    Q_OBJECT
public:
    /// Today as the only day, no lines, all disks, no history.
    explicit graph_widget(QWidget *parent = nullptr);

    /// Shows the days \a from to \a to (both included).
    void setDays(QDate from, QDate to);
    /// The yellow and the red line, in °C; a value of 30 or less draws no line.
    void setLines(int warning, int critical);
    /// Draws the samples of disk \a disk only, or of all disks when it is -1.
    void setDiskFilter(int disk);
    /// Draws \a history (not owned; it must outlive the widget or be replaced first).
    void setHistory(const LogHistory *history);
    /// The history has grown or been cleared: the points are worked out again at the next repaint.
    void historyChanged();

    /// The first day shown.
    QDate fromDay() const { return m_fromDay; }
    /// The last day shown.
    QDate toDay() const { return m_toDay; }
    /// The disk drawn, or -1 for all.
    int diskFilter() const { return m_diskFilter; }
    /// The history drawn; may be null.
    const LogHistory *history() const { return m_history; }

protected:
    void paintEvent(QPaintEvent *event) override;
    /// Draws the temperature points over the frame; the pen is two pixels wide.
    virtual void drawPoints(QPainter &painter);

private:
    void drawItems(QPainter &painter, const QList<GraphItem> &items) const;
    const QImage &pointsPicture();
    void forgetPoints();

    QDate m_fromDay;
    QDate m_toDay;
    int m_warningLine = -1;
    int m_criticalLine = -1;
    int m_diskFilter = -1;
    const LogHistory *m_history = nullptr;
    QPixmap m_background;
    QPixmap m_scaledBackground;
    QSize m_pointsSize; ///< the size m_points were worked out for; invalid when they are stale
    QList<GraphPoint> m_points;
    QImage m_pointsPicture;
};
