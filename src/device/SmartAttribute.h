#pragma once

#include <QString>
#include <QtGlobal>

/// One row of a disk's SMART attribute table.
struct SmartAttribute
{
    quint32 id = 0;          ///< attribute ID (entry byte 0)
    QString name;            ///< short name from the catalogue
    QString description;     ///< rich-text description from the catalogue
    qint64 raw = 0;          ///< decoded raw value
    quint32 current = 0;     ///< normalised value (entry byte 3)
    quint32 worst = 0;       ///< worst value (entry byte 4)
    quint32 threshold = 0;   ///< threshold from the same slot of the thresholds sector
    quint32 flags = 0;       ///< 16-bit status flags (entry bytes 1-2)
    quint32 advisory = 0;    ///< 1 when the pre-failure bit (flags bit 0) is clear
    quint32 performance = 0; ///< 1 when the performance bit (flags bit 2) is set
};
