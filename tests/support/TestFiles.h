#pragma once

#include <QByteArray>
#include <QString>

/// Whole-file reads and writes for setting up and checking files in tests.
namespace TestFiles {

/// Replaces the file at \a path with \a content; false when it could not be written whole.
bool write(const QString &path, const QByteArray &content);
/// The bytes of the file at \a path; empty when it cannot be read.
QByteArray read(const QString &path);

} // namespace TestFiles
