#include "RegisteredFolder.h"

#include "Autostart.h"
#include "windows/RunKey.h"

#include <QStringList>

namespace RegisteredFolder {

QString fromRunValue(const QString &moduleDirectory, const std::optional<QString> &runValue, bool is64BitBuild)
{
    QString directory = runValue.value_or(moduleDirectory);
    const qsizetype name =
        directory.indexOf(QString::fromWCharArray(RunKey::executableName(is64BitBuild)), 0, Qt::CaseInsensitive);
    // A value without the name is kept whole: the settings paths then reach a folder that is not
    // there and fall back to the per-user ones.
    if (name >= 0)
        directory.truncate(name);
    directory.remove(QLatin1Char('"'));
    directory.replace(QLatin1Char('\\'), QLatin1Char('/'));
    return directory;
}

QString fromExecValue(const QString &moduleDirectory, const std::optional<QString> &execValue)
{
    if (!execValue)
        return moduleDirectory;
    const QStringList arguments = Autostart::execArguments(*execValue);
    if (arguments.isEmpty())
        return moduleDirectory;
    // Only the path as a whole tells: a folder may itself be called korvane, or Korvane.
    const QString &executable = arguments.first();
    const qsizetype slash = executable.lastIndexOf(QLatin1Char('/'));
    if (!executable.startsWith(QLatin1Char('/')) || executable.mid(slash + 1) != QLatin1String(Autostart::ExecutableName))
        return moduleDirectory;
    return executable.left(slash + 1);
}

QString atHiddenStart(const QString &moduleDirectory, bool is64BitBuild)
{
#ifdef Q_OS_WIN
    return fromRunValue(moduleDirectory, Autostart::registeredCommandLine(), is64BitBuild);
#else
    Q_UNUSED(is64BitBuild);
    return fromExecValue(moduleDirectory, Autostart::registeredCommandLine());
#endif
}

} // namespace RegisteredFolder
