#pragma once

#include <QLine>
#include <QList>
#include <QString>

/// The hand-made segment digits the tray draws a temperature with: 5 x 11 pixel glyphs placed
/// in cells across a 16 x 16 icon.
namespace TemperatureDigits {

/// Strokes of \a text in icon coordinates; characters other than digits take a cell and draw nothing.
QList<QLine> strokes(const QString &text);

} // namespace TemperatureDigits
