#pragma once

#include "LogBatch.h"

#include <QDate>
#include <QString>
#include <QThread>

#include <atomic>
#include <mutex>

/// The worker that reads the event log back for the statistics page. It hands its rows over
/// in batches, each stamped with the reading it belongs to: lineToAdd() says rows are waiting,
/// and the page takes them all with takeRows(), under a lock the race detector can see.
class load_log : public QThread
{
    Q_OBJECT
public:
    /// An idle reader with no file and no dates.
    explicit load_log(QObject *parent = nullptr);
    /// Stops a reading in progress and waits for it (it ends after the line in hand).
    ~load_log() override;

    /// Stops any reading in progress, waits for it, then reads \a path for the days \a from
    /// to \a to (both included). Returns the new reading's number.
    quint64 startReading(const QString &path, QDate from, QDate to);
    /// Asks the reading in progress to end after the line in hand; readingFinished() follows.
    void stop() { stopReading = true; }
    /// The number of the latest reading started.
    quint64 runId() const { return m_runId; }
    /// The batches read and not yet taken, in file order.
    QList<LogBatch> takeRows();
    /// Why the last reading could not read the file; empty when it could.
    QString error() const;

signals:
    /// The running tick (1..100, then again from 1); it is not a share of the file.
    void updateProgress(int tick);
    /// Warning and alarm records and temperature samples of reading \a runId wait for takeRows();
    /// said once until they are taken.
    void lineToAdd(quint64 runId);
    /// Reading \a runId is over and all its rows are waiting or taken; error() says whether
    /// the file could be read.
    void readingFinished(quint64 runId);

protected:
    void run() override;

private:
    std::atomic<bool> stopReading{false};
    // Written only while the thread does not run (startReading() waits for it first).
    QString logPath;
    QDate fromDate;
    QDate toDate;
    quint64 m_runId = 0;
    mutable std::mutex m_mutex; // guards the two below
    QList<LogBatch> m_pending;
    QString m_error;
};
