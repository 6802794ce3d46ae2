#pragma once

#include <QElapsedTimer>
#include <QString>

class ConsoleOutput;

/// The progress of korvanectl scan on standard output: a bar redrawn in place on a terminal,
/// a plain line per whole percent elsewhere, each with the read speed and the time left. Bad
/// ranges are printed between, and the bar is drawn again under them.
class ScanProgress
{
public:
    /// Shows the scan of sectors \a firstSector..\a lastSector on \a out; \a terminal chooses the bar.
    ScanProgress(ConsoleOutput &out, bool terminal, qint64 firstSector, qint64 lastSector);

    /// Whole percent done.
    void setPercent(int percent);
    /// Prints \a line (a bad range) above the bar.
    void printLine(const QString &line);
    /// Takes the bar off the screen; the result follows.
    void finish();

    /// The status text for \a percent done after \a elapsedMs: percent, speed and time left.
    static QString status(int percent, qint64 sectors, qint64 elapsedMs);

private:
    void draw();

    ConsoleOutput &m_out;
    bool m_terminal;
    qint64 m_sectors;
    int m_percent = 0;
    bool m_drawn = false;
    QElapsedTimer m_clock;
    QElapsedTimer m_lastDraw;
};
