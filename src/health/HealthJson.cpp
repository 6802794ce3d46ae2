#include "HealthJson.h"

#include "device/DiskJson.h"

#include <QJsonArray>

namespace HealthJson {

QJsonObject evaluation(const HealthEvaluation &result, const QList<DiskRecord> &disks, const QDateTime &when)
{
    QJsonArray diskArray;
    for (int i = 0; i < disks.size(); ++i) {
        QJsonObject disk = DiskJson::disk(disks.at(i), i);
        // The short names scripts have read since the first monitor.
        disk.insert(QStringLiteral("level"), disks.at(i).healthState);
        disk.insert(QStringLiteral("health"), disks.at(i).healthValue);
        diskArray.append(disk);
    }
    QJsonArray lines;
    for (const EventLine &line : result.eventLines)
        lines.append(QJsonObject{{QStringLiteral("kind"), int(line.kind)}, {QStringLiteral("text"), line.text}});

    QJsonObject report{
        {QStringLiteral("time"), when.toString(Qt::ISODate)},
        {QStringLiteral("overallLevel"), int(result.overallLevel)},
        {QStringLiteral("levelChanged"), result.levelChanged},
        {QStringLiteral("disks"), diskArray},
        {QStringLiteral("lines"), lines},
        {QStringLiteral("externalTask"), result.externalTask},
    };
    if (result.popUp)
        report.insert(QStringLiteral("popUp"), QJsonObject{{QStringLiteral("title"), result.popUp->title},
                                                           {QStringLiteral("text"), result.popUp->text}});
    if (result.mail)
        report.insert(QStringLiteral("mail"), QJsonObject{{QStringLiteral("level"), int(result.mail->level)},
                                                          {QStringLiteral("text"), result.mail->text}});
    return report;
}

} // namespace HealthJson
