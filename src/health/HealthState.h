#pragma once

#include <QtGlobal>

/// Health level of a disk or of the whole machine; compared numerically, a higher value always wins.
enum HealthState : qint32 {
    HealthUnknown = 0, ///< no evaluation yet
    HealthOk = 1,
    HealthWarning = 2,
    HealthAlarm = 3,
};
