#pragma once

#include <QString>

/// Counts the running processes whose name equals \a name, ignoring case. A process name is the
/// kernel's (the executable's file name, cut to 15 characters), so \a name is compared up to
/// that length. \a procRoot is the proc file system (tests give a folder of their own).
int countProcesses(const QString &name, const QString &procRoot = QStringLiteral("/proc"));

/// True when at least three processes named \a name run. The caller counts itself, so a second
/// copy may start and a third may not.
bool isProcessRunning(const QString &name);
