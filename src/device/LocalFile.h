#pragma once

#include <QString>

/// Checks made before Korvane opens a file by name. A FIFO or a device blocks an open or never
/// ends a read, and appending through a link to nothing would create a file the user never named.
namespace LocalFile {

/// What \a path is when it is not usable as a regular file, following symbolic links, as a
/// clause that follows "it is" ("a FIFO (named pipe), not a regular file", "a symbolic link to
/// /x, which does not exist"); empty when it is a regular file or when nothing is there.
/// Nothing is opened.
QString notRegular(const QString &path);

} // namespace LocalFile
