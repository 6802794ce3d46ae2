#include "statusLine.h"

#include "BarColours.h"

#include <QPainter>

statusLine::statusLine(QWidget *parent) : QWidget(parent)
{
    setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
    QFont bold = font();
    bold.setBold(true);
    setFont(bold);
}

void statusLine::setText(const QString &text)
{
    m_text = text;
    setAccessibleName(text);
    update();
}

void statusLine::setLevel(HealthState level)
{
    m_level = level;
    update();
}

QSize statusLine::sizeHint() const
{
    return {300, fontMetrics().height() + 8};
}

void statusLine::paintEvent(QPaintEvent *)
{
    QPainter painter(this);
    painter.fillRect(QRect(0, 2, 4, height() - 4), BarColours::forLevel(m_level));
    painter.setPen(palette().color(QPalette::WindowText));
    const QRect textRect = rect().adjusted(10, 0, 0, 0);
    painter.drawText(textRect, Qt::AlignVCenter | Qt::AlignLeft,
                     fontMetrics().elidedText(m_text, Qt::ElideRight, textRect.width()));
}
