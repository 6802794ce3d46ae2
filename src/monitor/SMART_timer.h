#pragma once

#include <QTimer>

/// Watchdog of one first-read worker: fires once per start and names its disk.
class SMART_timer : public QTimer
{
    Q_OBJECT
public:
    explicit SMART_timer(QObject *parent = nullptr);

    /// Position of the guarded disk in the disk list.
    int index() const { return m_index; }
    void setIndex(int index) { m_index = index; }

signals:
    /// The worker of disk \a index has not reported in time.
    void needTerminated(int index);

public slots:
    /// Stops the timer and raises needTerminated for its disk.
    void itsTime();

private:
    int m_index = -1;
};
