#include "EventLogRecord.h"

#include "device/DiskRecord.h"
#include "device/TextLine.h"

QString EventLogRecord::sessionStartedBody()
{
    return QStringLiteral("INFO]![Session started");
}

QString EventLogRecord::sessionFinishedBody()
{
    return QStringLiteral("INFO]![Session finished");
}

QString EventLogRecord::smartBody(int diskIndex, const DiskRecord &disk)
{
    // The multi-argument arg() substitutes in one pass, so a serial holding "%1" stays as it is;
    // the serial comes from the disk, and a line break in it would forge a record of its own.
    QString body = QStringLiteral("SMART]![%1]![%2]![%3]![%4]![")
                       .arg(QString::number(diskIndex), TextLine::oneLine(disk.serial),
                            QString::number(disk.healthState), QString::number(disk.healthValue));
    body += QString::number(disk.temperature);
    for (const SmartAttribute &a : disk.attributes) {
        body += valueSeparator;
        body += QString::number(a.current);
    }
    return body;
}

QString EventLogRecord::toLine() const
{
    return QStringLiteral("%1%2]![%3\n")
        .arg(stamp.date().toString(QStringLiteral("yyyyMMdd")),
             stamp.time().toString(QStringLiteral("hhmmss")), body);
}
