#include "DetailLog.h"

#include <QDateTime>
#include <QDir>
#include <QFile>

void writeDetailLog(bool startNew, const QString &message)
{
    QFile file(QDir::currentPath() + QStringLiteral("/KVdet.log"));
    const QIODevice::OpenMode mode = QIODevice::WriteOnly | QIODevice::Text
        | (startNew ? QIODevice::Truncate : QIODevice::Append);
    if (!file.open(mode))
        return;
    const QDateTime now = QDateTime::currentDateTime();
    file.write(QStringLiteral("%1 %2    %3\n")
                   .arg(now.date().toString(Qt::ISODate), now.time().toString(Qt::ISODate), message)
                   .toLocal8Bit());
}
