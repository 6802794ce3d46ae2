#pragma once

#include "scan/BlockMap.h"

#include <QWidget>

/// The block map: one small cell per 30 MB block of a disk, coloured by what the surface scan
/// found. Hovering shows a block's tooltip; a click opens its details.
class paintblock : public QWidget
{
    Q_OBJECT
public:
    /// An empty map of 100 columns.
    explicit paintblock(QWidget *parent = nullptr);

    /// What the map shows; the page and the scroll area change it, then call update().
    BlockMap &map() { return m_map; }
    const BlockMap &map() const { return m_map; }
    /// Starts a new picture (BlockMap::reset) and resizes the grid to it.
    void reset();
    /// Marks the current block at the next paint (or stops marking) and repaints.
    void setCurrent(bool show);
    /// Colours verified blocks by their slowest read instead of plain green.
    void setLatencyColours(bool on);
    bool latencyColours() const { return m_latencyColours; }

signals:
    /// Declared for the page's use; not sent.
    void painBl(int);

protected:
    void paintEvent(QPaintEvent *event) override;
    void mouseMoveEvent(QMouseEvent *event) override;
    void mousePressEvent(QMouseEvent *event) override;

private:
    QColor colourOf(qint64 index) const;
    void showBlock(qint64 n);

    BlockMap m_map;
    bool m_latencyColours = false;
};
