#include "ExternalTaskRunner.h"

#include <QFileInfo>
#include <QProcess>

#ifdef Q_OS_WIN
#include "windows/ShellOpen.h"
#endif

ExternalTaskRunner::ExternalTaskRunner()
    : ExternalTaskRunner([](const QString &program, const QStringList &arguments) {
#ifdef Q_OS_WIN
          // The shell's "open" starts a program and opens any other file in its own program alike.
          return arguments.isEmpty() ? ShellOpen::open(program.toStdWString())
                                     : QProcess::startDetached(program, arguments);
#else
          return QProcess::startDetached(program, arguments);
#endif
      })
{
}

ExternalTaskRunner::ExternalTaskRunner(Starter starter) : m_starter(std::move(starter)) {}

std::optional<EventLine> ExternalTaskRunner::run(HealthState level, const QString &command)
{
    if (command.isEmpty())
        return std::nullopt;
    const QString why = start(command);
    if (why.isEmpty()) {
        m_failedCommand.clear();
        return std::nullopt;
    }
    if (command == m_failedCommand)
        return std::nullopt;
    m_failedCommand = command;
    const QString which = level == HealthAlarm ? QStringLiteral("critical") : QStringLiteral("warning");
    return EventLine{EventLineKind::MailError,
                     QStringLiteral("The %1 task \"%2\" was not started: %3").arg(which, command, why)};
}

QString ExternalTaskRunner::start(const QString &command)
{
    if (command.size() > MaxCommandLength)
        return QStringLiteral("the setting is longer than %1 characters").arg(MaxCommandLength);
    const QFileInfo file(command);
    if (!file.exists())
        return QStringLiteral("there is no such file");
    if (file.isDir())
        return QStringLiteral("it is a folder, not a file");
#ifdef Q_OS_WIN
    // The setting as it stands is the file the shell opens, whatever its kind.
    return m_starter(command, {}) ? QString() : QStringLiteral("the shell could not open it");
#else
    if (file.isExecutable())
        return m_starter(file.absoluteFilePath(), {}) ? QString() : QStringLiteral("the program could not be started");
    // Any other file is opened as the desktop opens it when double-clicked.
    return m_starter(QStringLiteral("xdg-open"), {file.absoluteFilePath()})
               ? QString()
               : QStringLiteral("xdg-open, which opens it, could not be started");
#endif
}
