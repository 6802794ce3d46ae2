#pragma once

#include "EventLine.h"
#include "HealthState.h"

#include <QString>
#include <QStringList>

#include <functional>
#include <optional>

/// Starts the program the user set for the warning or the alarm level. The whole setting is the
/// file to start, without arguments: an executable is started detached, any other file is opened
/// with the desktop's default application.
class ExternalTaskRunner
{
public:
    /// Starts \a program with \a arguments detached; true when it started.
    using Starter = std::function<bool(const QString &program, const QStringList &arguments)>;

    /// A runner that starts programs with QProcess::startDetached.
    ExternalTaskRunner();
    /// A runner that starts programs through \a starter (tests give a fake).
    explicit ExternalTaskRunner(Starter starter);

    /// Longest command in UTF-16 units; the original buffer held 128 units with the terminator.
    static constexpr int MaxCommandLength = 127;

    /// Starts \a command for an evaluation at \a level; an Events Log line when it cannot, given
    /// once until a task starts again or the command changes, so a lasting failure is not
    /// repeated on every poll.
    std::optional<EventLine> run(HealthState level, const QString &command);

private:
    /// Why \a command cannot be started, or empty when it was started.
    QString start(const QString &command);

    Starter m_starter;
    QString m_failedCommand; ///< the command whose failure was reported last
};
