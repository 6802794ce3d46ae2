#pragma once

#include <QString>

/// What the settings file remembers about one disk, matched to a discovered disk by its serial number.
struct DiskSettings
{
    QString serial;         ///< serial number exactly as the disk record holds it
    bool monitored = true;  ///< whether the disk is watched at all
    int attr9Unit = 0;      ///< unit code of attribute 9 (power-on time); 0 = not known
};
