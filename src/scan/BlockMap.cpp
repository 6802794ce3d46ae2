#include "BlockMap.h"

#include "LatencyClass.h"
#include "ScanGeometry.h"
#include "ScanTexts.h"

using namespace ScanGeometry;

void BlockMap::reset()
{
    m_showCurrent = false;
    m_totalBlocks = blockCount(m_diskBytes);
    m_firstBlock = blockOf(m_firstSector);
    m_badRanges.clear();
    m_bad = QVector<bool>(m_totalBlocks, false);
    m_readTimes = QVector<qint64>(m_totalBlocks, -1);
}

void BlockMap::addBadRange(qint64 first, qint64 last)
{
    m_badRanges.append(Range(first, last));
    // Only a range wholly inside one block marks it: a straddling range marks neither.
    const qint64 block = blockOf(first);
    if (first >= 0 && blockOf(last) == block && block < m_bad.size())
        m_bad[block] = true;
}

void BlockMap::setReadTime(qint64 index, qint64 micros)
{
    if (index >= 0 && index < m_readTimes.size())
        m_readTimes[index] = micros;
}

qint64 BlockMap::readTime(qint64 index) const
{
    return index >= 0 && index < m_readTimes.size() ? m_readTimes.at(index) : -1;
}

BlockMap::Cell BlockMap::cell(qint64 index) const
{
    if (index > m_currentBlock || index < m_firstBlock)
        return Cell::Unverified;
    return index < m_bad.size() && m_bad.at(index) ? Cell::Bad : Cell::Verified;
}

int BlockMap::latencyClass(qint64 index) const
{
    const qint64 micros = readTime(index);
    return cell(index) == Cell::Verified && micros >= 0 ? LatencyClass::of(micros) : -1;
}

qint64 BlockMap::rows() const
{
    return (m_totalBlocks + m_columns - 1) / m_columns;
}

void BlockMap::reflow(int areaWidth)
{
    // The scroll bar and the frame take 22 pixels; a narrower area still shows one column.
    m_columns = qMax(1, (areaWidth - 22) / kCellWidth);
}

qint64 BlockMap::blockAt(int x, int y) const
{
    const qint64 column = x / kCellWidth + (x % kCellWidth > 0 ? 1 : 0);
    const qint64 row = y / kCellHeight;
    return column + row * m_columns;
}

qint64 BlockMap::firstSectorOf(qint64 n)
{
    return (n - 1) * kBlockSectors;
}

qint64 BlockMap::lastSectorOf(qint64 n) const
{
    return qMin(n * kBlockSectors - 1, m_diskBytes / kSectorBytes - 1);
}

bool BlockMap::isUnverified(qint64 n) const
{
    return n - 1 > m_currentBlock || n - 1 < m_firstBlock;
}

QList<BlockMap::Range> BlockMap::badRangesIn(qint64 n) const
{
    const qint64 first = firstSectorOf(n);
    const qint64 last = lastSectorOf(n);
    QList<Range> inside;
    for (const Range &range : m_badRanges) {
        if (range.first >= first && range.second <= last)
            inside.append(range);
    }
    return inside;
}

QString BlockMap::condition(qint64 n) const
{
    if (isUnverified(n))
        return ScanTexts::unverifiedBlock();
    return m_bad.value(n - 1) ? ScanTexts::badBlock() : ScanTexts::verifiedBlock();
}

QString BlockMap::tooltip(qint64 n, bool withReadTime) const
{
    if (n < 1 || n > m_totalBlocks)
        return QString();
    QString text = ScanTexts::blockTooltip(n, firstSectorOf(n), lastSectorOf(n), condition(n));
    const qint64 micros = readTime(n - 1);
    if (withReadTime && !isUnverified(n) && micros >= 0)
        text += QLatin1Char('\n') + ScanTexts::slowestRead(micros);
    return text;
}
