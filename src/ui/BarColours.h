#pragma once

#include "health/HealthState.h"

#include <QColor>

class QPainter;
class QRect;

/// The colours and the shape the bars of the window share, so a level looks the same everywhere.
namespace BarColours {

/// Fill of a bar at \a level: green, amber, red; grey before any evaluation.
QColor forLevel(HealthState level);
/// The empty part of a bar.
QColor track();
/// Draws a rounded bar over \a rect, filled with \a fill up to \a fraction (0..1); nothing filled below 0.
void paintBar(QPainter &painter, const QRect &rect, double fraction, const QColor &fill);

} // namespace BarColours
