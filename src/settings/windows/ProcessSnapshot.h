#pragma once

#include <string>

/// The running processes, from a Toolhelp snapshot. Plain C++ over Win32, no Qt.
namespace ProcessSnapshot {

/// The number of processes whose executable name equals \a name, ignoring case (stopping early
/// once more than \a stopAbove are found); 0 when no snapshot can be taken.
int countProcesses(const std::wstring &name, int stopAbove);

/// True when at least three processes named \a name run. The caller counts itself, so a second
/// copy may start and a third may not.
bool isProcessRunning(const std::wstring &name);

} // namespace ProcessSnapshot
