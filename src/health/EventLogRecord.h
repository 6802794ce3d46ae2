#pragma once

#include <QDateTime>
#include <QString>

struct DiskRecord;

/// One line of the event log file: a local time stamp and a body of "]!["-separated fields.
/// A SMART body reads SMART]![index]![serial]![level]![health]![temp~;v1~;v2...
struct EventLogRecord
{
    QDateTime stamp;
    QString body;

    /// Separates the items of a SMART record's value list.
    static inline const QString valueSeparator = QStringLiteral("~;");

    /// Body written once the main window is up.
    static QString sessionStartedBody();
    /// Body written after the event loop has returned.
    static QString sessionFinishedBody();
    /// SMART body of disk \a diskIndex: serial (control characters as spaces), level,
    /// percentage, temperature in degrees Celsius and the current value of every attribute in
    /// the disk's order (ids are not written).
    static QString smartBody(int diskIndex, const DiskRecord &disk);

    /// The file line: yyyyMMdd and hhmmss run together, the separator, the body, a line feed.
    QString toLine() const;
};
