#include "BarColours.h"

#include <QPainter>

namespace BarColours {

QColor forLevel(HealthState level)
{
    switch (level) {
    case HealthOk:
        return QColor(0x3a, 0xa5, 0x5d);
    case HealthWarning:
        return QColor(0xe0, 0x9b, 0x1a);
    case HealthAlarm:
        return QColor(0xd0, 0x3b, 0x32);
    default:
        return QColor(0x9a, 0x9a, 0x9a);
    }
}

QColor track()
{
    return QColor(0xe3, 0xe6, 0xe8);
}

void paintBar(QPainter &painter, const QRect &rect, double fraction, const QColor &fill)
{
    painter.setRenderHint(QPainter::Antialiasing);
    const QRectF frame = QRectF(rect).adjusted(0.5, 0.5, -0.5, -0.5);
    painter.setPen(Qt::NoPen);
    painter.setBrush(track());
    painter.drawRoundedRect(frame, 3, 3);
    if (fraction < 0)
        return;
    QRectF filled = frame;
    filled.setWidth(frame.width() * qMin(fraction, 1.0));
    painter.setBrush(fill);
    painter.drawRoundedRect(filled, 3, 3);
}

} // namespace BarColours
