#pragma once

#include "HealthEvaluation.h"
#include "HealthState.h"

#include <QList>
#include <QStringList>

struct AppSettings;
struct DiskRecord;
class MailNotifier;

/// Turns the SMART values of all disks into health levels and decides the alerts. Keeps the
/// overall level of the previous evaluation, so that an e-mail goes out only on a change.
class HealthEvaluator
{
public:
    /// Evaluates every disk in list order. Writes temperature, power-on count, level, health
    /// percentage and status paragraph into each monitored disk with SMART data, and the status
    /// paragraph alone into the others. \a languageTable gives the tray caption and unit texts;
    /// \a mail, when given, tells whether a previous notification is still in flight.
    HealthEvaluation checkHealthStatus(QList<DiskRecord> &disks, const AppSettings &settings,
                                       const QStringList &languageTable,
                                       const MailNotifier *mail = nullptr);

    /// Overall level of the last evaluation, which the next one is compared with;
    /// unknown before the first, so that the first evaluation always counts as a change.
    HealthState previousLevel() const { return m_previousLevel; }

private:
    /// Fills in pop-up, external task and e-mail for the overall level of \a result, then
    /// remembers that level for the next evaluation.
    void decideNotifications(HealthEvaluation &result, const AppSettings &settings, const MailNotifier *mail);

    HealthState m_previousLevel = HealthUnknown;
};
