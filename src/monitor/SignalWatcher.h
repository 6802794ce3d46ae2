#pragma once

#include <QObject>

class QSocketNotifier;

/// Turns SIGINT, SIGTERM and SIGHUP into a Qt signal on the thread that created
/// the watcher, so a monitor loop can finish its last record and exit cleanly,
/// whenever the signal comes. SIGPIPE is ignored from then on: a reader that
/// goes away shows up as a failed write, not as a death before the last record.
class SignalWatcher : public QObject
{
    Q_OBJECT
public:
    /// Installs the handlers; one watcher per process.
    explicit SignalWatcher(QObject *parent = nullptr);
    ~SignalWatcher() override;

signals:
    /// SIGINT, SIGTERM or SIGHUP arrived (once per arrival).
    void stopRequested();

private:
    QSocketNotifier *m_notifier = nullptr;
};
