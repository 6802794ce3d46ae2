#include "my_ScrollArea.h"

#include "paintblock.h"

#include <QScrollBar>

my_ScrollArea::my_ScrollArea(QWidget *parent) : QScrollArea(parent), m_grid(new paintblock)
{
    setWidget(m_grid);
    reflow();
}

void my_ScrollArea::reflow()
{
    BlockMap &map = m_grid->map();
    map.reflow(width());
    // One pixel for the closing outline.
    m_grid->resize(map.columns() * BlockMap::kCellWidth + 1, int(map.rows()) * BlockMap::kCellHeight + 1);
}

void my_ScrollArea::resizeEvent(QResizeEvent *event)
{
    reflow();
    QScrollArea::resizeEvent(event);
    verticalScrollBar()->setPageStep(m_grid->height());
    horizontalScrollBar()->setPageStep(m_grid->width());
    verticalScrollBar()->setRange(0, qMax(0, m_grid->height() - viewport()->height()));
    horizontalScrollBar()->setRange(0, qMax(0, m_grid->width() - viewport()->width()));
}
