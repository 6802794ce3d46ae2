#include "TextLine.h"

#include <algorithm>

namespace TextLine {

namespace {

bool isControl(QChar c)
{
    const char16_t u = c.unicode();
    return u < 0x20 || (u >= 0x7F && u <= 0x9F);
}

} // namespace

QString oneLine(const QString &text)
{
    // Nearly every text is clean already: it is handed back shared instead of copied.
    const auto first = std::find_if(text.cbegin(), text.cend(), isControl);
    if (first == text.cend())
        return text;
    QString result = text;
    for (qsizetype i = first - text.cbegin(); i < result.size(); ++i) {
        if (isControl(result.at(i)))
            result[i] = QLatin1Char(' ');
    }
    return result;
}

} // namespace TextLine
