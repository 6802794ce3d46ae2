#include "DiskTree.h"

#include "IconCache.h"

#include "device/DiskRecord.h"
#include "health/DiskPanelPlan.h"
#include "health/HealthTexts.h"
#include "settings/AppSettings.h"
#include "settings/LanguageTable.h"

#include <QHeaderView>

DiskTree::DiskTree(QWidget *parent) : QTreeWidget(parent)
{
    setColumnCount(2);
    setRootIsDecorated(false);
    setUniformRowHeights(true);
    header()->setStretchLastSection(false);
}

void DiskTree::rebuild(const QList<DiskRecord> &disks, const AppSettings &settings)
{
    clear();
    for (const DiskRecord &disk : disks) {
        auto *item = new QTreeWidgetItem;
        item->setIcon(0, IconCache::icon(DiskPanelPlan::discoveryTreeIcon(disk)));
        item->setText(1, DiskPanelPlan::discoveryTemperatureText(disk, settings));
        item->setTextAlignment(1, Qt::AlignRight | Qt::AlignVCenter);
        item->setText(0, disk.model);
        item->setToolTip(0, disk.devicePath);
        addTopLevelItem(item);
    }
}

void DiskTree::applyPlan(int index, const DiskPanelPlan &plan)
{
    QTreeWidgetItem *item = topLevelItem(index);
    if (!item)
        return;
    item->setIcon(0, IconCache::icon(plan.treeIcon));
    if (!plan.temperatureText.isEmpty())
        item->setText(1, plan.temperatureText);
}

void DiskTree::retranslate(const AppSettings &settings)
{
    setAccessibleName(languageText(Lang::DisksTree));
    setHeaderLabels({languageText(Lang::DeviceColumn),
                     QStringLiteral("%1 (%2)").arg(languageText(Lang::TemperatureColumn),
                                                   HealthTexts::unitText(settings, languageTable()))});
}

int DiskTree::currentDisk() const
{
    return currentItem() ? indexOfTopLevelItem(currentItem()) : -1;
}

int DiskTree::fitColumns()
{
    resizeColumnToContents(0);
    resizeColumnToContents(1);
    return columnWidth(0) + columnWidth(1) + 5;
}
