#pragma once

#include <QScrollArea>

class paintblock;

/// The scroll area on the left of a scan page: it holds the block map and re-flows its grid
/// to its own width.
class my_ScrollArea : public QScrollArea
{
    Q_OBJECT
public:
    /// Creates the area with its block map.
    explicit my_ScrollArea(QWidget *parent = nullptr);
    /// The block map it holds.
    paintblock *grid() const { return m_grid; }
    /// Fits the grid to the area's width (columns, rows, size and scroll steps).
    void reflow();

signals:
    /// Declared for the page's use; not sent.
    void scanedSector(qint32, int);

protected:
    void resizeEvent(QResizeEvent *event) override;

private:
    paintblock *m_grid;
};
