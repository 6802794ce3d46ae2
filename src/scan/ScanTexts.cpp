#include "ScanTexts.h"

#include "LatencyClass.h"

#include "settings/LanguageTable.h"

namespace ScanTexts {

namespace {

QString text(Lang::Entry entry)
{
    return languageText(entry);
}

// "Total Blocks scanned: 5", one line of the result.
QString countLine(Lang::Entry label, const QString &value)
{
    return text(label) + QLatin1Char(' ') + value;
}

} // namespace

QString started()
{
    return text(Lang::ScanStarted);
}

QString badSectors(qint64 first, qint64 last)
{
    return text(Lang::BadSectorsBetween).arg(first).arg(last);
}

QString result(const ScanSummary &s)
{
    if (!s.stopped && s.openFailed)
        return text(Lang::DiskInUse) + QLatin1Char(' ') + text(Lang::DiskLocked);
    return QStringList{resultTitle(s.stopped),
                       countLine(Lang::TotalBlocksScanned, QString::number(s.blocksScanned)),
                       countLine(Lang::TotalSectorsScanned, QString::number(s.sectorsScanned)),
                       countLine(Lang::TotalBadBlocks, QString::number(s.badBlocks)),
                       countLine(Lang::TimeElapsed, elapsed(s.elapsedSeconds))}
        .join(QLatin1Char('\n'));
}

QString resultTitle(bool stopped)
{
    return text(stopped ? Lang::ScanStoppedTitle : Lang::ScanCompleteTitle);
}

QString openFailedTitle()
{
    return text(Lang::ScanErrorTitle);
}

QString openFailedMessage()
{
    return text(Lang::DiskInUse) + QStringLiteral(" \n") + text(Lang::DiskLocked);
}

QString elapsed(qint64 seconds)
{
    const qint64 h = seconds / 3600;
    const qint64 m = (seconds - 3600 * h) / 60;
    const qint64 s = seconds - 3600 * h - 60 * m;
    // A zero minute part is left out even between hours and seconds: "1 h. 3 s.".
    QString result = text(Lang::ElapsedS).arg(s);
    if (m != 0)
        result = text(Lang::ElapsedM).arg(m) + QLatin1Char(' ') + result;
    if (h != 0)
        result = text(Lang::ElapsedH).arg(h) + QLatin1Char(' ') + result;
    return result;
}

QString elapsedTooltip(qint64 seconds)
{
    return text(Lang::ElapsedSeconds).arg(seconds);
}

qint64 speedSeconds(const QDateTime &from, const QDateTime &to)
{
    const qint64 seconds = to.toSecsSinceEpoch() - from.toSecsSinceEpoch();
    return seconds == 0 ? 1 : seconds;
}

quint32 elapsedSeconds(const QDateTime &start, const QDateTime &end)
{
    return quint32(end.toSecsSinceEpoch()) - quint32(start.toSecsSinceEpoch());
}

QString scanning()
{
    return text(Lang::Scanning);
}

QString readSpeed(double kilobytesPerSecond)
{
    return text(Lang::ReadSpeed).arg(kilobytesPerSecond, 0, 'f', 2);
}

QString unverifiedBlock()
{
    return text(Lang::LegendUnverified);
}

QString verifiedBlock()
{
    return text(Lang::LegendVerified);
}

QString badBlock()
{
    return text(Lang::BadBlockCondition);
}

QString blockTooltip(qint64 n, qint64 first, qint64 last, const QString &condition)
{
    return text(Lang::BlockTooltipHead).arg(n) + QLatin1Char('\n') + text(Lang::SectorsFromTo).arg(first).arg(last)
        + QLatin1Char('\n') + condition;
}

QString slowestRead(qint64 micros)
{
    return text(Lang::SlowestRead).arg(LatencyClass::milliseconds(micros), LatencyClass::label(LatencyClass::of(micros)));
}

} // namespace ScanTexts
