#include "TemperatureGauge.h"

#include "BarColours.h"
#include "UiFont.h"

#include <QPainter>

namespace {
constexpr double kDegreesPerCelsius = 2.6;
}

TemperatureGauge::TemperatureGauge(QWidget *parent)
    : QLabel(parent), m_needle(QStringLiteral(":/new/prefix1/images/needle.png"))
{
    setFixedSize(80, 80);
}

void TemperatureGauge::setLimits(int warningCelsius, int criticalCelsius)
{
    m_warning = warningCelsius;
    m_critical = criticalCelsius;
}

void TemperatureGauge::showTemperature(int celsius, int unitSetting, const QString &text)
{
    setPixmap(drawFace(celsius, unitSetting, text));
    setAccessibleDescription(text);
}

void TemperatureGauge::showIcon(const QString &resourcePath)
{
    setPixmap(QPixmap(resourcePath));
    setAccessibleDescription(QString());
}

QPixmap TemperatureGauge::drawFace(int celsius, int unitSetting, const QString &text) const
{
    QPixmap face(unitSetting ? QStringLiteral(":/new/prefix1/images/term_empty_F.png")
                             : QStringLiteral(":/new/prefix1/images/term_empty.png"));
    if (face.isNull())
        return face;
    QPainter painter(&face);
    painter.setRenderHint(QPainter::Antialiasing);
    drawLimit(painter, m_warning, BarColours::forLevel(HealthWarning));
    drawLimit(painter, m_critical, BarColours::forLevel(HealthAlarm));
    painter.setPen(QPen(Qt::white, 1));
    painter.setBrush(Qt::white);
    painter.setFont(UiFont::desktop(8));
    painter.drawText(QRect(20, 56, 40, 12), Qt::AlignCenter, text);
    painter.translate(40, 40);
    // The needle turns by the Celsius value whatever unit the face is marked in.
    painter.rotate(kDegreesPerCelsius * celsius);
    painter.drawPixmap(-25, -25, m_needle);
    return face;
}

void TemperatureGauge::drawLimit(QPainter &painter, int celsius, const QColor &colour) const
{
    // A short mark on the rim where the needle would point at the limit.
    painter.save();
    painter.translate(40, 40);
    painter.rotate(-130 + kDegreesPerCelsius * celsius);
    painter.setPen(QPen(colour, 2, Qt::SolidLine, Qt::RoundCap));
    painter.drawLine(QPointF(0, -37), QPointF(0, -32));
    painter.restore();
}
