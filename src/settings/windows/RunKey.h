#pragma once

#include <optional>
#include <string>

/// The machine-wide Run key of the registry (HKEY_LOCAL_MACHINE), whose value "Korvane" makes
/// Windows start the program hidden at logon. Plain C++ over the Win32 registry calls, no Qt.
namespace RunKey {

/// The executable's file name in the 64-bit (\a is64BitBuild) or the 32-bit build.
constexpr const wchar_t *executableName(bool is64BitBuild)
{
    return is64BitBuild ? L"Korvane64.exe" : L"Korvane.exe";
}

/// The command line that starts the executable of \a executableDirectory (which ends with a
/// separator) hidden: the quoted path, a blank and "hide".
std::wstring commandLine(const std::wstring &executableDirectory, bool is64BitBuild);

/// Writes (\a enable) or deletes the value holding \a commandLine; an Autostart::Result code.
int setAutostart(bool enable, const std::wstring &commandLine);

/// The registered command line, or nothing when the value cannot be read (missing, over 2048 bytes).
std::optional<std::wstring> registeredCommandLine();

} // namespace RunKey
