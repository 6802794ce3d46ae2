#include "paintblock.h"

#include "BlockColours.h"
#include "show_block.h"

#include <QMouseEvent>
#include <QPaintEvent>
#include <QPainter>

paintblock::paintblock(QWidget *parent) : QWidget(parent)
{
    setMouseTracking(true);
}

void paintblock::reset()
{
    m_map.reset();
    resize(m_map.columns() * BlockMap::kCellWidth + 2, int(m_map.rows()) * BlockMap::kCellHeight + 2);
    update();
}

void paintblock::setCurrent(bool show)
{
    m_map.setShowCurrent(show);
    update();
}

void paintblock::setLatencyColours(bool on)
{
    m_latencyColours = on;
    update();
}

QColor paintblock::colourOf(qint64 index) const
{
    switch (m_map.cell(index)) {
    case BlockMap::Cell::Bad:
        return BlockColours::bad();
    case BlockMap::Cell::Verified: {
        const int latency = m_latencyColours ? m_map.latencyClass(index) : -1;
        return latency >= 0 ? BlockColours::latency(latency) : BlockColours::verified();
    }
    case BlockMap::Cell::Unverified:
        break;
    }
    return BlockColours::unverified();
}

void paintblock::paintEvent(QPaintEvent *event)
{
    QPainter painter(this);
    painter.setPen(QPen(Qt::black, 1));
    const int columns = m_map.columns();
    const int w = BlockMap::kCellWidth;
    const int h = BlockMap::kCellHeight;
    // Only the rows the event exposes: a large disk has tens of thousands of cells.
    const qint64 firstRow = qMax(0, event->rect().top() / h - 1);
    const qint64 lastRow = qMin(m_map.rows() - 1, qint64(event->rect().bottom() / h + 1));
    for (qint64 row = firstRow; row <= lastRow; ++row) {
        for (int column = 0; column < columns; ++column) {
            const qint64 i = row * columns + column;
            if (i >= m_map.totalBlocks())
                break;
            painter.setBrush(colourOf(i));
            painter.drawRect(column * w, int(row) * h, w, h);
        }
    }
    // The mark shows once per report: a later repaint (a scroll) draws the block by the rules above.
    if (m_map.showCurrent() && m_map.currentBlock() >= 0) {
        painter.setBrush(BlockColours::current());
        const qint64 current = m_map.currentBlock();
        painter.drawRect(int(current % columns) * w, int(current / columns) * h, w, h);
        m_map.setShowCurrent(false);
    }
}

void paintblock::mouseMoveEvent(QMouseEvent *event)
{
    const QPoint at = event->position().toPoint();
    setToolTip(m_map.tooltip(m_map.blockAt(at.x(), at.y()), m_latencyColours));
    QWidget::mouseMoveEvent(event);
}

void paintblock::mousePressEvent(QMouseEvent *event)
{
    const QPoint at = event->position().toPoint();
    const qint64 n = m_map.blockAt(at.x(), at.y());
    if (n >= 1 && n <= m_map.totalBlocks())
        showBlock(n);
    QWidget::mousePressEvent(event);
}

void paintblock::showBlock(qint64 n)
{
    show_block dialog(m_map, n, this);
    dialog.exec();
}
