#pragma once

#include <QFont>

/// The fonts of the window. Where a fixed Windows face is meant, the desktop's own UI font is
/// used at the same point size, so text fits the user's theme and renders crisply.
namespace UiFont {

/// The desktop's default UI font at \a pointSize points.
QFont desktop(qreal pointSize);
/// "MS Shell Dlg 2", the face the settings forms are laid out in, at the desktop's size; it is
/// drawn in the desktop's UI font once substituteWindowsFaces() ran.
QFont shellDialog();
/// Maps the Windows faces that rich texts and forms name ("MS Shell Dlg 2", "Tahoma") to the desktop's UI
/// font; call once after the application object exists.
void substituteWindowsFaces();

} // namespace UiFont
