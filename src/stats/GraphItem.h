#pragma once

#include <QLine>
#include <QPoint>
#include <QRect>
#include <QString>
#include <Qt>

/// One stroke of the temperature graph's frame: a line, or a text in a box or at a baseline
/// point. Items are drawn in list order, each over the ones before.
struct GraphItem
{
    /// What the item draws.
    enum Kind { Line, Text };

    Kind kind = Line;                   ///< a line or a text
    Qt::GlobalColor colour = Qt::white; ///< of the pen
    QLine line;           ///< Line: from, to
    bool dashed = false;  ///< Line: a dashed pen instead of a solid one
    QString text;         ///< Text
    QRect box;            ///< Text: the box it is aligned in; null for a text at a point
    QPoint at;            ///< Text: the start of its baseline, when box is null
    int alignment = 0;    ///< Text: Qt::Alignment flags in the box
    int pointSize = 7;    ///< Text: size of the graph's font
};

/// One temperature point of the graph, in pixels; drawn with a pen two pixels wide.
struct GraphPoint
{
    qint32 x = 0;                       ///< column
    qint32 y = 0;                       ///< row
    Qt::GlobalColor colour = Qt::white; ///< the disk's colour
};
