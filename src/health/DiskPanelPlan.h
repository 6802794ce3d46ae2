#pragma once

#include "HealthState.h"

#include <QString>

struct AppSettings;
struct DiskRecord;

/// What the window shows for one disk after a SMART read: the disk-tree icon and temperature
/// column, the temperature gauge or the icon standing in for it, the state icon and health
/// label of the status panel, the work time, and whether the attribute table is filled.
/// Decided here so the window only applies it.
struct DiskPanelPlan
{
    /// The three ways a disk is shown.
    enum class Kind {
        NotMonitored, ///< monitoring switched off: stop icons
        NoSmart,      ///< monitored, but the disk gave no SMART rows
        Smart         ///< monitored with SMART rows: gauge, work time, health, table
    };

    Kind kind = Kind::NoSmart;
    QString treeIcon;        ///< resource path of the disk-tree icon
    QString temperatureText; ///< disk-tree column 1; empty leaves the column as it is
    bool gaugeShown = false; ///< draw the gauge at temperatureCelsius
    int temperatureCelsius = 0;
    int gaugeUnit = 0;       ///< the unit setting the gauge's dial is drawn for (0 Celsius, else Fahrenheit)
    QString gaugeLabel;      ///< written on the gauge: "%1°C" or "%1°F"
    QString thermometerIcon; ///< resource path shown instead of the gauge when gaugeShown is false
    QString stateIcon;       ///< resource path of the status panel's state icon
    QString healthLabel;     ///< rich text beside the state icon
    QString workTimeLabel;   ///< rich text; empty unless kind is Smart
    HealthState state = HealthUnknown;
    int healthValue = 0;     ///< health percentage for the health bar

    /// The plan for \a disk under \a settings (display unit).
    static DiskPanelPlan forDisk(const DiskRecord &disk, const AppSettings &settings);
    /// Disk-tree column 1 right after discovery: the temperature, "Not supported", or empty for a disk without SMART.
    static QString discoveryTemperatureText(const DiskRecord &disk, const AppSettings &settings);
    /// Disk-tree icon right after discovery, before the first evaluation.
    static QString discoveryTreeIcon(const DiskRecord &disk);
    /// "%1°C" or "%1°F": \a celsius in the display unit of \a settings, as the gauge writes it.
    static QString gaugeText(int celsius, const AppSettings &settings);
    /// True when the disk counts as having SMART data for the window (rows were read).
    static bool hasSmart(const DiskRecord &disk);
};
