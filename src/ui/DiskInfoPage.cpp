#include "DiskInfoPage.h"

#include "disk_status.h"
#include "freeSpaceLine.h"
#include "statusLine.h"

#include "device/DiskInfoReport.h"
#include "device/DiskRecord.h"
#include "health/WindowTexts.h"

#include "settings/LanguageTable.h"
#include <QHeaderView>
#include <QLabel>
#include <QTreeWidget>
#include <QVBoxLayout>

namespace {

QTreeWidgetItem *itemFor(const InfoRow &row)
{
    auto *item = new QTreeWidgetItem(QStringList{row.label, row.value});
    // Long values (capacity in bytes, volume details) are cut at the pane's edge: the tooltip
    // shows them whole.
    if (!row.value.isEmpty())
        item->setToolTip(1, row.value);
    for (const InfoRow &child : row.children)
        item->addChild(itemFor(child));
    return item;
}

// Rows without a value (the headings of the capability lists and their entries) run across
// both columns, so their long sentences do not push the values out of sight.
void spanValuelessRows(QTreeWidgetItem *item)
{
    if (item->text(1).isEmpty())
        item->setFirstColumnSpanned(true);
    for (int i = 0; i < item->childCount(); ++i)
        spanValuelessRows(item->child(i));
}

} // namespace

DiskInfoPage::DiskInfoPage(QWidget *parent)
    : QWidget(parent),
      m_heading(new QLabel(this)),
      m_statusHeading(new statusLine(this)),
      m_status(new disk_status(this)),
      m_tree(new QTreeWidget(this)),
      m_volumesHeading(new statusLine(this)),
      m_volumeBox(new QWidget(this)),
      m_volumeLayout(new QVBoxLayout(m_volumeBox)),
      m_access(new QLabel(this))
{
    m_heading->setTextFormat(Qt::RichText);
    m_heading->setText(WindowTexts::noDisksHeading());
    m_tree->setColumnCount(2);
    m_tree->setHeaderHidden(true);
    m_tree->setAlternatingRowColors(true);
    m_tree->header()->setSectionResizeMode(0, QHeaderView::ResizeToContents);
    m_volumeLayout->setContentsMargins(0, 0, 0, 0);
    m_volumeLayout->setSpacing(4);
    m_access->setWordWrap(true);
    m_access->setTextInteractionFlags(Qt::TextSelectableByMouse | Qt::TextSelectableByKeyboard);
    m_access->setAlignment(Qt::AlignTop | Qt::AlignLeft);
    m_access->hide();

    auto *layout = new QVBoxLayout(this);
    layout->addWidget(m_heading);
    layout->addWidget(m_statusHeading);
    layout->addWidget(m_status);
    layout->addWidget(m_tree, 1);
    layout->addWidget(m_volumesHeading);
    layout->addWidget(m_volumeBox);
    layout->addWidget(m_access, 1);
}

void DiskInfoPage::showDisk(const DiskRecord &disk)
{
    m_access->hide();
    m_tree->show();
    m_status->show();
    m_heading->setText(QStringLiteral("<B>%1</B>").arg(disk.model.toHtmlEscaped()));
    m_tree->clear();
    for (const InfoRow &row : DiskInfoReport::allRows(disk))
        m_tree->addTopLevelItem(itemFor(row));
    for (int i = 0; i < m_tree->topLevelItemCount(); ++i)
        spanValuelessRows(m_tree->topLevelItem(i));
    m_tree->expandAll();
    showVolumes(disk);
}

void DiskInfoPage::showVolumes(const DiskRecord &disk)
{
    while (QLayoutItem *item = m_volumeLayout->takeAt(0)) {
        delete item->widget();
        delete item;
    }
    for (const VolumeRecord &volume : disk.volumes) {
        auto *bar = new freeSpaceLine(m_volumeBox);
        bar->setSpace(volume.totalBytes, volume.freeBytes, DiskInfoReport::volumeRow(volume).label);
        m_volumeLayout->addWidget(bar);
    }
    m_volumesHeading->setVisible(!disk.volumes.isEmpty());
}

void DiskInfoPage::showNoDisks(const QStringList &accessLines)
{
    m_heading->setText(WindowTexts::noDisksHeading());
    m_tree->clear();
    m_tree->hide();
    m_status->hide();
    m_volumesHeading->hide();
    showVolumes(DiskRecord());
    m_access->setText(accessLines.join(QLatin1Char('\n')));
    m_access->setVisible(!accessLines.isEmpty());
}

void DiskInfoPage::retranslate()
{
    m_tree->setAccessibleName(languageText(Lang::DiskInformation));
    m_status->retranslate();
}
