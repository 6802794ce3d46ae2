#include "TextReport.h"

#include "device/DiskInfoReport.h"
#include "device/TextLine.h"
#include "monitor/ATA_Smart.h"

#include <QStringList>

namespace TextReport {

namespace {

void appendRows(QStringList &out, const QList<InfoRow> &rows, int depth)
{
    const QString indent(2 + 2 * depth, QLatin1Char(' '));
    for (const InfoRow &row : rows) {
        QString line = indent + row.label.trimmed();
        // The window's "..." placeholder column means nothing on a terminal.
        if (row.label == QLatin1String("..."))
            line = indent + row.value.trimmed();
        else if (!row.value.isEmpty())
            line += (row.label.isEmpty() ? QString() : QStringLiteral(": ")) + row.value;
        out << line;
        appendRows(out, row.children, depth + 1);
    }
}

QString smartStateText(const DiskRecord &disk, bool timedOut)
{
    if (timedOut)
        return QStringLiteral("no answer within %1 seconds; the disk may hang").arg(ATA_Smart::watchdogIntervalMs() / 1000);
    if (disk.smartState > 0)
        return QStringLiteral("%1 attributes").arg(disk.attributes.size());
    if (disk.smartState == 0)
        return QStringLiteral("SMART data holds no attributes");
    return QStringLiteral("SMART data could not be read");
}

} // namespace

QString attributeTable(const DiskRecord &disk)
{
    QStringList out;
    out << QStringLiteral("  %1 %2 %3 %4 %5 %6 %7")
               .arg(QStringLiteral("ID"), 3)
               .arg(QStringLiteral("Name"), -34)
               .arg(QStringLiteral("Current"), 7)
               .arg(QStringLiteral("Worst"), 5)
               .arg(QStringLiteral("Threshold"), 9)
               .arg(QStringLiteral("Raw"), 15)
               .arg(QStringLiteral("Flags"));
    for (const SmartAttribute &a : disk.attributes) {
        out << QStringLiteral("  %1 %2 %3 %4 %5 %6 0x%7")
                   .arg(a.id, 3)
                   .arg(a.name.left(34), -34)
                   .arg(a.current, 7)
                   .arg(a.worst, 5)
                   .arg(a.threshold, 9)
                   .arg(a.raw, 15)
                   .arg(a.flags, 4, 16, QLatin1Char('0'));
    }
    return out.join(QLatin1Char('\n'));
}

QString disk(const DiskRecord &disk, int index, bool timedOut)
{
    QStringList out;
    out << QStringLiteral("Disk %1: %2 (%3)").arg(index).arg(disk.model, disk.devicePath);
    appendRows(out, DiskInfoReport::allRows(disk), 0);
    out << QStringLiteral("  SMART: %1").arg(smartStateText(disk, timedOut));
    // A model or serial with a line break in it must not split a line of the report.
    for (QString &line : out)
        line = TextLine::oneLine(line);
    if (!disk.attributes.isEmpty())
        out << attributeTable(disk);
    return out.join(QLatin1Char('\n'));
}

} // namespace TextReport
