#pragma once

#include "SmartAttribute.h"
#include "VolumeRecord.h"

#include <QList>
#include <QString>
#include <QtGlobal>

/// Everything known about one fixed physical disk. Copied by value for snapshots.
struct DiskRecord
{
    qint32 diskNumber = -1;        ///< device number from the platform; volumes attach by it
    QString devicePath;            ///< path the disk is opened with
    quint32 mediaType = 0;         ///< 12 = fixed media; only those are kept
    quint64 cylinders = 0;
    quint32 tracksPerCylinder = 0;
    quint32 sectorsPerTrack = 0;
    quint32 bytesPerSector = 0;
    qint32 smartSupported = 0;     ///< IDENTIFY word 82 bit 0; -1 when word 83 is not valid
    qint32 smartEnabled = 0;       ///< IDENTIFY word 85 bit 0; unknown counts as enabled
    qint32 smartState = -1;        ///< -1 never read, 1 data and thresholds read, 0 no rows
    QString smartVersion;
    QString smartRevision;
    QString model;
    QString serial;
    QString firmware;
    quint64 capacityBytes = 0;
    qint32 ataMajorVersion = 0;    ///< -1 unknown, -3 marks an ATA-3 draft revision
    QString ataStandardText;
    bool hasTemperature = false;
    qint32 temperature = 0;        ///< degrees Celsius from attribute 194
    qint32 powerOnUnit = 0;        ///< 1 hours, 2 minutes, 3 half-minutes, 4 seconds; 0 not chosen
    bool powerOnUnitFixed = false;
    quint64 powerOnRaw = 0;
    quint64 powerOnRawAtStart = 0;
    qint32 healthState = 0;        ///< 1 OK, 2 WARNING, 3 ALARM; 0 before the first evaluation
    qint32 healthValue = 0;        ///< health percentage
    qint32 attributeCount = 0;
    bool monitored = true;
    QList<SmartAttribute> attributes;
    QList<VolumeRecord> volumes;
    QString note;                  ///< status paragraph written by the health evaluation
    quint32 offlineStatus = 0;     ///< SMART data byte 362
    quint32 offlineCapability = 0; ///< SMART data byte 367
    quint32 smartCapability = 0;   ///< SMART data bytes 368-369
};
