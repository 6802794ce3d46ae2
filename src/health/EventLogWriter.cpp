#include "EventLogWriter.h"

#include "EventLogRecord.h"
#include "device/DiskRecord.h"

#include <QDateTime>
#include <QDir>
#include <QFile>
#include <QStringEncoder>

EventLogWriter::EventLogWriter(const QString &path)
{
    setPath(path);
}

void EventLogWriter::setPath(const QString &path)
{
    m_path = QDir::toNativeSeparators(path);
}

QString EventLogWriter::path() const
{
    return m_path;
}

bool EventLogWriter::writeLog(const QString &body) const
{
    QFile file(m_path);
    if (m_path.isEmpty() || !file.open(QIODevice::WriteOnly | QIODevice::Append)) {
        m_lastError = file.errorString();
        return false;
    }

    const EventLogRecord record{QDateTime::currentDateTime(), body};
    // Other programs read this file with the machine's own code page, not as UTF-8.
    QStringEncoder toLocal(QStringConverter::System);
    const QByteArray bytes = toLocal.encode(record.toLine());
    const bool written = file.write(bytes) == bytes.size();
    m_lastError = written ? QString() : file.errorString();
    file.close();
    return written;
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
    for (qsizetype i = 0; i < disks.size(); ++i) {
        if (disks.at(i).monitored)
            writeLog(EventLogRecord::smartBody(int(i), disks.at(i)));
    }

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
