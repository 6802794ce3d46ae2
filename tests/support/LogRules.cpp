#include "LogRules.h"

#include <QFile>

namespace LogRules {

Rows read(const QString &path, QDate from, QDate to)
{
    Rows rows;
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return rows;
    while (!file.atEnd()) {
        const QStringList parts = QString::fromLatin1(file.readLine()).split(QStringLiteral("]!["));
        if (parts.size() < 7 || parts.at(1) != QLatin1String("SMART"))
            continue;
        const QString day = parts.at(0).left(8);
        const QDate date(day.mid(0, 4).toInt(), day.mid(4, 2).toInt(), day.mid(6, 2).toInt());
        if (!(date >= from && date <= to))
            continue;
        if (parts.at(4).toInt() > 1)
            rows.events << parts;
        const QStringList values = parts.at(6).split(QStringLiteral("~;"));
        if (values.at(0).toInt() > 0)
            rows.temperatures << QStringList{parts.at(0), parts.at(2), values.at(0), parts.at(3)};
    }
    return rows;
}

} // namespace LogRules
