#include "TrayIconPainter.h"

#include "health/TemperatureDigits.h"

#include <QPainter>
#include <QPainterPath>

namespace TrayIconPainter {

QPixmap temperature(const QString &digits, const QColor &colour)
{
    QPixmap pixmap(16, 16);
    pixmap.fill(Qt::transparent);
    QPainterPath path;
    for (const QLine &stroke : TemperatureDigits::strokes(digits)) {
        path.moveTo(stroke.p1());
        path.lineTo(stroke.p2());
    }
    QPainter painter(&pixmap);
    painter.setPen(QPen(colour, 1));
    painter.setBrush(Qt::NoBrush);
    painter.drawPath(path);
    return pixmap;
}

} // namespace TrayIconPainter
