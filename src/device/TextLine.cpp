#include "TextLine.h"

namespace TextLine {

QString oneLine(const QString &text)
{
    QString result = text;
    for (QChar &c : result) {
        const char16_t u = c.unicode();
        if (u < 0x20 || (u >= 0x7F && u <= 0x9F))
            c = QLatin1Char(' ');
    }
    return result;
}

} // namespace TextLine
