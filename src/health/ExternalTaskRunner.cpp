#include "ExternalTaskRunner.h"

#include <QFileInfo>
#include <QProcess>

ExternalTaskRunner::ExternalTaskRunner()
    : ExternalTaskRunner([](const QString &program, const QStringList &arguments) {
          return QProcess::startDetached(program, arguments);
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
    if (file.isExecutable())
        return m_starter(file.absoluteFilePath(), {}) ? QString() : QStringLiteral("the program could not be started");
    // Any other file is opened as the desktop opens it when double-clicked.
    return m_starter(QStringLiteral("xdg-open"), {file.absoluteFilePath()})
               ? QString()
               : QStringLiteral("xdg-open, which opens it, could not be started");
}
