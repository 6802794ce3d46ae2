#pragma once

#include <QDate>
#include <QString>

/// A made-up event log in the writer's own format, for the demo pictures, the benchmark and
/// the tests: disks polled around the clock, one session a day, temperatures that follow the
/// day, a disk that turns to WARNING near the end and short ALARMs on some days.
namespace GeneratedLog {

/// What to write.
struct Options
{
    QDate from;             ///< first day
    QDate to;               ///< last day
    int disks = 4;          ///< disks polled, indexes from 0
    int pollSeconds = 60;   ///< time between two polls
    int attributes = 20;    ///< attribute values per record
};

/// Writes the history to \a path, replacing the file; false, with the reason in \a error, when
/// it could not be written whole.
bool write(const QString &path, const Options &options, QString *error = nullptr);

/// The serial the generated history gives disk \a disk.
QString serial(int disk);

} // namespace GeneratedLog
