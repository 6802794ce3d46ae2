#include "ProcessSnapshot.h"

#include <windows.h>

#include <tlhelp32.h>

namespace ProcessSnapshot {

namespace {

// The single-instance rule: the caller is one of the processes counted.
constexpr int kCopiesAllowed = 2;

bool sameName(const wchar_t *processName, const std::wstring &name)
{
    return CompareStringOrdinal(processName, -1, name.c_str(), int(name.size()), TRUE) == CSTR_EQUAL;
}

} // namespace

int countProcesses(const std::wstring &name, int stopAbove)
{
    const HANDLE snapshot = CreateToolhelp32Snapshot(TH32CS_SNAPALL, 0);
    if (snapshot == INVALID_HANDLE_VALUE)
        return 0;
    PROCESSENTRY32W entry{};
    // The size goes in before each call: it tells the system which form of the entry to fill.
    entry.dwSize = sizeof entry;
    int count = 0;
    for (BOOL more = Process32FirstW(snapshot, &entry); more && count <= stopAbove;
         more = Process32NextW(snapshot, &entry)) {
        if (sameName(entry.szExeFile, name))
            ++count;
        entry.dwSize = sizeof entry;
    }
    CloseHandle(snapshot);
    return count;
}

bool isProcessRunning(const std::wstring &name)
{
    return countProcesses(name, kCopiesAllowed) > kCopiesAllowed;
}

} // namespace ProcessSnapshot
