#pragma once

#include <QList>
#include <QString>
#include <QStringList>
#include <QtGlobal>

struct DiskRecord;

/// Appends lines to the event log file. The file is opened and closed for every line, so
/// the statistics reader can read it at any time; nothing is held open between lines.
/// Anything but a regular file (a FIFO, a device, a link to nothing) is refused unopened.
class EventLogWriter
{
public:
    /// \a path names the event log file; it is used in the platform's native form.
    explicit EventLogWriter(const QString &path = QString());

    /// Changes the file the next lines go to.
    void setPath(const QString &path);
    /// The file, with native separators.
    QString path() const;

    /// Stamps \a body with the current local time and appends it in the local 8-bit encoding,
    /// with one write, on a line of its own. Returns false when the line could not be written
    /// (wholly); lastError() then says why.
    bool writeLog(const QString &body);
    /// Why the last write failed, naming the file; empty after a success.
    QString lastError() const;

    /// Writes one SMART record per monitored disk, then brings the per-disk snapshot of the
    /// last written values up to date. Returns, per disk, the changes found as "id=value,".
    /// lastError() is left at the first failure among the records (empty when all went in).
    QStringList compareValues(const QList<DiskRecord> &disks);

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
    QString m_lastError;
    // Our own last write was cut short: used when the file's last byte cannot be read.
    bool m_endsMidLine = false;
    QList<DiskSnapshot> m_snapshots;
};
