#pragma once

#include <QTreeWidget>

struct AppSettings;
struct DiskPanelPlan;
struct DiskRecord;

/// The tree of disks on the left of the window: one item per disk, its model and temperature.
class DiskTree : public QTreeWidget
{
    Q_OBJECT
public:
    /// An empty tree with its two columns.
    explicit DiskTree(QWidget *parent = nullptr);

    /// One item per disk of \a disks, with the icon and temperature discovery gives them.
    void rebuild(const QList<DiskRecord> &disks, const AppSettings &settings);
    /// Applies the icon and temperature of \a plan to the item of disk \a index.
    void applyPlan(int index, const DiskPanelPlan &plan);
    /// Sets the column titles from the language table and the display unit of \a settings.
    void retranslate(const AppSettings &settings);
    /// Index of the selected disk, -1 when none.
    int currentDisk() const;
    /// Fits the two columns to their contents; returns the width the tree needs.
    int fitColumns();
};
