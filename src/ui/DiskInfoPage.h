#pragma once

#include <QWidget>

class QLabel;
class QTreeWidget;
class QVBoxLayout;
class disk_status;
class statusLine;
struct DiskRecord;

/// The "Disk Info" page: the selected disk's status panel, its identity, volume, geometry and
/// capability rows, and a space bar per volume. Without disks it says why there are none.
class DiskInfoPage : public QWidget
{
    Q_OBJECT
public:
    /// An empty page headed "No Disks".
    explicit DiskInfoPage(QWidget *parent = nullptr);

    /// The status panel, filled by the window after each SMART read.
    disk_status *statusPanel() const { return m_status; }
    /// The "Disk Status [Last Checked: ...]" heading.
    statusLine *statusHeading() const { return m_statusHeading; }
    /// The "Volumes [Last Checked: ...]" heading.
    statusLine *volumesHeading() const { return m_volumesHeading; }

    /// Shows the rows and volumes of \a disk.
    void showDisk(const DiskRecord &disk);
    /// Shows the volume bars of \a disk again (after a free-space refresh).
    void showVolumes(const DiskRecord &disk);
    /// Shows "No Disks" with \a accessLines: the disks that could not be read and how to grant access.
    void showNoDisks(const QStringList &accessLines);
    /// Takes the names screen readers say from the current language table.
    void retranslate();

private:
    QLabel *m_heading;
    statusLine *m_statusHeading;
    disk_status *m_status;
    QTreeWidget *m_tree;
    statusLine *m_volumesHeading;
    QWidget *m_volumeBox;
    QVBoxLayout *m_volumeLayout;
    QLabel *m_access;
};
