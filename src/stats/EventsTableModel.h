#pragma once

#include <QAbstractTableModel>
#include <QList>
#include <QStringList>

class LogHistory;

/// The warning and alarm records of a LogHistory for a table view: date, time, disk,
/// serial, level, health and temperature, in file order, filtered by disk and level.
/// Header texts come from a language table.
class EventsTableModel : public QAbstractTableModel
{
    Q_OBJECT

public:
    /// Columns in the order they are shown.
    enum Column { DateColumn, TimeColumn, DiskColumn, SerialColumn, LevelColumn, HealthColumn, TemperatureColumn, ColumnCount };

    /// Rows of \a history (not owned; it must outlive the model); \a texts is a whole language table.
    EventsTableModel(const LogHistory *history, const QStringList &texts, QObject *parent = nullptr);

    /// Takes the records the history gained since the last call (rows are added at the end).
    void historyGrew();
    /// The history was cleared or replaced: starts over.
    void historyReset();
    /// Shows the records of disk \a disk only (-1: all) and of level \a level only (0: all, 2
    /// WARNING, 3 ALARM).
    void setFilter(int disk, int level);
    /// Takes the texts of another language.
    void setTexts(const QStringList &texts);
    /// The disk indexes of the records held, in increasing order.
    QList<int> disks() const;
    /// The records shown.
    int shownCount() const { return int(m_shown.size()); }

    /// The records that pass the filter; none below a valid parent.
    int rowCount(const QModelIndex &parent = QModelIndex()) const override;
    /// ColumnCount; none below a valid parent.
    int columnCount(const QModelIndex &parent = QModelIndex()) const override;
    /// Cell texts; numbers right-aligned.
    QVariant data(const QModelIndex &index, int role = Qt::DisplayRole) const override;
    /// Column titles from the language table.
    QVariant headerData(int section, Qt::Orientation orientation, int role = Qt::DisplayRole) const override;

private:
    struct Key
    {
        int disk = 0;
        int level = 0;
    };
    bool passes(const Key &key) const;
    QString cellText(const QStringList &fields, int column) const;

    const LogHistory *m_history;
    QStringList m_texts;
    QList<Key> m_keys;       // of every record held
    QList<qsizetype> m_shown; // positions in the history of the records shown
    int m_disk = -1;
    int m_level = 0;
};
