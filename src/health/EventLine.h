#pragma once

#include <QString>
#include <QtGlobal>

/// Icon class of a line in the on-screen Events Log list.
enum class EventLineKind : qint32 {
    Information = 1,
    Warning = 2,
    Alarm = 3,
    MailError = 4,
};

/// One line for the on-screen Events Log list; the list adds the date and time itself.
struct EventLine
{
    EventLineKind kind = EventLineKind::Information;
    QString text;

    friend bool operator==(const EventLine &, const EventLine &) = default;
};
