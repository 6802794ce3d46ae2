#include "ValueSchedule.h"

#include <algorithm>
#include <limits>

ValueSchedule ValueSchedule::constant(quint64 value)
{
    ValueSchedule s;
    s.m_kind = Kind::Constant;
    s.m_values = {value};
    return s;
}

ValueSchedule ValueSchedule::line(qint64 start, qint64 step, quint64 every, qint64 lowest, qint64 highest)
{
    ValueSchedule s;
    s.m_kind = Kind::Line;
    s.m_start = start;
    s.m_step = step;
    s.m_every = std::max<quint64>(every, 1);
    s.m_lowest = lowest;
    s.m_highest = std::max(lowest, highest);
    return s;
}

ValueSchedule ValueSchedule::list(const QList<quint64> &values, bool repeat)
{
    ValueSchedule s;
    s.m_kind = Kind::List;
    s.m_values = values.isEmpty() ? QList<quint64>{0} : values;
    s.m_repeat = repeat;
    return s;
}

quint64 ValueSchedule::valueAt(quint64 poll) const
{
    switch (m_kind) {
    case Kind::Constant:
        return m_values.first();
    case Kind::Line: {
        // A counter that runs for months must not wrap: saturate, then clamp.
        const quint64 steps = poll / m_every;
        qint64 offset = 0;
        if (steps > quint64(std::numeric_limits<qint64>::max())
            || __builtin_mul_overflow(m_step, qint64(steps), &offset)) {
            return quint64(m_step < 0 ? m_lowest : m_highest);
        }
        qint64 value = 0;
        if (__builtin_add_overflow(m_start, offset, &value))
            value = m_step < 0 ? m_lowest : m_highest;
        return quint64(std::clamp(value, m_lowest, m_highest));
    }
    case Kind::List: {
        const quint64 n = quint64(m_values.size());
        if (poll < n)
            return m_values.at(qsizetype(poll));
        return m_repeat ? m_values.at(qsizetype(poll % n)) : m_values.last();
    }
    }
    return 0;
}

quint64 ValueSchedule::lowestUpTo(quint64 poll) const
{
    switch (m_kind) {
    case Kind::Constant:
        return m_values.first();
    case Kind::Line:
        // A line only moves one way, so one of its ends is the lowest point.
        return std::min(valueAt(0), valueAt(poll));
    case Kind::List: {
        const qsizetype seen = qsizetype(std::min<quint64>(poll + 1, quint64(m_values.size())));
        return *std::min_element(m_values.cbegin(), m_values.cbegin() + seen);
    }
    }
    return 0;
}

bool ValueSchedule::isConstant() const
{
    switch (m_kind) {
    case Kind::Constant:
        return true;
    case Kind::Line:
        return m_step == 0 || m_lowest == m_highest;
    case Kind::List:
        return std::all_of(m_values.cbegin(), m_values.cend(), [this](quint64 v) { return v == m_values.first(); });
    }
    return true;
}
