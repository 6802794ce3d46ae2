#pragma once

#include <QDateTime>
#include <QWidget>

#include <memory>

class DriveBackend;
class form_scan_set;
class my_ScrollArea;
class paintblock;
class QLabel;
class scan_tread;
struct ScanSummary;

/// The "Scan Disk" page of one disk: the block map on the left, the settings form on the
/// right. It turns the form into worker parameters, starts and stops the scan, shows progress
/// and read speed, reports scan events for the Events Log and shows the result.
class scandisk : public QWidget
{
    Q_OBJECT
public:
    /// A page reading through \a backend; the host sets the disk before the first scan.
    explicit scandisk(std::shared_ptr<DriveBackend> backend, QWidget *parent = nullptr);
    /// Stops a running scan; a worker blocked in a read is left to end on its own.
    ~scandisk() override;

    /// Sets the disk: its place in the disk list, its path and its size in bytes. Resets the
    /// map and the sector range to the whole disk.
    void setDisk(int index, const QString &devicePath, qint64 sizeBytes);
    /// The disk's place in the disk list; -1 until set.
    int diskIndex() const { return m_diskIndex; }
    /// The path the worker opens.
    QString devicePath() const;
    /// Whether a scan is running.
    bool isScanning() const;
    /// Suppresses the result dialogs and stops a running scan; for the program's end.
    void closeScan();
    /// Takes every text from the current language table.
    void retranslate();

    /// The settings form, for the host and for tests.
    form_scan_set *form() const { return m_form; }
    /// The block map.
    paintblock *blockMap() const;

signals:
    /// A line for the Events Log of disk \a disk: kind 1 information, 3 alarm.
    void intoLogFromScan(int disk, int kind, const QString &text);

public slots:
    void stop_scan();
    void start_scan();
    void showScanedSector(qint64 first, qint64 last, int state);
    void showScanedBlock(qint64 block);
    void scan_Complette();
    void update_Progress(int percent);

protected:
    void closeEvent(QCloseEvent *event) override;

private:
    void setRunning(bool running);
    void showResult(const ScanSummary &summary);
    void keepRangeOrdered();

    bool m_closing = false;
    my_ScrollArea *m_blockMapArea;
    scan_tread *m_worker; ///< owned, but left to end on its own when blocked in a read at the end
    QLabel *m_statusLabel;
    QLabel *m_speedLabel;
    form_scan_set *m_form;
    int m_diskIndex = -1;
    QDateTime m_startTime;
    QDateTime m_lastSpeedTime;
    QDateTime m_now;
};
