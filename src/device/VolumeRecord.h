#pragma once

#include <QString>
#include <QtGlobal>

/// One fixed volume found by the volume enumeration.
struct VolumeRecord
{
    qint32 index = 0;                      ///< ordinal among all enumerated volumes, fixed or not
    QString volumeName;                    ///< volume name as the platform enumerates it
    QString rootPath;                      ///< mount root, or a numbered root "N:\" when it has none
    QString label;                         ///< volume label
    QString fileSystem = QStringLiteral("Unknown"); ///< file system name
    QString serialText;                    ///< "XXXX-XXXX"
    qint32 diskNumber = -1;                ///< device number of the disk holding the volume
    quint64 totalBytes = 0;                ///< total size
    quint64 freeBytes = 0;                 ///< free space
};
