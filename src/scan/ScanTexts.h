#pragma once

#include "ScanSummary.h"

#include <QDateTime>
#include <QString>

/// The texts of the surface scan, in the current language: the Events Log lines, the result,
/// the read speed, the elapsed time and the block map's conditions. The scan page and
/// korvanectl scan both say what these return.
namespace ScanTexts {

/// The Events Log line of a scan's start.
QString started();
/// A failed check block: "Bad Sectors between FIRST - LAST".
QString badSectors(qint64 first, qint64 last);
/// The result: stopped (with the counts), the disk in use, or complete (with the counts).
QString result(const ScanSummary &summary);
/// The completion dialog's title: stopped or complete.
QString resultTitle(bool stopped);
/// The warning box's title when the disk could not be opened.
QString openFailedTitle();
/// The warning box's text when the disk could not be opened (two lines).
QString openFailedMessage();
/// Hours, minutes and seconds of \a seconds ("1 h. 2 m. 3 s."); a zero hour or minute part is left out.
QString elapsed(qint64 seconds);
/// The elapsed time's tooltip: the plain count of seconds.
QString elapsedTooltip(qint64 seconds);

/// Whole seconds from \a from to \a to for a speed; 0 counts as 1, so a speed is always finite.
qint64 speedSeconds(const QDateTime &from, const QDateTime &to);
/// Whole seconds from \a start to \a end as the result counts them (an unsigned 32-bit difference).
quint32 elapsedSeconds(const QDateTime &start, const QDateTime &end);
/// The status line while a scan runs.
QString scanning();
/// "Read Speed: N KB/s", two decimals.
QString readSpeed(double kilobytesPerSecond);

/// The condition of a block not verified by the current scan.
QString unverifiedBlock();
/// The condition of a verified block without a failed read inside.
QString verifiedBlock();
/// The condition of a block with a failed read wholly inside.
QString badBlock();
/// The block map's tooltip: number, size, sector range and \a condition, three lines.
QString blockTooltip(qint64 n, qint64 first, qint64 last, const QString &condition);
/// The slowest read of a block and its class ("Slowest read: 12.3 ms (5-20 ms)").
QString slowestRead(qint64 micros);

} // namespace ScanTexts
