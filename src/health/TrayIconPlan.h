#pragma once

#include "HealthState.h"

#include "device/DiskRecord.h"
#include "settings/AppSettings.h"

#include <QList>
#include <QString>
#include <Qt>

/// What the tray icon shows after an evaluation: one disk's temperature as digits in a colour,
/// or the status icon of the overall level, and the tooltip.
struct TrayIconPlan
{
    bool empty = true;            ///< no disks: leave the tray as it is
    bool temperatureMode = false; ///< draw \c digits in \c colour instead of \c statusIcon
    QString digits;               ///< temperature in the display unit, decimal
    Qt::GlobalColor colour = Qt::lightGray;
    QString statusIcon;           ///< resource path; empty before the first evaluation
    QString toolTip;

    /// The plan for \a disks under \a settings, with the last evaluation's \a overall level and tray \a summary.
    static TrayIconPlan decide(const QList<DiskRecord> &disks, const AppSettings &settings,
                               HealthState overall, const QString &summary);
    /// True when \a disk has a temperature the tray and the gauge may show.
    static bool showsTemperature(const DiskRecord &disk);
    /// The colour setting \a index (0..15) as a Qt standard colour; light gray for any other value.
    static Qt::GlobalColor colourOf(int index);
};
