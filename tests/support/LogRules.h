#pragma once

#include <QDate>
#include <QList>
#include <QString>
#include <QStringList>

/// The event log reader's rules written as plainly as they can be, line by line through the
/// toolkit's own text functions: the oracle the fast reader and korvanectl are checked against.
namespace LogRules {

/// The rows a reading of a period gives, in file order.
struct Rows
{
    QList<QStringList> events;       ///< every field of each warning and alarm record
    QList<QStringList> temperatures; ///< stamp, disk index, temperature, serial
};

/// The rows of \a path for the days \a from to \a to, both included.
Rows read(const QString &path, QDate from, QDate to);

} // namespace LogRules
