#pragma once

#include "ScanSummary.h"

#include <QJsonObject>
#include <QString>

class BlockMap;

/// The JSON form of a finished surface scan, as korvanectl scan --json prints it.
namespace ScanJson {

/// What was scanned: the device, the range and the check-block size.
struct Scope
{
    QString device;
    qint64 firstSector = 0;
    qint64 lastSector = 0;
    quint32 blockSize = 0;
};

/// One object: the scope, the worker's counters and flags under their own names, the bad
/// ranges as [first, last] pairs in the order found, and the read time of every timed map
/// block with its class, plus how many blocks fell in each class.
QJsonObject result(const Scope &scope, const ScanSummary &summary, const BlockMap &map);

} // namespace ScanJson
