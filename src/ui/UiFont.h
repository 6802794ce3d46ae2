#pragma once

#include <QFont>

/// The fonts of the window. Where a fixed Windows face is meant, the desktop's own UI font is
/// used at the same point size, so text fits the user's theme and renders crisply.
namespace UiFont {

/// The desktop's default UI font at \a pointSize points.
QFont desktop(qreal pointSize);
/// Maps the Windows faces that rich texts name ("MS Shell Dlg 2", "Tahoma") to the desktop's UI
/// font; call once after the application object exists.
void substituteWindowsFaces();

} // namespace UiFont
