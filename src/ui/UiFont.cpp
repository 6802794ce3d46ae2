#include "UiFont.h"

#include <QApplication>

namespace UiFont {

QFont desktop(qreal pointSize)
{
    QFont font = QApplication::font();
    font.setPointSizeF(pointSize);
    return font;
}

QFont shellDialog()
{
    QFont font(QStringLiteral("MS Shell Dlg 2"));
    font.setPointSizeF(QApplication::font().pointSizeF());
    return font;
}

void substituteWindowsFaces()
{
    // The attribute descriptions keep their HTML as written; the face they ask for is found here.
    const QString family = QApplication::font().family();
    for (const char *face : {"MS Shell Dlg 2", "Tahoma"})
        QFont::insertSubstitution(QString::fromLatin1(face), family);
}

} // namespace UiFont
