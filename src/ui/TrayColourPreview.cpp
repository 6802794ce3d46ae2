#include "TrayColourPreview.h"

#include "TrayIconPainter.h"

#include <QPainter>

namespace {

constexpr int Scale = 2;
constexpr int Icon = 16 * Scale;
constexpr int Gap = 12;

} // namespace

TrayColourPreview::TrayColourPreview(QWidget *parent) : QWidget(parent)
{
    setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Fixed);
}

void TrayColourPreview::setSamples(const QList<Sample> &samples)
{
    m_samples = samples;
    QStringList described;
    for (const Sample &sample : samples)
        described << sample.digits;
    setAccessibleDescription(described.join(QLatin1Char(' ')));
    updateGeometry();
    update();
}

QSize TrayColourPreview::sizeHint() const
{
    const int count = int(qMax<qsizetype>(1, m_samples.size()));
    return {Gap + count * (Icon + Gap), 2 * (Icon + Gap)};
}

void TrayColourPreview::paintEvent(QPaintEvent *)
{
    QPainter painter(this);
    const int rowHeight = Icon + Gap;
    // Panels are dark or light; the digits must read on the one the user has.
    const QColor panels[] = {QColor(0x2b, 0x2f, 0x33), QColor(0xe8, 0xea, 0xed)};
    for (int row = 0; row < 2; ++row) {
        painter.fillRect(0, row * rowHeight, width(), rowHeight, panels[row]);
        for (int i = 0; i < m_samples.size(); ++i) {
            const QPixmap icon = TrayIconPainter::temperature(m_samples.at(i).digits, m_samples.at(i).colour);
            // Enlarged without smoothing, so each pixel of the real 16 x 16 icon stays visible.
            painter.drawPixmap(QRect(Gap + i * (Icon + Gap), row * rowHeight + Gap / 2, Icon, Icon), icon);
        }
    }
}
