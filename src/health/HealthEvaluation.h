#pragma once

#include "EventLine.h"
#include "HealthState.h"

#include <QList>
#include <QString>

#include <optional>

/// A tray balloon to show after an evaluation.
struct HealthPopUp
{
    QString title;               ///< "Warning" or "Alarm"
    HealthState level = HealthWarning; ///< picks the warning or the critical icon
    QString text;                ///< the evaluation's event text
};

/// An e-mail notification to hand to the mail client.
struct HealthMail
{
    HealthState level = HealthOk;
    QString text;
};

/// Everything one health evaluation asks the shell to show or start. The per-disk level,
/// percentage, status paragraph, temperature and power-on count are already written into
/// the disk records when this is returned.
struct HealthEvaluation
{
    HealthState overallLevel = HealthOk; ///< highest level over the evaluated disks
    bool levelChanged = false;           ///< overall level differs from the previous evaluation
    QString traySummary;                 ///< tray tooltip: caption followed by one line per disk
    QString eventText;                   ///< alert blocks of all disks, for pop-up and e-mail
    QList<QString> treeIcons;            ///< per disk: disk-tree icon to set, empty to leave it
    QList<EventLine> eventLines;         ///< Events Log lines in the order they arose
    std::optional<HealthPopUp> popUp;    ///< balloon to show, if any
    QString externalTask;                ///< command to start, empty for none
    std::optional<HealthMail> mail;      ///< notification to send, if any
};
