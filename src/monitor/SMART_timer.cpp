#include "SMART_timer.h"

SMART_timer::SMART_timer(QObject *parent)
    : QTimer(parent)
{
    connect(this, &QTimer::timeout, this, &SMART_timer::itsTime);
}

void SMART_timer::itsTime()
{
    // A watchdog gives up on its worker once; restarting is the service's call.
    stop();
    emit needTerminated(m_index);
}
