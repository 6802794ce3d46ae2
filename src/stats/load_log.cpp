#include "load_log.h"

#include "LogScanner.h"

load_log::load_log(QObject *parent) : QThread(parent) {}

load_log::~load_log()
{
    stopReading = true;
    wait();
}

quint64 load_log::startReading(const QString &path, QDate from, QDate to)
{
    stopReading = true;
    wait();
    logPath = path;
    fromDate = from;
    toDate = to;
    ++m_runId;
    start(QThread::InheritPriority);
    return m_runId;
}

void load_log::run()
{
    stopReading = false;
    LogScanner scanner(logPath, fromDate, toDate);
    scanner.setRunId(m_runId);
    scanner.run(stopReading, [this](LogBatch &&batch) {
        if (batch.progress >= 0)
            emit updateProgress(batch.progress);
        if (!batch.isEmpty())
            emit lineToAdd(batch);
    });
    emit readingFinished(m_runId, scanner.error());
}
