#pragma once

#include <QByteArray>
#include <QString>

/// Files a user would miss if half-written (exports, reports): written whole or not at all.
namespace WholeFile {

/// Writes \a bytes to \a path through a temporary file that replaces the old one only once it
/// is complete. On failure a file already there stays as it was, false is returned and \a error,
/// when given, says why.
bool write(const QString &path, const QByteArray &bytes, QString *error = nullptr);

} // namespace WholeFile
