#pragma once

#include "GraphItem.h"

#include <QDate>
#include <QList>
#include <QSize>

class LogHistory;

/// Where everything of the temperature graph goes for a widget of a given size: 0..100 °C
/// upwards from 20 pixels above the bottom, the day range to the right from x = 30, both
/// scales as real numbers and every coordinate cut toward zero when it becomes a pixel.
namespace TemperatureGraphLayout {

/// The font family of every text of the graph.
inline constexpr const char *fontFamily = "Tahoma";

/// The colour of a disk's points and legend text: 1 green, 2 blue, 3 cyan, 4 magenta, 5 dark
/// red, 6 dark green, 7 dark blue, any other index (0 included) white.
Qt::GlobalColor diskColour(int disk);

/// Axes, the °C caption, the ten grid lines with their labels, and, when \a to is not before
/// \a from, the hour ticks, the day lines and the date labels.
QList<GraphItem> frame(QSize size, QDate from, QDate to);
/// The yellow \a warning and red \a critical lines, each only above 30 °C.
QList<GraphItem> thresholds(QSize size, int warning, int critical);
/// The serial of each legend entry in its disk's colour, one line each from the top right.
QList<GraphItem> legend(QSize size, const LogHistory &history);

/// The points of the samples of \a history from \a from to \a to (of disk \a diskFilter, or
/// of all disks when it is -1), in an order that draws the same pixels as drawing every
/// sample in file order: each (column, temperature, colour) once, where its last sample
/// was. Points that would fall wholly outside the widget are left out. Empty when \a to is
/// before \a from.
QList<GraphPoint> points(QSize size, QDate from, QDate to, int diskFilter, const LogHistory &history);

} // namespace TemperatureGraphLayout
