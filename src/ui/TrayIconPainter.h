#pragma once

#include <QColor>
#include <QPixmap>

/// Draws the tray's temperature icon: the digits stroked with a 1-pixel pen on a 16 x 16 pixmap.
namespace TrayIconPainter {

/// The icon for the temperature text \a digits in \a colour.
QPixmap temperature(const QString &digits, const QColor &colour);

} // namespace TrayIconPainter
