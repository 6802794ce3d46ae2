#pragma once

#include "HealthEvaluation.h"

#include "device/DiskRecord.h"

#include <QDateTime>
#include <QJsonObject>
#include <QList>

/// Machine-readable form of one health evaluation, for the command-line tool and scripts.
namespace HealthJson {

/// The evaluation at \a when: "time", "overallLevel", "levelChanged", every disk as the disk
/// list's JSON form gives it plus its "level" and "health", the Events Log "lines", the
/// "externalTask" and, when due, the "popUp" and the "mail".
QJsonObject evaluation(const HealthEvaluation &result, const QList<DiskRecord> &disks, const QDateTime &when);

} // namespace HealthJson
