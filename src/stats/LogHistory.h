#pragma once

#include "LogBatch.h"

#include <QDateTime>
#include <QList>
#include <QString>
#include <QStringList>

/// What one reading of the event log gave, gathered batch by batch: the warning and alarm
/// records, the temperature samples and the legend of disks, with the rows' texts as the
/// file held them. Batches are kept as they came, so a year of history is never copied.
class LogHistory
{
public:
    /// A disk of the graph's legend: the first sample of each serial.
    struct LegendEntry
    {
        int disk = 0;   ///< the disk index of the serial's first sample
        QString serial; ///< as the file has it
    };
    /// One batch's temperature samples and where they start among all samples.
    struct SampleChunk
    {
        QList<TemperatureSample> samples;  ///< in file order
        QHash<qint32, QStringList> oddRows; ///< texts of the samples the compact form cannot give back
        qsizetype first = 0;                ///< position of the first sample among all
    };

    /// The date and time a record's stamp (yyyyMMddhhmmss, local time) names; invalid for a damaged stamp.
    static QDateTime stampTime(const QString &stamp);

    /// Forgets everything.
    void clear();
    /// Adds the rows of \a batch after those held.
    void append(const LogBatch &batch);

    /// Warning and alarm records held.
    qsizetype eventCount() const { return m_eventCount; }
    /// The fields of record \a i, split at "]![" (the last keeps the line end the file had).
    QStringList eventFields(qsizetype i) const;
    /// Field \a field of record \a i alone; empty when the record has fewer fields.
    QString eventField(qsizetype i, int field) const;

    /// Temperature samples held.
    qsizetype temperatureCount() const { return m_temperatureCount; }
    /// Sample \a i as texts: stamp, disk index, temperature, serial.
    QStringList temperatureRow(qsizetype i) const;
    /// The samples, batch by batch, in file order.
    const QList<SampleChunk> &sampleChunks() const { return m_samples; }
    /// The serial of a sample's serial number.
    QString serial(quint16 id) const { return m_serials.value(id); }

    /// One entry per serial, in the order the serials were first seen.
    const QList<LegendEntry> &legend() const { return m_legend; }
    /// Changes whenever rows are added or dropped, so views know their copies are stale.
    quint64 generation() const { return m_generation; }

private:
    QByteArrayView eventLine(qsizetype i) const;

    struct EventChunk
    {
        QByteArray bytes;
        QList<qint32> ends;
        qsizetype first = 0;
    };

    QList<EventChunk> m_events;
    QList<SampleChunk> m_samples;
    QStringList m_serials;
    QList<LegendEntry> m_legend;
    qsizetype m_eventCount = 0;
    qsizetype m_temperatureCount = 0;
    quint64 m_generation = 0;
};
