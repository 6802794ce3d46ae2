#pragma once

#include <QByteArray>
#include <QString>

/// File and folder names the user gives as bytes (command-line arguments,
/// environment variables), made into paths Qt can open.
///
/// Qt reads file names as UTF-8 on Unix, so a name in another encoding (a
/// Latin-1 "démo" from an older system) would decode to replacement
/// characters and name another file, or create another folder.
namespace UserPath {

/// A path that opens the file or folder \a bytes names: the UTF-8 text when
/// \a bytes is valid UTF-8; otherwise, on Linux, a /proc/self/fd path of it
/// opened once for the rest of the process (with \a createFolder, the folder is
/// made first when it is missing). Empty, with the reason in \a error, when it
/// cannot be named so.
QString fromLocalBytes(const QByteArray &bytes, bool createFolder, QString *error);

/// Why a file whose name is not valid UTF-8 cannot be read: Qt can neither list nor open it.
QString notUtf8Text();

/// \a bytes for messages: the UTF-8 text, with every byte that is not valid
/// UTF-8 shown as \xNN.
QString displayName(const QByteArray &bytes);

} // namespace UserPath
