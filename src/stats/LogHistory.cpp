#include "LogHistory.h"

#include <algorithm>

namespace {

// The chunk holding row \a i: the last whose first row is not after it.
template<typename Chunks>
auto chunkOf(const Chunks &chunks, qsizetype i)
{
    auto after = std::upper_bound(chunks.cbegin(), chunks.cend(), i,
                                  [](qsizetype row, const auto &chunk) { return row < chunk.first; });
    return after - 1;
}

} // namespace

QDateTime LogHistory::stampTime(const QString &stamp)
{
    return QDateTime::fromString(stamp, QStringLiteral("yyyyMMddhhmmss"));
}

void LogHistory::clear()
{
    m_events.clear();
    m_samples.clear();
    m_serials.clear();
    m_legend.clear();
    m_eventCount = 0;
    m_temperatureCount = 0;
    ++m_generation;
}

void LogHistory::append(const LogBatch &batch)
{
    if (!batch.eventEnds.isEmpty()) {
        m_events.append({batch.eventBytes, batch.eventEnds, m_eventCount});
        m_eventCount += batch.eventEnds.size();
    }
    if (!batch.temperatures.isEmpty()) {
        m_samples.append({batch.temperatures, batch.oddTemperatureRows, m_temperatureCount});
        m_temperatureCount += batch.temperatures.size();
    }
    for (qsizetype k = 0; k < batch.newSerials.size(); ++k) {
        m_serials.append(batch.newSerials.at(k));
        m_legend.append({batch.newSerialDisks.value(k), batch.newSerials.at(k)});
    }
    ++m_generation;
}

QByteArrayView LogHistory::eventLine(qsizetype i) const
{
    if (i < 0 || i >= m_eventCount)
        return {};
    const EventChunk &chunk = *chunkOf(m_events, i);
    const qsizetype k = i - chunk.first;
    const qint32 begin = k == 0 ? 0 : chunk.ends.at(k - 1);
    return QByteArrayView(chunk.bytes.constData() + begin, chunk.ends.at(k) - begin);
}

QStringList LogHistory::eventFields(qsizetype i) const
{
    if (i < 0 || i >= m_eventCount)
        return {};
    return QString::fromLatin1(eventLine(i)).split(QStringLiteral("]!["));
}

QString LogHistory::eventField(qsizetype i, int field) const
{
    const QByteArrayView line = eventLine(i);
    qsizetype begin = 0;
    for (int k = 0; k < field; ++k) {
        const qsizetype at = line.indexOf(QByteArrayView("]!["), begin);
        if (at < 0)
            return QString();
        begin = at + 3;
    }
    const qsizetype end = line.indexOf(QByteArrayView("]!["), begin);
    return QString::fromLatin1(line.sliced(begin, (end < 0 ? line.size() : end) - begin));
}

QStringList LogHistory::temperatureRow(qsizetype i) const
{
    if (i < 0 || i >= m_temperatureCount)
        return {};
    const SampleChunk &chunk = *chunkOf(m_samples, i);
    const auto k = qint32(i - chunk.first);
    const auto odd = chunk.oddRows.constFind(k);
    if (odd != chunk.oddRows.constEnd())
        return odd.value();
    const TemperatureSample &sample = chunk.samples.at(k);
    return {QStringLiteral("%1").arg(sample.stamp, 14, 10, QLatin1Char('0')), QString::number(sample.disk),
            QString::number(sample.temperature), m_serials.value(sample.serial)};
}
