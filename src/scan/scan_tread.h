#pragma once

#include "ScanSummary.h"

#include "device/DriveBackend.h"

#include <QString>
#include <QThread>

#include <atomic>
#include <memory>

/// The read-verify surface scan of one disk on a thread of its own. It opens the disk read-only,
/// reads a sector range in check blocks, reports every check block that cannot be read in full
/// as one bad range, and never writes, retries or splits a failed read.
///
/// The owner sets the parameters before start() and reads the results after scanComplette();
/// the results are atomics, so reading them early is safe, merely not final.
class scan_tread : public QThread
{
    Q_OBJECT
public:
    /// Reads through \a backend, which this worker keeps alive until it ends.
    explicit scan_tread(std::shared_ptr<DriveBackend> backend, QObject *parent = nullptr);

    /// Bytes of the largest single read: 512, 65536 (the default) or 262144. Set before start();
    /// any other size is refused and the previous one stays.
    quint32 blockSize() const { return m_blockSize; }
    bool setBlockSize(quint32 bytes);
    /// First sector of the range, inclusive. Set before start().
    qint64 firstSector() const { return m_firstSector; }
    void setFirstSector(qint64 sector) { m_firstSector = sector; }
    /// Last sector of the range, inclusive. Set before start().
    qint64 lastSector() const { return m_lastSector; }
    void setLastSector(qint64 sector) { m_lastSector = sector; }
    /// Path the disk (or image file) is opened with. Set before start().
    QString devicePath() const { return m_devicePath; }
    void setDevicePath(const QString &path) { m_devicePath = path; }

    /// Sectors from the first one to the end of the last check block read.
    qint64 sectorsScanned() const { return m_sectorsScanned.load(); }
    /// Map blocks entered or finished, the one the scan ended in included.
    qint64 blocksScanned() const { return m_blocksScanned.load(); }
    /// Map blocks with a failed read, counted when the scan left them or was stopped in them.
    qint64 badBlocks() const { return m_badBlocks.load(); }
    /// Whether the last run was stopped.
    bool stopRequested() const { return m_stopRequested.load(); }
    /// Whether the last run could not open the disk.
    bool openFailed() const { return m_openFailed.load(); }

    /// The last run's counters and flags, with \a elapsedSeconds as its time.
    ScanSummary summary(quint32 elapsedSeconds) const;

    /// Asks the run to stop after the check block in hand; returns at once. Any thread.
    void stop();

signals:
    /// Check block \a first..\a last could not be read; \a state is always 2 (bad).
    void scanedSector(qint64 first, qint64 last, int state);
    /// The scan has entered map block \a block (0-based).
    void scanedBlock(qint64 block);
    /// The run is over: completed, stopped, or the disk could not be opened.
    void scanComplette();
    /// Whole percent done, 1..100, sent when it changes.
    void updateProgress(int percent);
    /// The slowest check-block read charged to map block \a block took \a micros microseconds;
    /// sent when the scan leaves the block and for the block it ends in.
    void blockReadTime(qint64 block, qint64 micros);

protected:
    void run() override;

private:
    /// Reads sectors \a start..\a end into the buffer; whether every byte came; \a micros the time taken.
    bool readChunk(DiskHandle handle, qint64 start, qint64 end, qint64 &micros);
    void scanRange(DiskHandle handle);

    std::shared_ptr<DriveBackend> m_backend;
    quint32 m_blockSize;
    qint64 m_firstSector = 0;
    qint64 m_lastSector = 0;
    QString m_devicePath;
    /// One page-aligned buffer per run, as the kernel copies fastest into one.
    std::unique_ptr<std::uint8_t, void (*)(void *)> m_buffer{nullptr, &qFreeAligned};

    std::atomic<qint64> m_sectorsScanned{0};
    std::atomic<qint64> m_blocksScanned{0};
    std::atomic<qint64> m_badBlocks{0};
    std::atomic<bool> m_stopRequested{false};
    std::atomic<bool> m_openFailed{false};
};
