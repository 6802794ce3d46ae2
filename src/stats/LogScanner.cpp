#include "LogScanner.h"

#include "ProgressTick.h"

#include <QElapsedTimer>
#include <QFile>
#include <QFileInfo>

#include <array>
#include <cstring>

namespace {

constexpr qsizetype kChunkBytes = qsizetype(1) << 20;
constexpr int kFlushMs = 100;
// The first seven fields are all the reader looks at.
constexpr int kSeparatorsLooked = 6;
constexpr int kSerialCacheSize = 32;

struct Span
{
    const char *data = nullptr;
    qsizetype size = 0;

    bool equals(const char *text, qsizetype length) const
    {
        return size == length && std::memcmp(data, text, size_t(length)) == 0;
    }
    QString text() const { return QString::fromLatin1(data, size); }
};

bool allDigits(const char *p, qsizetype n)
{
    for (qsizetype i = 0; i < n; ++i) {
        if (p[i] < '0' || p[i] > '9')
            return false;
    }
    return true;
}

int digitsValue(const char *p, qsizetype n)
{
    int value = 0;
    for (qsizetype i = 0; i < n; ++i)
        value = value * 10 + (p[i] - '0');
    return value;
}

// The toolkit's reading of a decimal number (blanks, a sign, 0 for anything else); plain
// digits, by far the most common text, are read without building a string.
int toInt(Span s)
{
    if (s.size > 0 && s.size <= 9 && allDigits(s.data, s.size))
        return digitsValue(s.data, s.size);
    return s.text().toInt();
}

// True when \a s is how the number \a value is written by the writer: no sign, no blank, no
// leading zero. Only such fields can be given back from the compact sample.
bool isPlainNumber(Span s, qint64 value)
{
    if (s.size == 0 || s.size > 9 || !allDigits(s.data, s.size) || (s.size > 1 && s.data[0] == '0'))
        return false;
    return digitsValue(s.data, s.size) == value;
}

qsizetype findSeparator(const char *line, qsizetype from, qsizetype length)
{
    while (from + 3 <= length) {
        const void *hit = std::memchr(line + from, ']', size_t(length - from - 2));
        if (!hit)
            return -1;
        const qsizetype at = static_cast<const char *>(hit) - line;
        if (line[at + 1] == '!' && line[at + 2] == '[')
            return at;
        from = at + 1;
    }
    return -1;
}

struct ScanState
{
    LogBatch batch;
    ProgressTick tick;
    QHash<QByteArray, quint16> serialIds;
    std::array<QByteArray, kSerialCacheSize> cachedSerial;
    std::array<quint16, kSerialCacheSize> cachedId{};
    std::array<bool, kSerialCacheSize> cached{};
    // The day of the last record and whether it was in range: a log holds thousands of
    // records a day, all with the same date text.
    char lastDay[8] = {};
    bool lastDayKnown = false;
    bool lastDayInRange = false;
    int rowsInBatch = 0;
};

// The date of a stamp by the record's own rule: the first eight characters as year, month
// and day numbers; a damaged stamp gives an invalid date, which the range test then judges.
QDate stampDate(Span stamp)
{
    if (stamp.size >= 8 && allDigits(stamp.data, 8))
        return QDate(digitsValue(stamp.data, 4), digitsValue(stamp.data + 4, 2), digitsValue(stamp.data + 6, 2));
    const QString day = stamp.text().left(8);
    return QDate(day.mid(0, 4).toInt(), day.mid(4, 2).toInt(), day.mid(6, 2).toInt());
}

quint16 serialId(LogBatch &batch, QHash<QByteArray, quint16> &ids, Span serial, qint32 disk)
{
    const QByteArray key = QByteArray::fromRawData(serial.data, serial.size);
    const auto found = ids.constFind(key);
    if (found != ids.constEnd())
        return found.value();
    // The legend has room for this many serials; the rest share the last number and keep
    // their texts with the row.
    if (ids.size() >= 0xFFFF)
        return 0xFFFF;
    const auto id = quint16(ids.size());
    ids.insert(QByteArray(serial.data, serial.size), id);
    batch.newSerials.append(serial.text());
    batch.newSerialDisks.append(disk);
    return id;
}

void addSample(ScanState &state, Span stamp, Span disk, Span temperature, int celsius, Span serial);

// One line of the file, by the reader's rules: a SMART record in range gives its rows.
void scanLine(ScanState &state, const char *line, qsizetype length, QDate from, QDate to)
{
    qsizetype separators[kSeparatorsLooked];
    int count = 0;
    for (qsizetype at = findSeparator(line, 0, length); at >= 0 && count < kSeparatorsLooked;
         at = count < kSeparatorsLooked ? findSeparator(line, at + 3, length) : -1)
        separators[count++] = at;
    if (count < 6)
        return;
    // Fields 0 to 5; field 6 is only read up to its first item.
    const auto part = [&](int k) {
        const qsizetype begin = k == 0 ? 0 : separators[k - 1] + 3;
        return Span{line + begin, separators[k] - begin};
    };
    if (!part(1).equals("SMART", 5))
        return;
    const int tick = state.tick.count();
    if (tick >= 0)
        state.batch.progress = tick;

    const Span stamp = part(0);
    if (!state.lastDayKnown || stamp.size < 8 || std::memcmp(state.lastDay, stamp.data, 8) != 0) {
        const QDate day = stampDate(stamp);
        state.lastDayInRange = day >= from && day <= to;
        state.lastDayKnown = stamp.size >= 8;
        if (state.lastDayKnown)
            std::memcpy(state.lastDay, stamp.data, 8);
    }
    if (!state.lastDayInRange)
        return;

    LogBatch &batch = state.batch;
    if (toInt(part(4)) > 1) {
        batch.eventBytes.append(line, length);
        batch.eventEnds.append(qint32(batch.eventBytes.size()));
        ++state.rowsInBatch;
    }
    // The first item of field 6 ends at its first "~;", or where the field ends: at a
    // seventh "]![" or at the end of the line. A year of lines is not scanned twice for them.
    const char *values = line + separators[5] + 3;
    const qsizetype valuesSize = length - (separators[5] + 3);
    Span first{values, valuesSize};
    for (qsizetype k = 0; k + 1 < valuesSize; ++k) {
        if ((values[k] == '~' && values[k + 1] == ';')
            || (values[k] == ']' && k + 2 < valuesSize && values[k + 1] == '!' && values[k + 2] == '[')) {
            first.size = k;
            break;
        }
    }
    const int temperature = toInt(first);
    if (temperature > 0)
        addSample(state, stamp, part(2), first, temperature, part(3));
}

void addSample(ScanState &state, Span stamp, Span disk, Span temperature, int celsius, Span serial)
{
    TemperatureSample sample;
    const bool plainStamp = stamp.size == 14 && allDigits(stamp.data, 14);
    if (plainStamp)
        sample.stamp = quint64(digitsValue(stamp.data, 7)) * 10000000ULL + quint64(digitsValue(stamp.data + 7, 7));
    sample.disk = toInt(disk);
    sample.temperature = quint16(qMin(celsius, 0xFFFF));
    // Most records come from a handful of disks: the serial of the disk's last sample is
    // nearly always the serial of this one.
    const int slot = sample.disk >= 0 && sample.disk < kSerialCacheSize ? sample.disk : 0;
    if (state.cached[slot] && state.cachedSerial[slot].size() == serial.size
        && std::memcmp(state.cachedSerial[slot].constData(), serial.data, size_t(serial.size)) == 0) {
        sample.serial = state.cachedId[slot];
    } else {
        sample.serial = serialId(state.batch, state.serialIds, serial, sample.disk);
        state.cachedSerial[slot] = QByteArray(serial.data, serial.size);
        state.cachedId[slot] = sample.serial;
        state.cached[slot] = true;
    }
    LogBatch &batch = state.batch;
    if (!plainStamp || !isPlainNumber(disk, sample.disk) || !isPlainNumber(temperature, celsius)
        || celsius > 0xFFFF || sample.serial == 0xFFFF) {
        batch.oddTemperatureRows.insert(qint32(batch.temperatures.size()),
                                        {stamp.text(), disk.text(), temperature.text(), serial.text()});
    }
    batch.temperatures.append(sample);
    ++state.rowsInBatch;
}

// Hands every line of \a file, line end included, to \a take until the end it finds or \a stop
// (checked before each line). The last line may lack its line end: a record cut short, or one
// being written. A line longer than the buffer grows it.
template<typename Take>
void forEachLine(QFile &file, const std::atomic<bool> &stop, Take take)
{
    QByteArray buffer(kChunkBytes, Qt::Uninitialized);
    qsizetype filled = 0;
    bool atEnd = false;
    while (!atEnd && !stop.load(std::memory_order_relaxed)) {
        if (filled == buffer.size())
            buffer.resize(buffer.size() * 2);
        const qint64 got = file.read(buffer.data() + filled, buffer.size() - filled);
        atEnd = got <= 0;
        filled += qMax<qint64>(got, 0);
        const char *data = buffer.constData();
        qsizetype start = 0;
        while (start < filled && !stop.load(std::memory_order_relaxed)) {
            const void *newline = std::memchr(data + start, '\n', size_t(filled - start));
            if (!newline && !atEnd)
                break;
            const qsizetype end = newline ? static_cast<const char *>(newline) - data + 1 : filled;
            take(data + start, end - start);
            start = end;
        }
        if (start > 0) {
            std::memmove(buffer.data(), data + start, size_t(filled - start));
            filled -= start;
        }
    }
}

} // namespace

LogScanner::LogScanner(const QString &path, QDate from, QDate to) : m_path(path), m_from(from), m_to(to) {}

bool LogScanner::run(const std::atomic<bool> &stop, const Sink &sink)
{
    m_error.clear();
    ScanState state;
    // Each batch gets its room at once: growing it step by step would have the system hand
    // out and clear fresh pages again and again. A batch cut short by the clock gives back
    // what it did not use, as it may be kept for long.
    const auto fresh = [&] {
        state.batch = LogBatch();
        state.batch.runId = m_runId;
        state.batch.temperatures.reserve(m_batchRows);
        state.rowsInBatch = 0;
    };
    const auto flush = [&] {
        LogBatch out = std::move(state.batch);
        if (out.temperatures.size() < out.temperatures.capacity() / 2)
            out.temperatures.squeeze();
        fresh();
        sink(std::move(out));
    };
    fresh();
    QFile file(m_path);
    const QFileInfo info(m_path);
    // A FIFO or a device would block or never end: the log is a plain file or nothing.
    if (info.exists() && !info.isFile()) {
        m_error = QStringLiteral("%1 is not a regular file").arg(m_path);
        flush();
        return false;
    }
    if (!file.open(QIODevice::ReadOnly)) {
        m_error = QStringLiteral("%1: %2").arg(m_path, file.errorString());
        flush();
        return false;
    }
    QElapsedTimer sinceFlush;
    sinceFlush.start();
    int linesSinceClock = 0;
    forEachLine(file, stop, [&](const char *line, qsizetype length) {
        scanLine(state, line, length, m_from, m_to);
        if (state.rowsInBatch >= m_batchRows
            || (++linesSinceClock >= 1024 && (linesSinceClock = 0, sinceFlush.hasExpired(kFlushMs)))) {
            flush();
            sinceFlush.restart();
        }
    });
    flush();
    return true;
}
