#include "EventLogWriter.h"

#include "EventLogRecord.h"
#include "LineAppender.h"
#include "device/DiskRecord.h"

#include <QDateTime>
#include <QDir>
#include <QStringEncoder>

#include <optional>

EventLogWriter::EventLogWriter(const QString &path)
{
    setPath(path);
}

void EventLogWriter::setPath(const QString &path)
{
    m_path = QDir::toNativeSeparators(path);
    m_endsMidLine = false;
}

QString EventLogWriter::path() const
{
    return m_path;
}

QString EventLogWriter::lastError() const
{
    return m_lastError;
}

bool EventLogWriter::writeLog(const QString &body)
{
    if (m_path.isEmpty()) {
        m_lastError = QStringLiteral("No event log file is set");
        return false;
    }
    const EventLogRecord record{QDateTime::currentDateTime(), body};
    // Other programs read this file with the machine's own code page, not as UTF-8.
    QStringEncoder toLocal(QStringConverter::System);
    const QByteArray bytes = toLocal.encode(record.toLine());
    const LineAppender::Result result = LineAppender::append(m_path, bytes, m_endsMidLine);
    m_endsMidLine = result.endsMidLine;
    m_lastError = result.error;
    return result.written;
}

EventLogWriter::DiskSnapshot EventLogWriter::emptySnapshot(const DiskRecord &disk)
{
    DiskSnapshot snapshot;
    snapshot.attributes.reserve(disk.attributes.size());
    for (const SmartAttribute &a : disk.attributes)
        snapshot.attributes.append({a.id, a.threshold, 0});
    return snapshot;
}

QStringList EventLogWriter::compareValues(const QList<DiskRecord> &disks)
{
    // The statistics need one sample per poll, so every monitored disk is written whether or
    // not anything changed; the index stays the list position, leaving gaps for idle disks.
    // The caller tells the user once per cause, so the batch keeps its first failure.
    std::optional<QString> firstError;
    for (qsizetype i = 0; i < disks.size(); ++i) {
        if (!disks.at(i).monitored)
            continue;
        if (!writeLog(EventLogRecord::smartBody(int(i), disks.at(i))) && !firstError)
            firstError = m_lastError;
    }
    if (firstError)
        m_lastError = *firstError;

    if (m_snapshots.size() != disks.size()) {
        m_snapshots.clear();
        m_snapshots.reserve(disks.size());
        for (const DiskRecord &disk : disks)
            m_snapshots.append(emptySnapshot(disk));
    }

    QStringList changes;
    changes.reserve(disks.size());
    for (qsizetype i = 0; i < disks.size(); ++i) {
        const DiskRecord &disk = disks.at(i);
        DiskSnapshot &snapshot = m_snapshots[i];
        // A disk re-read with another attribute table starts over rather than compare
        // values of different attributes.
        if (snapshot.attributes.size() != disk.attributes.size())
            snapshot = emptySnapshot(disk);

        QString changed;
        snapshot.temperature = disk.temperature;
        for (qsizetype k = 0; k < disk.attributes.size(); ++k) {
            const quint32 current = disk.attributes.at(k).current;
            AttributeSnapshot &kept = snapshot.attributes[k];
            if (kept.current != current) {
                kept.current = current;
                changed += QStringLiteral("%1=%2,").arg(kept.id).arg(current);
            }
        }
        changes.append(changed);
    }
    return changes;
}
