#include "HealthLine.h"

#include "BarColours.h"

#include <QPainter>

HealthLine::HealthLine(QWidget *parent) : QWidget(parent)
{
    setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
}

void HealthLine::setHealth(int percentage, HealthState level)
{
    m_percentage = qBound(0, percentage, 100);
    m_level = level;
    setAccessibleDescription(QStringLiteral("%1%").arg(m_percentage));
    update();
}

void HealthLine::clear()
{
    m_percentage = -1;
    m_level = HealthUnknown;
    setAccessibleDescription(QString());
    update();
}

QSize HealthLine::sizeHint() const
{
    return {200, fontMetrics().height() + 6};
}

void HealthLine::paintEvent(QPaintEvent *)
{
    QPainter painter(this);
    BarColours::paintBar(painter, rect(), m_percentage / 100.0, BarColours::forLevel(m_level));
    if (m_percentage < 0)
        return;
    painter.setPen(palette().color(QPalette::WindowText));
    painter.drawText(rect(), Qt::AlignCenter, QStringLiteral("%1%").arg(m_percentage));
}
