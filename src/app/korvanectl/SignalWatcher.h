#pragma once

#include <QObject>

class QSocketNotifier;

/// Turns SIGINT and SIGTERM into a Qt signal on the thread that created the
/// watcher, so a monitor loop can finish its last record and exit cleanly.
class SignalWatcher : public QObject
{
    Q_OBJECT
public:
    /// Installs the handlers; one watcher per process.
    explicit SignalWatcher(QObject *parent = nullptr);
    ~SignalWatcher() override;

signals:
    /// SIGINT or SIGTERM arrived.
    void stopRequested();

private:
    QSocketNotifier *m_notifier = nullptr;
};
