#pragma once

#include <QByteArray>
#include <QString>

/// Appends one line to a file with a single write, so that a reader never sees two lines glued
/// together: a line cut short by a full disk or a file size limit ends where the next one starts
/// on a line of its own.
namespace LineAppender {

/// What became of one append.
struct Result
{
    bool written = false;
    /// The file now ends inside a line (a write was cut short), as far as is known.
    bool endsMidLine = false;
    /// Why the line is not (wholly) in the file, naming the file; empty when it is.
    QString error;
};

/// Appends \a line (which ends in "\n") to \a path, creating the file, after refusing anything
/// that is not a regular file. The file's last byte tells whether an earlier line was cut short;
/// when it cannot be read, \a endedMidLine (what the caller remembers) stands in for it.
/// Ignores SIGXFSZ for the whole process, once, so that the file size limit fails the write
/// instead of killing the process.
Result append(const QString &path, const QByteArray &line, bool endedMidLine);

} // namespace LineAppender
