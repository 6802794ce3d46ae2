#pragma once

#include <QString>

/// Texts that must stay on one line: log records, printed event lines, settings lines.
namespace TextLine {

/// \a text with every control character (C0, DEL and C1) replaced by a space,
/// so that a model or serial from a disk can neither break a line nor forge one.
QString oneLine(const QString &text);

} // namespace TextLine
