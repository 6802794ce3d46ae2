#include "SmartReport.h"

#include "TextLine.h"

namespace SmartReport {

QByteArray text(const QList<DiskRecord> &disks)
{
    QByteArray report;
    for (const DiskRecord &disk : disks) {
        // The model comes from the disk: a line break in it must not split the header.
        report += QStringLiteral("Device %1 SMART Info (ID/Value/Raw Value/Worst/Treshold)\r\n")
                      .arg(TextLine::oneLine(disk.model))
                      .toLocal8Bit();
        for (const SmartAttribute &a : disk.attributes) {
            report += QStringLiteral("%1 %2 %3 %4 %5\r\n")
                          .arg(QString::number(a.id), QString::number(a.current), QString::number(a.raw),
                               QString::number(a.worst), QString::number(a.threshold))
                          .toLocal8Bit();
        }
        report += "------------------------\r\n";
    }
    return report;
}

} // namespace SmartReport
