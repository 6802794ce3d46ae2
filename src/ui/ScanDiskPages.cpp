#include "ScanDiskPages.h"

#include "scandisk.h"

#include "device/DiskRecord.h"

ScanDiskPages::ScanDiskPages(QWidget *parent) : QStackedWidget(parent), m_empty(new QWidget(this))
{
    addWidget(m_empty);
}

void ScanDiskPages::setDisks(const QList<DiskRecord> &disks, const std::shared_ptr<DriveBackend> &backend)
{
    QList<scandisk *> pages;
    for (int i = 0; i < disks.size(); ++i) {
        const DiskRecord &disk = disks.at(i);
        scandisk *page = m_pages.value(i);
        if (page && page->devicePath() == disk.devicePath) {
            m_pages[i] = nullptr;
        } else {
            page = new scandisk(backend, this);
            addWidget(page);
            connect(page, &scandisk::intoLogFromScan, this, &ScanDiskPages::intoLogFromScan);
            page->setDisk(i, disk.devicePath, qint64(disk.capacityBytes));
        }
        pages << page;
    }
    // Pages of disks that went away: their scans stop, and no dialog speaks for a page gone.
    for (scandisk *old : std::as_const(m_pages)) {
        if (old) {
            old->closeScan();
            delete old;
        }
    }
    m_pages = pages;
}

void ScanDiskPages::showDisk(int index)
{
    scandisk *shown = page(index);
    setCurrentWidget(shown ? static_cast<QWidget *>(shown) : m_empty);
}

scandisk *ScanDiskPages::page(int index) const
{
    return m_pages.value(index);
}

void ScanDiskPages::closeAll()
{
    for (scandisk *page : std::as_const(m_pages))
        page->closeScan();
}

void ScanDiskPages::retranslate()
{
    for (scandisk *page : std::as_const(m_pages))
        page->retranslate();
}
