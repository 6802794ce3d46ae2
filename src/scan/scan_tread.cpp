#include "scan_tread.h"

#include "ScanGeometry.h"

#include <chrono>

using namespace ScanGeometry;

namespace {

constexpr std::size_t kPageBytes = 4096;

} // namespace

scan_tread::scan_tread(std::shared_ptr<DriveBackend> backend, QObject *parent)
    : QThread(parent), m_backend(std::move(backend)), m_blockSize(kDefaultCheckBlock)
{
}

bool scan_tread::setBlockSize(quint32 bytes)
{
    if (!isCheckBlockSize(bytes))
        return false;
    m_blockSize = bytes;
    return true;
}

ScanSummary scan_tread::summary(quint32 elapsedSeconds) const
{
    ScanSummary s;
    s.stopped = stopRequested();
    s.openFailed = openFailed();
    s.blocksScanned = blocksScanned();
    s.sectorsScanned = sectorsScanned();
    s.badBlocks = badBlocks();
    s.elapsedSeconds = elapsedSeconds;
    return s;
}

void scan_tread::stop()
{
    m_stopRequested = true;
}

void scan_tread::run()
{
    m_stopRequested = false;
    m_openFailed = false;
    m_sectorsScanned = 0;
    m_blocksScanned = 0;
    m_badBlocks = 0;

    // Read-only, through the page cache: a scan must never be able to write, and it reads
    // the way ordinary programs do.
    const DiskHandle handle = m_backend->openForRead(m_devicePath.toStdString(), false);
    if (handle == kNoHandle) {
        m_openFailed = true;
        emit scanComplette();
        return;
    }
    // A reversed range has nothing to read; callers refuse it before the start.
    if (m_firstSector >= 0 && m_firstSector <= m_lastSector) {
        m_buffer.reset(static_cast<std::uint8_t *>(qMallocAligned(m_blockSize, kPageBytes)));
        scanRange(handle);
        m_buffer.reset();
    } else {
        emit updateProgress(100);
    }
    m_backend->closeDisk(handle);
    emit scanComplette();
}

bool scan_tread::readChunk(DiskHandle handle, qint64 start, qint64 end, qint64 &micros)
{
    const quint32 length = start == end ? quint32(kSectorBytes)
                                        : quint32(qMin<qint64>(m_blockSize, (end - start + 1) * kSectorBytes));
    const auto began = std::chrono::steady_clock::now();
    const std::int64_t got = m_backend->verifyAt(handle, std::uint64_t(start) * kSectorBytes, m_buffer.get(), length);
    micros = std::chrono::duration_cast<std::chrono::microseconds>(std::chrono::steady_clock::now() - began).count();
    // A short read (the end of the device, a disk gone) is a failure, not a partial success.
    return got == std::int64_t(length);
}

void scan_tread::scanRange(DiskHandle handle)
{
    const qint64 n = m_blockSize / kSectorBytes;
    qint64 start = m_firstSector;
    qint64 end = start + n <= m_lastSector ? start + n - 1 : m_lastSector;
    qint64 currentBlock = blockOf(m_firstSector);
    emit scanedBlock(currentBlock);
    int lastPercent = 0;
    // A one-sector range has no span to divide by; only the final 100 means anything then.
    const double factor = m_lastSector > m_firstSector ? 100.0 / double(m_lastSector - m_firstSector) : 0.0;
    bool pendingError = false;
    qint64 slowest = -1; // of the chunks charged to currentBlock; -1 before the first

    while (m_lastSector >= end) {
        qint64 micros = 0;
        if (!readChunk(handle, start, end, micros)) {
            emit scanedSector(start, end, 2);
            pendingError = true;
        }
        // Bad blocks and read times are charged to the block in which the chunk ends.
        const qint64 b = blockOf(end);
        if (b != currentBlock) {
            if (slowest >= 0)
                emit blockReadTime(currentBlock, slowest);
            slowest = -1;
            emit scanedBlock(b);
            ++m_blocksScanned;
            if (pendingError) {
                ++m_badBlocks;
                pendingError = false;
            }
            currentBlock = b;
            QThread::msleep(1);
        }
        slowest = qMax(slowest, micros);
        const int percent = int(double(end - m_firstSector) * factor);
        if (percent != lastPercent) {
            emit updateProgress(percent);
            lastPercent = percent;
        }
        if (m_stopRequested) {
            if (pendingError)
                ++m_badBlocks;
            break;
        }
        start = end + 1;
        if (end == m_lastSector)
            break;
        end = end + n <= m_lastSector ? end + n : m_lastSector;
    }

    emit updateProgress(100);
    if (slowest >= 0)
        emit blockReadTime(currentBlock, slowest);
    m_sectorsScanned = end - m_firstSector + 1;
    ++m_blocksScanned;
}
