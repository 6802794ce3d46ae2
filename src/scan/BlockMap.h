#pragma once

#include <QList>
#include <QPair>
#include <QString>
#include <QStringList>
#include <QVector>

/// What the block map shows of one disk: one cell per 30 MB map block, its state after the
/// surface scan, where the user points, and what the tooltip and the block dialog say. The
/// grid widget only paints what this decides; korvanectl reads the same record.
///
/// Blocks are 0-based here (index i); the user sees 1-based numbers (n = i + 1).
class BlockMap
{
public:
    /// A cell's size in pixels; neighbouring outlines share a line.
    static constexpr int kCellWidth = 6;
    static constexpr int kCellHeight = 6;

    /// What a cell shows.
    enum class Cell { Unverified, Verified, Bad };
    /// A bad range: first and last sector, inclusive.
    using Range = QPair<qint64, qint64>;

    /// Size of the disk in bytes; takes effect at the next reset().
    qint64 diskBytes() const { return m_diskBytes; }
    void setDiskBytes(qint64 bytes) { m_diskBytes = qMax<qint64>(0, bytes); }
    /// First sector of the scan range; takes effect at the next reset().
    void setFirstSector(qint64 sector) { m_firstSector = sector; }
    /// Starts a new picture: block count and first block from the settings above, no bad
    /// ranges, no read times, no mark. The last scan's current block stays until the next report.
    void reset();

    /// Blocks of the disk, a partial last block included.
    qint64 totalBlocks() const { return m_totalBlocks; }
    /// The first block of the scan range.
    qint64 firstBlock() const { return m_firstBlock; }
    /// The block being verified, or the last one verified; -1 before any scan.
    qint64 currentBlock() const { return m_currentBlock; }
    void setCurrentBlock(qint64 block) { m_currentBlock = block; }
    /// Whether the next paint marks the current block (cleared by that paint).
    bool showCurrent() const { return m_showCurrent; }
    void setShowCurrent(bool show) { m_showCurrent = show; }

    /// Records a failed check block; it makes a block bad only when it lies wholly inside it.
    void addBadRange(qint64 first, qint64 last);
    /// Every failed check block of the current scan, in arrival order.
    const QList<Range> &badRanges() const { return m_badRanges; }
    /// Records the slowest read of block \a index (microseconds).
    void setReadTime(qint64 index, qint64 micros);
    /// The slowest read of block \a index in microseconds, or -1 when none was timed.
    qint64 readTime(qint64 index) const;

    /// What cell \a index shows.
    Cell cell(qint64 index) const;
    /// The read-time class of verified, timed cell \a index, or -1.
    int latencyClass(qint64 index) const;

    /// Cells per row.
    int columns() const { return m_columns; }
    /// Rows of the grid.
    qint64 rows() const;
    /// Fits the grid to a scroll area \a areaWidth pixels wide; at least one column.
    void reflow(int areaWidth);

    /// The 1-based block number at pixel (\a x, \a y) of the grid. A pixel on a cell's left
    /// outline counts to the cell before it, as the map has always done.
    qint64 blockAt(int x, int y) const;
    /// First sector of block number \a n (1-based).
    static qint64 firstSectorOf(qint64 n);
    /// Last sector of block number \a n (1-based), no further than the disk's last sector.
    qint64 lastSectorOf(qint64 n) const;
    /// Whether block number \a n (1-based) has not been verified by the current picture.
    bool isUnverified(qint64 n) const;
    /// The bad ranges lying wholly inside block number \a n (1-based), in arrival order.
    QList<Range> badRangesIn(qint64 n) const;

    /// The tooltip of block number \a n (1-based); empty beyond the last block. With
    /// \a withReadTime the slowest read of a timed block is added.
    QString tooltip(qint64 n, bool withReadTime) const;
    /// The condition text of block number \a n: unverified, verified or bad.
    QString condition(qint64 n) const;

private:
    qint64 m_diskBytes = 0;
    qint64 m_firstSector = 0;
    qint64 m_totalBlocks = 0;
    qint64 m_firstBlock = 0;
    qint64 m_currentBlock = -1;
    bool m_showCurrent = false;
    int m_columns = 100;
    QList<Range> m_badRanges;
    QVector<bool> m_bad;         ///< per block: a bad range lies wholly inside
    QVector<qint64> m_readTimes; ///< per block: slowest read in microseconds, -1 untimed
};
