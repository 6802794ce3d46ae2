#pragma once

#include "HealthState.h"
#include "device/DiskRecord.h"

#include <QAbstractTableModel>
#include <QList>
#include <QStringList>

/// The SMART attribute rows of one disk for a table view: ID, name, value, worst, threshold,
/// raw value and status. Header and status texts come from a language table (Lang entries 94..104).
/// All cells are text; the numbers are plain decimals, right-aligned.
class SmartTableModel : public QAbstractTableModel
{
    Q_OBJECT

public:
    /// Columns in the order they are shown (the order of their header entries).
    enum Column {
        IdColumn,
        NameColumn,
        ValueColumn,
        WorstColumn,
        ThresholdColumn,
        RawColumn,
        StatusColumn,
        ColumnCount
    };

    /// Roles beyond the standard ones; every cell of a row gives the row's value.
    enum Role {
        CategoryRole = Qt::UserRole + 1, ///< int: AttributeCatalogue::Category from the row's flags
        LevelRole,                       ///< int: the HealthState the Status column names
        IconNameRole,                    ///< QString: icon name of the category ("attr_health", ...)
        DescriptionRole,                 ///< QString: rich-text description from the catalogue
        IdRole,                          ///< uint: the attribute id
    };

    /// \a texts is a whole language table (languageTable() in the program).
    explicit SmartTableModel(const QStringList &texts, QObject *parent = nullptr);

    /// Shows the rows of \a disk. With the same attribute ids in the same order as before only
    /// the cells change (dataChanged), so a view keeps its selection; otherwise the model resets.
    void setDisk(const DiskRecord &disk);
    /// Takes the texts of another language: the headers and the Status column change.
    void setTexts(const QStringList &texts);

    /// One row per attribute of the disk; none below a valid parent.
    int rowCount(const QModelIndex &parent = QModelIndex()) const override;
    /// ColumnCount; none below a valid parent.
    int columnCount(const QModelIndex &parent = QModelIndex()) const override;
    /// Cell text, alignment of the number columns, and the custom roles.
    QVariant data(const QModelIndex &index, int role = Qt::DisplayRole) const override;
    /// Column titles from the language table; row headers as the base class gives them.
    QVariant headerData(int section, Qt::Orientation orientation, int role = Qt::DisplayRole) const override;

private:
    HealthState rowLevel(const SmartAttribute &attribute) const;
    QString cellText(const SmartAttribute &attribute, int column) const;

    QList<SmartAttribute> m_rows;
    QStringList m_texts;
    bool m_evaluated = false; ///< the health evaluation looks at this disk at all
};
