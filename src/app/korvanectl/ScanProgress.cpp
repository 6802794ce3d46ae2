#include "ScanProgress.h"

#include "ConsoleOutput.h"

#include "scan/ScanGeometry.h"

namespace {

constexpr int kBarWidth = 30;
constexpr qint64 kRedrawMs = 200;

QString clock(qint64 seconds)
{
    return QStringLiteral("%1:%2:%3")
        .arg(seconds / 3600)
        .arg(seconds / 60 % 60, 2, 10, QLatin1Char('0'))
        .arg(seconds % 60, 2, 10, QLatin1Char('0'));
}

} // namespace

ScanProgress::ScanProgress(ConsoleOutput &out, bool terminal, qint64 firstSector, qint64 lastSector)
    : m_out(out), m_terminal(terminal), m_sectors(lastSector - firstSector + 1)
{
    m_clock.start();
    m_lastDraw.start();
}

QString ScanProgress::status(int percent, qint64 sectors, qint64 elapsedMs)
{
    const double bytes = double(sectors) * ScanGeometry::kSectorBytes * percent / 100.0;
    QString text = QStringLiteral("%1%").arg(percent, 3);
    if (elapsedMs <= 0 || percent <= 0)
        return text;
    const double perSecond = bytes * 1000.0 / double(elapsedMs);
    const qint64 left = qint64(double(elapsedMs) / 1000.0 * (100 - percent) / percent + 0.5);
    return text + QStringLiteral("  %1 MB/s  %2 left").arg(perSecond / 1e6, 0, 'f', 1).arg(clock(left));
}

void ScanProgress::setPercent(int percent)
{
    if (percent == m_percent)
        return;
    m_percent = percent;
    if (!m_terminal) {
        m_out.writeLine(status(m_percent, m_sectors, m_clock.elapsed()));
        return;
    }
    // A terminal redraws the bar in place; more often than a few times a second only flickers.
    if (m_lastDraw.elapsed() >= kRedrawMs || m_percent == 100)
        draw();
}

void ScanProgress::draw()
{
    const int filled = kBarWidth * m_percent / 100;
    const QString bar = QString(filled, QLatin1Char('#')) + QString(kBarWidth - filled, QLatin1Char('-'));
    m_out.write(QStringLiteral("\r\033[K[%1] %2").arg(bar, status(m_percent, m_sectors, m_clock.elapsed())).toUtf8());
    m_drawn = true;
    m_lastDraw.restart();
}

void ScanProgress::printLine(const QString &line)
{
    if (m_terminal && m_drawn)
        m_out.write("\r\033[K");
    m_out.writeLine(line);
    if (m_terminal)
        draw();
}

void ScanProgress::finish()
{
    if (m_terminal && m_drawn)
        m_out.write("\r\033[K");
    m_drawn = false;
}
