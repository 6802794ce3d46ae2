#include "SmartTableModel.h"

#include "HealthRules.h"
#include "device/AttributeCatalogue.h"
#include "settings/LanguageTable.h"

#include <algorithm>

SmartTableModel::SmartTableModel(const QStringList &texts, QObject *parent)
    : QAbstractTableModel(parent), m_texts(texts)
{
}

void SmartTableModel::setDisk(const DiskRecord &disk)
{
    // The evaluation skips a disk it does not monitor or could not read; its rows show no verdict.
    const bool evaluated = disk.monitored && disk.smartState > 0;
    const bool sameRows = std::ranges::equal(m_rows, disk.attributes, {}, &SmartAttribute::id, &SmartAttribute::id);
    if (!sameRows) {
        beginResetModel();
        m_rows = disk.attributes;
        m_evaluated = evaluated;
        endResetModel();
        return;
    }
    m_rows = disk.attributes;
    m_evaluated = evaluated;
    if (!m_rows.isEmpty())
        emit dataChanged(index(0, 0), index(rowCount() - 1, ColumnCount - 1));
}

void SmartTableModel::setTexts(const QStringList &texts)
{
    m_texts = texts;
    emit headerDataChanged(Qt::Horizontal, 0, ColumnCount - 1);
    if (!m_rows.isEmpty())
        emit dataChanged(index(0, StatusColumn), index(rowCount() - 1, StatusColumn), {Qt::DisplayRole});
}

int SmartTableModel::rowCount(const QModelIndex &parent) const
{
    return parent.isValid() ? 0 : int(m_rows.size());
}

int SmartTableModel::columnCount(const QModelIndex &parent) const
{
    return parent.isValid() ? 0 : ColumnCount;
}

QVariant SmartTableModel::data(const QModelIndex &index, int role) const
{
    if (!index.isValid() || index.parent().isValid() || index.row() >= m_rows.size() || index.column() >= ColumnCount)
        return {};
    const SmartAttribute &attribute = m_rows.at(index.row());
    switch (role) {
    case Qt::DisplayRole:
        return cellText(attribute, index.column());
    case Qt::TextAlignmentRole:
        if (index.column() == NameColumn || index.column() == StatusColumn)
            return {};
        return int(Qt::AlignRight | Qt::AlignVCenter);
    case CategoryRole:
        return int(AttributeCatalogue::category(attribute));
    case LevelRole:
        return int(rowLevel(attribute));
    case IconNameRole:
        return AttributeCatalogue::iconName(AttributeCatalogue::category(attribute));
    case DescriptionRole:
        return attribute.description;
    case IdRole:
        return attribute.id;
    default:
        return {};
    }
}

QVariant SmartTableModel::headerData(int section, Qt::Orientation orientation, int role) const
{
    if (orientation != Qt::Horizontal || role != Qt::DisplayRole)
        return QAbstractTableModel::headerData(section, orientation, role);
    if (section < 0 || section >= ColumnCount)
        return {};
    return m_texts.value(Lang::AttrIdColumn + section);
}

HealthState SmartTableModel::rowLevel(const SmartAttribute &attribute) const
{
    // Performance-related rows take no part in the disk level, so they get no verdict of their own.
    if (!m_evaluated || attribute.performance != 0)
        return HealthUnknown;
    return HealthRules::attributeLevel(attribute);
}

QString SmartTableModel::cellText(const SmartAttribute &attribute, int column) const
{
    switch (column) {
    case IdColumn:
        return QString::number(attribute.id);
    case NameColumn:
        return attribute.name;
    case ValueColumn:
        return QString::number(attribute.current);
    case WorstColumn:
        return QString::number(attribute.worst);
    case ThresholdColumn:
        return QString::number(attribute.threshold);
    case RawColumn:
        return QString::number(attribute.raw);
    case StatusColumn:
        return m_texts.value(Lang::LevelBase + int(rowLevel(attribute)));
    default:
        return QString();
    }
}
