#pragma once

#include "DiskRecord.h"

#include <QByteArray>
#include <QList>
#include <QString>

/// The plain-text SMART report of every disk ("Save SMART info"), for the window and korvanectl.
namespace SmartReport {

/// Per disk in list order: a header naming the model, one "id value raw worst threshold" line per
/// attribute row, and a line of 24 hyphens; CRLF line ends, local 8-bit encoding. Empty for no disks.
QByteArray text(const QList<DiskRecord> &disks);

/// Writes text(disks) to \a path whole or not at all: on failure a file already there stays as it
/// was, false is returned and \a error, when given, says why.
bool save(const QString &path, const QList<DiskRecord> &disks, QString *error = nullptr);

/// Message for a report that could not be written to \a path.
QString failedMessage(const QString &path);
/// Message for a report written to \a path.
QString savedMessage(const QString &path);

} // namespace SmartReport
