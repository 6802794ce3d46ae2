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
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        m_pending.clear();
        m_error.clear();
    }
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
        if (batch.isEmpty())
            return;
        bool wasEmpty = false;
        {
            const std::lock_guard<std::mutex> lock(m_mutex);
            wasEmpty = m_pending.isEmpty();
            m_pending.append(std::move(batch));
        }
        // One signal while rows wait: a page that is busy takes several batches at once.
        if (wasEmpty)
            emit lineToAdd(m_runId);
    });
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        m_error = scanner.error();
    }
    emit readingFinished(m_runId);
}

QList<LogBatch> load_log::takeRows()
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    return std::exchange(m_pending, {});
}

QString load_log::error() const
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    return m_error;
}
