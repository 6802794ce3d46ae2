#pragma once

#include <QList>
#include <QtGlobal>

/// A SMART value of a simulated disk as a function of the poll number (the
/// count of SMART READ DATA commands the disk has answered before): a
/// constant, a straight line that stops at a limit, or a list of values that
/// holds its last value or starts again. Being a pure function of the poll
/// number keeps a simulated disk's history reproducible.
class ValueSchedule
{
public:
    /// The same value at every poll.
    static ValueSchedule constant(quint64 value);
    /// start + step per \a every polls, kept within [lowest, highest].
    static ValueSchedule line(qint64 start, qint64 step, quint64 every, qint64 lowest, qint64 highest);
    /// values[poll]; past the end the last value, or from the start again when \a repeat.
    static ValueSchedule list(const QList<quint64> &values, bool repeat);

    /// The value answered at poll \a poll (0 for the first answer).
    quint64 valueAt(quint64 poll) const;
    /// The lowest value answered at polls 0..poll: what a drive keeps as "worst".
    quint64 lowestUpTo(quint64 poll) const;
    /// Whether every poll gives the same value.
    bool isConstant() const;

private:
    enum class Kind { Constant, Line, List };

    Kind m_kind = Kind::Constant;
    qint64 m_start = 0;
    qint64 m_step = 0;
    quint64 m_every = 1;
    qint64 m_lowest = 0;
    qint64 m_highest = 0;
    QList<quint64> m_values;
    bool m_repeat = false;
};
