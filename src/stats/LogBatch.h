#pragma once

#include <QByteArray>
#include <QHash>
#include <QList>
#include <QMetaType>
#include <QStringList>
#include <QtGlobal>

/// One temperature sample of the event log, kept to 16 bytes: a year of four disks is two
/// million of them. The texts of the row come back through LogHistory::temperatureRow().
struct TemperatureSample
{
    /// The stamp read as the number yyyyMMddhhmmss; 0 when the stamp is not 14 digits.
    quint64 stamp = 0;
    /// The disk index as the record gives it (field 2 read as a decimal number, 0 when it is none).
    qint32 disk = 0;
    /// Degrees Celsius, above 0; larger values than 65535 are kept as 65535.
    quint16 temperature = 0;
    /// Position of the serial in the reading's serial table (first seen, first numbered).
    quint16 serial = 0;
};

/// The rows one stretch of the event log gave, in file order, handed from the reader to its
/// user in one piece.
struct LogBatch
{
    /// The reading this batch belongs to (load_log::runId() when it was read).
    quint64 runId = 0;
    /// The warning and alarm records, as the file held them (line end included), one after the other.
    QByteArray eventBytes;
    /// Where each record of eventBytes ends.
    QList<qint32> eventEnds;
    /// The temperature samples.
    QList<TemperatureSample> temperatures;
    /// Serials seen for the first time in this batch, in the order of their numbers.
    QStringList newSerials;
    /// The disk index of each new serial's first sample (the legend's entry).
    QList<qint32> newSerialDisks;
    /// The texts of samples whose fields the compact form does not give back as written, by
    /// position in temperatures: stamp, disk index, temperature, serial.
    QHash<qint32, QStringList> oddTemperatureRows;
    /// The last progress tick reached in this batch, or -1 when none was.
    int progress = -1;

    /// No rows.
    bool isEmpty() const { return eventEnds.isEmpty() && temperatures.isEmpty(); }
};

Q_DECLARE_METATYPE(LogBatch)
