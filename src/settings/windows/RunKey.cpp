#include "RunKey.h"

#include "settings/AutostartResult.h"

#include <windows.h>

namespace RunKey {

namespace {

// Registry names are case-insensitive; this is the spelling the program has always used.
constexpr const wchar_t *RunPath = L"software\\Microsoft\\Windows\\CurrentVersion\\Run";
constexpr const wchar_t *ValueName = L"Korvane";
// The read-back buffer of the start-up code; a longer value counts as unreadable.
constexpr DWORD ReadBufferBytes = 2048;

} // namespace

std::wstring commandLine(const std::wstring &executableDirectory, bool is64BitBuild)
{
    // Quoted, so that a folder with blanks stays one argument.
    return L"\"" + executableDirectory + executableName(is64BitBuild) + L"\" hide";
}

int setAutostart(bool enable, const std::wstring &commandLine)
{
    HKEY key = nullptr;
    if (RegOpenKeyExW(HKEY_LOCAL_MACHINE, RunPath, 0, KEY_ALL_ACCESS, &key) != ERROR_SUCCESS)
        return Autostart::FolderUnavailable;
    if (enable) {
        // A REG_SZ's size counts its terminating zero.
        const DWORD bytes = static_cast<DWORD>((commandLine.size() + 1) * sizeof(wchar_t));
        if (RegSetValueExW(key, ValueName, 0, REG_SZ, reinterpret_cast<const BYTE *>(commandLine.c_str()), bytes)
            != ERROR_SUCCESS) {
            RegCloseKey(key);
            return Autostart::WriteFailed;
        }
    } else if (RegDeleteValueW(key, ValueName) != ERROR_SUCCESS) {
        RegCloseKey(key);
        return Autostart::RemoveFailed;
    }
    RegCloseKey(key);
    return Autostart::Done;
}

std::optional<std::wstring> registeredCommandLine()
{
    HKEY key = nullptr;
    if (RegOpenKeyExW(HKEY_LOCAL_MACHINE, RunPath, 0, KEY_READ, &key) != ERROR_SUCCESS)
        return std::nullopt;
    wchar_t buffer[ReadBufferBytes / sizeof(wchar_t)] = {};
    DWORD bytes = ReadBufferBytes;
    const LSTATUS status = RegQueryValueExW(key, ValueName, nullptr, nullptr, reinterpret_cast<BYTE *>(buffer), &bytes);
    RegCloseKey(key);
    if (status != ERROR_SUCCESS)
        return std::nullopt;
    // The stored zero may be missing (the registry keeps what a writer gave it), or be followed by more.
    std::wstring text(buffer, bytes / sizeof(wchar_t));
    return text.substr(0, text.find(L'\0'));
}

} // namespace RunKey
