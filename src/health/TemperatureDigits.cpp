#include "TemperatureDigits.h"

#include <array>
#include <initializer_list>

namespace TemperatureDigits {
namespace {

struct Stroke
{
    int x1, y1, x2, y2;
};

// The glyphs are irregular on purpose (2, 3, 5 and 7 start their bars at different columns);
// users know the icon by them, so they stay exactly as drawn.
const std::array<std::initializer_list<Stroke>, 10> &glyphs()
{
    static const std::array<std::initializer_list<Stroke>, 10> table = {{
        {{0, 1, 0, 4}, {0, 6, 0, 9}, {4, 1, 4, 4}, {4, 6, 4, 9}, {1, 0, 3, 0}, {1, 10, 3, 10}},
        {{4, 0, 4, 4}, {4, 6, 4, 10}},
        {{0, 6, 0, 9}, {4, 1, 4, 4}, {0, 0, 3, 0}, {1, 10, 4, 10}, {1, 5, 3, 5}},
        {{4, 1, 4, 4}, {4, 6, 4, 9}, {0, 0, 3, 0}, {0, 5, 3, 5}, {0, 10, 3, 10}},
        {{0, 0, 0, 4}, {4, 0, 4, 4}, {4, 6, 4, 10}, {1, 5, 3, 5}},
        {{0, 1, 0, 4}, {4, 6, 4, 9}, {1, 0, 4, 0}, {0, 10, 3, 10}, {1, 5, 3, 5}},
        {{0, 1, 0, 4}, {0, 6, 0, 9}, {4, 6, 4, 9}, {1, 0, 3, 0}, {1, 10, 3, 10}, {1, 5, 3, 5}},
        {{4, 1, 4, 4}, {0, 0, 3, 0}, {4, 6, 4, 10}},
        {{0, 1, 0, 4}, {0, 6, 0, 9}, {4, 1, 4, 4}, {4, 6, 4, 9}, {1, 0, 3, 0}, {1, 10, 3, 10}, {1, 5, 3, 5}},
        {{0, 1, 0, 4}, {4, 1, 4, 4}, {4, 6, 4, 9}, {1, 0, 3, 0}, {1, 10, 3, 10}, {1, 5, 3, 5}},
    }};
    return table;
}

} // namespace

QList<QLine> strokes(const QString &text)
{
    // Three characters overflow the icon by one column on the left; that cut is part of the look.
    int x = 6;
    int step = 1;
    if (text.size() == 3) {
        x = -1;
        step = 6;
    } else if (text.size() == 2) {
        x = 2;
        step = 7;
    }
    QList<QLine> lines;
    for (const QChar c : text) {
        if (c >= QLatin1Char('0') && c <= QLatin1Char('9')) {
            for (const Stroke &s : glyphs()[c.unicode() - '0'])
                lines.append(QLine(x + s.x1, s.y1, x + s.x2, s.y2));
        }
        x += step;
    }
    return lines;
}

} // namespace TemperatureDigits
