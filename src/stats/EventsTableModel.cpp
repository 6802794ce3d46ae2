#include "EventsTableModel.h"

#include "LogHistory.h"

#include "settings/AppSettings.h"
#include "settings/LanguageTable.h"

#include <QDateTime>

#include <set>

EventsTableModel::EventsTableModel(const LogHistory *history, const QStringList &texts, QObject *parent)
    : QAbstractTableModel(parent), m_history(history), m_texts(texts)
{
}

bool EventsTableModel::passes(const Key &key) const
{
    return (m_disk < 0 || key.disk == m_disk) && (m_level == 0 || key.level == m_level);
}

void EventsTableModel::historyGrew()
{
    const qsizetype before = m_keys.size();
    QList<qsizetype> added;
    for (qsizetype i = before; i < m_history->eventCount(); ++i) {
        const Key key{m_history->eventField(i, 2).toInt(), m_history->eventField(i, 4).toInt()};
        m_keys.append(key);
        if (passes(key))
            added.append(i);
    }
    if (added.isEmpty())
        return;
    beginInsertRows(QModelIndex(), int(m_shown.size()), int(m_shown.size() + added.size() - 1));
    m_shown += added;
    endInsertRows();
}

void EventsTableModel::historyReset()
{
    beginResetModel();
    m_keys.clear();
    m_shown.clear();
    endResetModel();
    historyGrew();
}

void EventsTableModel::setFilter(int disk, int level)
{
    beginResetModel();
    m_disk = disk;
    m_level = level;
    m_shown.clear();
    for (qsizetype i = 0; i < m_keys.size(); ++i) {
        if (passes(m_keys.at(i)))
            m_shown.append(i);
    }
    endResetModel();
}

void EventsTableModel::setTexts(const QStringList &texts)
{
    m_texts = texts;
    emit headerDataChanged(Qt::Horizontal, 0, ColumnCount - 1);
    if (!m_shown.isEmpty())
        emit dataChanged(index(0, 0), index(int(m_shown.size()) - 1, ColumnCount - 1));
}

QList<int> EventsTableModel::disks() const
{
    std::set<int> seen;
    for (const Key &key : m_keys)
        seen.insert(key.disk);
    return QList<int>(seen.cbegin(), seen.cend());
}

int EventsTableModel::rowCount(const QModelIndex &parent) const
{
    return parent.isValid() ? 0 : int(m_shown.size());
}

int EventsTableModel::columnCount(const QModelIndex &parent) const
{
    return parent.isValid() ? 0 : ColumnCount;
}

QString EventsTableModel::cellText(const QStringList &fields, int column) const
{
    switch (column) {
    case DateColumn:
    case TimeColumn: {
        // A damaged stamp is shown whole, as the file has it, rather than hidden.
        const QDateTime when = LogHistory::stampTime(fields.value(0));
        if (!when.isValid())
            return column == DateColumn ? fields.value(0) : QString();
        return column == DateColumn ? when.date().toString(Qt::ISODate) : when.time().toString(Qt::ISODate);
    }
    case DiskColumn:
        return fields.value(2);
    case SerialColumn:
        return fields.value(3);
    case LevelColumn: {
        const int level = fields.value(4).toInt();
        return level == 2 || level == 3 ? m_texts.value(Lang::LevelBase + level) : fields.value(4);
    }
    case HealthColumn:
        return fields.value(5);
    case TemperatureColumn: {
        const QString first = fields.value(6).split(QStringLiteral("~;")).value(0).trimmed();
        const int celsius = first.toInt();
        if (celsius <= 0)
            return first;
        const AppSettings &settings = appSettings();
        return QStringLiteral("%1 %2").arg(settings.displayTemperature(celsius))
            .arg(m_texts.value(Lang::UnitCelsius + (settings.temp_celsius ? 1 : 0)));
    }
    default:
        return QString();
    }
}

QVariant EventsTableModel::data(const QModelIndex &index, int role) const
{
    if (!index.isValid() || index.row() >= m_shown.size() || index.column() >= ColumnCount)
        return {};
    if (role == Qt::TextAlignmentRole) {
        const bool number = index.column() == DiskColumn || index.column() == HealthColumn
            || index.column() == TemperatureColumn;
        return int((number ? Qt::AlignRight : Qt::AlignLeft) | Qt::AlignVCenter);
    }
    if (role != Qt::DisplayRole)
        return {};
    return cellText(m_history->eventFields(m_shown.at(index.row())), index.column());
}

QVariant EventsTableModel::headerData(int section, Qt::Orientation orientation, int role) const
{
    if (orientation != Qt::Horizontal || role != Qt::DisplayRole)
        return QAbstractTableModel::headerData(section, orientation, role);
    static constexpr int entries[ColumnCount] = {Lang::DateColumn,   Lang::TimeColumn,  Lang::DiskLabel,
                                                 Lang::SerialColumn, Lang::LevelColumn, Lang::HealthBar,
                                                 Lang::TemperatureColumn};
    return section >= 0 && section < ColumnCount ? m_texts.value(entries[section]) : QVariant();
}
