#pragma once

#include <QString>

/// Appends "<date> <time>    <message>" to KVdet.log in the current directory (not the
/// program's folder: a user who starts it with -detlog finds the trace where they are).
/// \a startNew empties the file first. A file that cannot be opened is skipped silently:
/// the trace must never stop the program. Callers check detailLogEnabled first.
void writeDetailLog(bool startNew, const QString &message);
