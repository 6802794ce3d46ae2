#pragma once

#include <QString>

#include <optional>

/// The executable directory of a hidden start. Autostart starts the program with "hide"; its files
/// then belong beside the executable the autostart entry names, which is read back here.
namespace RegisteredFolder {

/// The Windows rule: the Run value \a runValue, when one was read, replaces \a moduleDirectory; the
/// text is cut at the first "Korvane64.exe" (\a is64BitBuild) or "Korvane.exe" in any case, its
/// double quotes go and "\" becomes "/".
QString fromRunValue(const QString &moduleDirectory, const std::optional<QString> &runValue, bool is64BitBuild);
/// The XDG rule: the folder (ending with "/") of the executable \a execValue starts, when that is an
/// absolute path to a file named Autostart::ExecutableName; else \a moduleDirectory.
QString fromExecValue(const QString &moduleDirectory, const std::optional<QString> &execValue);
/// This platform's rule over the command line its autostart entry holds now.
QString atHiddenStart(const QString &moduleDirectory, bool is64BitBuild);

} // namespace RegisteredFolder
