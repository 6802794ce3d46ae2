#pragma once

#include "LogBatch.h"

#include <QDate>
#include <QString>

#include <atomic>
#include <functional>

/// Reads the event log back: the SMART records dated from \a from to \a to (both included)
/// give their warning and alarm records and their temperature samples; everything else is
/// skipped without a word. Works on the file's bytes (read as Latin-1, one byte a character),
/// so a year of history reads in a fraction of a second.
class LogScanner
{
public:
    /// Hands over one batch; called on the reading thread.
    using Sink = std::function<void(LogBatch &&batch)>;

    /// A reader of \a path for the days \a from to \a to, both included.
    LogScanner(const QString &path, QDate from, QDate to);

    /// Rows per batch at most; batches also go out every 100 ms, so a page fills as it reads.
    void setBatchRows(int rows) { m_batchRows = rows; }
    /// Stamps every batch with \a runId.
    void setRunId(quint64 runId) { m_runId = runId; }

    /// Reads the file to the end it finds, or until \a stop is set (after the line in hand),
    /// handing rows to \a sink in file order; the last batch may be empty. False, with the
    /// reason in error(), when the file could not be opened.
    bool run(const std::atomic<bool> &stop, const Sink &sink);
    /// Why the file could not be read; empty after a read.
    QString error() const { return m_error; }

private:
    QString m_path;
    QDate m_from;
    QDate m_to;
    int m_batchRows = 65536;
    quint64 m_runId = 0;
    QString m_error;
};
