#include "Autostart.h"

#include "AppSettings.h"

#ifdef Q_OS_WIN
#include "windows/RunKey.h"
#endif

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QSaveFile>
#include <QStandardPaths>

namespace Autostart {

namespace {

// The string level of a desktop entry value: \s \n \t \r and \\ stand for one character each.
// Any other backslash is left for the quoting level to judge.
QString unescapeString(const QString &value)
{
    QString text;
    for (qsizetype i = 0; i < value.size(); ++i) {
        const QChar c = value.at(i);
        const QChar next = i + 1 < value.size() ? value.at(i + 1) : QChar();
        const int known = QStringLiteral("sntr\\").indexOf(next);
        if (c != QLatin1Char('\\') || known < 0) {
            text += c;
            continue;
        }
        text += QStringLiteral(" \n\t\r\\").at(known);
        ++i;
    }
    return text;
}

bool isBlank(QChar c)
{
    return c == QLatin1Char(' ') || c == QLatin1Char('\t') || c == QLatin1Char('\n');
}

#ifndef Q_OS_WIN
// The Exec line of the [Desktop Entry] group of \a entry; other groups (actions) have their own.
std::optional<QString> execValueOf(const QByteArray &entry)
{
    bool inEntryGroup = false;
    for (const QByteArray &rawLine : entry.split('\n')) {
        const QString line = QString::fromUtf8(rawLine).trimmed();
        if (line.startsWith(QLatin1Char('['))) {
            inEntryGroup = line == QStringLiteral("[Desktop Entry]");
            continue;
        }
        const qsizetype equals = line.indexOf(QLatin1Char('='));
        if (inEntryGroup && equals > 0 && QStringView(line).left(equals).trimmed() == QStringLiteral("Exec"))
            return line.mid(equals + 1).trimmed();
    }
    return std::nullopt;
}
#endif

} // namespace

QString entryPath()
{
    return QStandardPaths::writableLocation(QStandardPaths::GenericConfigLocation)
        + QStringLiteral("/autostart/korvane.desktop");
}

QString execLine(const QString &executable)
{
    // Inside the quotes, four characters are escaped with a backslash; then the whole value is
    // a desktop-entry string, where a backslash is written twice and "%" starts a field code.
    QString quoted;
    for (const QChar c : executable) {
        if (c == QLatin1Char('"') || c == QLatin1Char('`') || c == QLatin1Char('$') || c == QLatin1Char('\\'))
            quoted += QLatin1Char('\\');
        quoted += c;
    }
    quoted.replace(QLatin1Char('\\'), QStringLiteral("\\\\"));
    quoted.replace(QLatin1Char('%'), QStringLiteral("%%"));
    return QStringLiteral("\"%1\" %2").arg(quoted, QStringLiteral("hide"));
}

QStringList execArguments(const QString &exec)
{
    // The string level first, then the field codes, then the quoting, as session managers read it.
    const QString text = unescapeString(exec).replace(QStringLiteral("%%"), QStringLiteral("%"));
    QStringList arguments;
    QString current;
    bool inArgument = false;
    bool quoted = false;
    for (qsizetype i = 0; i < text.size(); ++i) {
        const QChar c = text.at(i);
        const QChar next = i + 1 < text.size() ? text.at(i + 1) : QChar();
        if (!quoted && isBlank(c)) {
            if (inArgument)
                arguments.append(current);
            current.clear();
            inArgument = false;
            continue;
        }
        inArgument = true;
        if (c == QLatin1Char('"')) {
            quoted = !quoted;
        } else if (c == QLatin1Char('\\') && !next.isNull()
                   && (!quoted || QStringLiteral("\"`$\\").contains(next))) {
            current += next;
            ++i;
        } else {
            current += c;
        }
    }
    if (quoted)
        return {};
    if (inArgument)
        arguments.append(current);
    return arguments;
}

int setAutostart(bool enable, const QString &executable)
{
    const QString path = entryPath();
    if (!enable)
        return QFile::exists(path) && QFile::remove(path) ? Done : RemoveFailed;
    if (!QDir().mkpath(QFileInfo(path).path()))
        return FolderUnavailable;
    // Written whole or not at all: a session manager must never read half an entry.
    QSaveFile file(path);
    if (!file.open(QIODevice::WriteOnly))
        return WriteFailed;
    const QString entry = QStringLiteral("[Desktop Entry]\n"
                                         "Type=Application\n"
                                         "Name=Korvane\n"
                                         "Comment=Watches the health of your hard disks\n"
                                         "Exec=%1\n"
                                         "Icon=korvane\n"
                                         "Terminal=false\n"
                                         "X-GNOME-Autostart-enabled=true\n")
                              .arg(execLine(executable));
    file.write(entry.toUtf8());
    return file.commit() ? Done : WriteFailed;
}

int setAutostart(bool enable)
{
    const AppSettings &settings = appSettings();
#ifdef Q_OS_WIN
    return RunKey::setAutostart(
        enable, RunKey::commandLine(settings.executableDirectory.toStdWString(), settings.is64BitBuild));
#else
    return setAutostart(enable, settings.executableDirectory + QLatin1String(ExecutableName));
#endif
}

std::optional<QString> registeredCommandLine()
{
#ifdef Q_OS_WIN
    if (const std::optional<std::wstring> value = RunKey::registeredCommandLine())
        return QString::fromStdWString(*value);
    return std::nullopt;
#else
    QFile file(entryPath());
    if (!file.open(QIODevice::ReadOnly))
        return std::nullopt;
    return execValueOf(file.readAll());
#endif
}

} // namespace Autostart
