#include "freeSpaceLine.h"

#include "BarColours.h"

#include <QPainter>

freeSpaceLine::freeSpaceLine(QWidget *parent) : QWidget(parent)
{
    setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
}

void freeSpaceLine::setSpace(quint64 totalBytes, quint64 freeBytes, const QString &text)
{
    m_usedFraction = totalBytes == 0 ? 0 : 1.0 - double(qMin(freeBytes, totalBytes)) / double(totalBytes);
    m_text = text;
    setAccessibleName(text);
    setToolTip(text);
    update();
}

QSize freeSpaceLine::sizeHint() const
{
    return {200, fontMetrics().height() + 8};
}

void freeSpaceLine::paintEvent(QPaintEvent *)
{
    QPainter painter(this);
    BarColours::paintBar(painter, rect(), m_usedFraction, QColor(0x8d, 0xb4, 0xe2));
    painter.setPen(palette().color(QPalette::WindowText));
    const QRect textRect = rect().adjusted(6, 0, -6, 0);
    painter.drawText(textRect, Qt::AlignVCenter | Qt::AlignLeft,
                     fontMetrics().elidedText(m_text, Qt::ElideRight, textRect.width()));
}
