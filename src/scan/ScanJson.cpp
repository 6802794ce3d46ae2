#include "ScanJson.h"

#include "BlockMap.h"
#include "LatencyClass.h"
#include "ScanTexts.h"

#include <QJsonArray>

namespace ScanJson {

namespace {

QJsonObject readTimes(const BlockMap &map)
{
    QJsonArray blocks;
    qint64 perClass[LatencyClass::kCount] = {};
    for (qint64 i = 0; i < map.totalBlocks(); ++i) {
        const qint64 micros = map.readTime(i);
        if (micros < 0)
            continue;
        const int latencyClass = LatencyClass::of(micros);
        ++perClass[latencyClass];
        blocks.append(QJsonObject{{QStringLiteral("block"), i},
                                  {QStringLiteral("slowestMs"), double(micros) / 1000.0},
                                  {QStringLiteral("class"), LatencyClass::label(latencyClass)}});
    }
    QJsonArray classes;
    for (int c = 0; c < LatencyClass::kCount; ++c)
        classes.append(QJsonObject{{QStringLiteral("class"), LatencyClass::label(c)}, {QStringLiteral("blocks"), perClass[c]}});
    return QJsonObject{{QStringLiteral("classes"), classes}, {QStringLiteral("blocks"), blocks}};
}

} // namespace

QJsonObject result(const Scope &scope, const ScanSummary &summary, const BlockMap &map)
{
    QJsonArray bad;
    for (const auto &range : map.badRanges())
        bad.append(QJsonArray{range.first, range.second});
    return QJsonObject{
        {QStringLiteral("device"), scope.device},
        {QStringLiteral("firstSector"), scope.firstSector},
        {QStringLiteral("lastSector"), scope.lastSector},
        {QStringLiteral("blockSize"), qint64(scope.blockSize)},
        {QStringLiteral("badRanges"), bad},
        {QStringLiteral("sectorsScanned"), summary.sectorsScanned},
        {QStringLiteral("blocksScanned"), summary.blocksScanned},
        {QStringLiteral("badBlocks"), summary.badBlocks},
        {QStringLiteral("openFailed"), summary.openFailed},
        {QStringLiteral("stopRequested"), summary.stopped},
        {QStringLiteral("elapsedSeconds"), qint64(summary.elapsedSeconds)},
        {QStringLiteral("result"), ScanTexts::result(summary)},
        {QStringLiteral("readTimes"), readTimes(map)},
    };
}

} // namespace ScanJson
