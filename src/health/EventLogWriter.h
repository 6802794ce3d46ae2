#pragma once

#include <QList>
#include <QString>
#include <QStringList>
#include <QtGlobal>

struct DiskRecord;

/// Appends lines to the event log file. The file is opened and closed for every line, so
/// the statistics reader can read it at any time; nothing is held open between lines.
class EventLogWriter
{
public:
    /// \a path names the event log file; it is used in the platform's native form.
    explicit EventLogWriter(const QString &path = QString());

    /// Changes the file the next lines go to.
    void setPath(const QString &path);
    /// The file, with native separators.
    QString path() const;

    /// Stamps \a body with the current local time and appends it in the local 8-bit encoding.
    /// Returns false when the file could not be opened or written; the line is then lost.
    bool writeLog(const QString &body) const;

    /// Writes one SMART record per monitored disk, then brings the per-disk snapshot of the
    /// last written values up to date. Returns, per disk, the changes found as "id=value,".
    QStringList compareValues(const QList<DiskRecord> &disks);
    /// Why the last write failed; empty after a success.
    QString lastError() const { return m_lastError; }

private:
    struct AttributeSnapshot
    {
        quint32 id = 0;
        quint32 threshold = 0;
        quint32 current = 0;
    };
    struct DiskSnapshot
    {
        qint32 temperature = 0;
        QList<AttributeSnapshot> attributes;
    };

    static DiskSnapshot emptySnapshot(const DiskRecord &disk);

    QString m_path;
    mutable QString m_lastError;
    QList<DiskSnapshot> m_snapshots;
};
