#pragma once

#include <QWidget>

class QLabel;
class QModelIndex;
class QTableView;
class QTextBrowser;
class SmartTableModel;
struct DiskRecord;

/// The "SMART Info" page: the attribute table of the selected disk, the description of the
/// selected attribute and the legend of the category icons.
class SmartInfoPage : public QWidget
{
    Q_OBJECT
public:
    /// An empty table with headers from the current language table.
    explicit SmartInfoPage(QWidget *parent = nullptr);

    /// Shows the rows of \a disk; the selected row stays selected when the rows are the same.
    void showDisk(const DiskRecord &disk);
    /// Empties the table and the description.
    void clear();
    /// Takes the texts of the current language table.
    void retranslate();
    /// The table's model.
    SmartTableModel *model() const { return m_model; }
    /// The table view.
    QTableView *table() const { return m_table; }

public slots:
    /// Shows the description of the attribute at \a current.
    void show_description(const QModelIndex &current);

private:
    SmartTableModel *m_model;
    QTableView *m_table;
    QTextBrowser *m_description;
    QLabel *m_legend;
};
