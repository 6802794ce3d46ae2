#pragma once

#include <QList>
#include <QStackedWidget>

#include <memory>

class DriveBackend;
class scandisk;
struct DiskRecord;

/// The "Scan Disk" tab: one scan page per disk, in disk-list order, showing the selected
/// disk's. A page keeps its scan and its map while another disk is shown.
class ScanDiskPages : public QStackedWidget
{
    Q_OBJECT
public:
    /// An empty tab until the disks are known.
    explicit ScanDiskPages(QWidget *parent = nullptr);

    /// One page per disk of \a disks, reading through \a backend. A page whose disk keeps its
    /// place and path is kept, scan and all; the others are replaced.
    void setDisks(const QList<DiskRecord> &disks, const std::shared_ptr<DriveBackend> &backend);
    /// Shows the page of disk \a index (the empty page when there is none).
    void showDisk(int index);
    /// The page of disk \a index, or nullptr.
    scandisk *page(int index) const;
    /// Stops every scan and suppresses their result dialogs; for the program's end.
    void closeAll();
    /// Takes every text from the current language table.
    void retranslate();

signals:
    /// A scan's line for the Events Log of disk \a disk (kind 1 information, 3 alarm).
    void intoLogFromScan(int disk, int kind, const QString &text);

private:
    QWidget *m_empty;
    QList<scandisk *> m_pages;
};
