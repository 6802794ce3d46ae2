// What start-up asks of Windows, for real under wine: the WinPE value, the count of running
// copies and the executable's folder. The program starts copies of itself for the last two.
#include "settings/windows/ModuleFolder.h"
#include "settings/windows/ProcessSnapshot.h"
#include "settings/windows/WinPeKey.h"

#include "PlainCheck.h"

#include <windows.h>

#include <string>
#include <vector>

namespace {

constexpr const wchar_t *QuenmarkPath = L"Software\\Quenmark";
constexpr const wchar_t *ReleaseEvent = L"KorvaneStartupCallsRelease";

std::wstring ownPath()
{
    wchar_t path[MAX_PATH] = {};
    GetModuleFileNameW(nullptr, path, MAX_PATH);
    return path;
}

std::wstring ownName()
{
    const std::wstring path = ownPath();
    return path.substr(path.rfind(L'\\') + 1);
}

// Starts \a program with \a argument; its process handle, or null.
HANDLE start(const std::wstring &program, const std::wstring &argument)
{
    std::wstring line = L"\"" + program + L"\" " + argument;
    STARTUPINFOW startup{};
    startup.cb = sizeof startup;
    PROCESS_INFORMATION process{};
    if (!CreateProcessW(program.c_str(), line.data(), nullptr, nullptr, FALSE, 0, nullptr, nullptr, &startup, &process))
        return nullptr;
    CloseHandle(process.hThread);
    return process.hProcess;
}

void winPeValue()
{
    struct Row
    {
        const char *name;
        DWORD type;
        std::vector<BYTE> data;
        bool expected;
    };
    const Row rows[] = {
        {"DWORD 1", REG_DWORD, {1, 0, 0, 0}, true},
        {"DWORD 0x100", REG_DWORD, {0, 1, 0, 0}, true},
        {"DWORD 0", REG_DWORD, {0, 0, 0, 0}, false},
        {"text", REG_SZ, {'1', 0, 0, 0}, false},
        {"four binary bytes", REG_BINARY, {1, 0, 0, 0}, false},
        {"QWORD 1", REG_QWORD, {1, 0, 0, 0, 0, 0, 0, 0}, false},
    };
    RegDeleteKeyW(HKEY_CURRENT_USER, QuenmarkPath);
    CHECK(!WinPeKey::isSet()); // no key
    HKEY key = nullptr;
    CHECK(RegCreateKeyExW(HKEY_CURRENT_USER, QuenmarkPath, 0, nullptr, 0, KEY_ALL_ACCESS, nullptr, &key, nullptr)
          == ERROR_SUCCESS);
    CHECK(!WinPeKey::isSet()); // no value
    for (const Row &row : rows) {
        RegSetValueExW(key, L"WinPE", 0, row.type, row.data.data(), DWORD(row.data.size()));
        if (!CHECK_EQUAL(WinPeKey::isSet(), row.expected))
            std::printf("    WinPE as %s\n", row.name);
    }
    RegCloseKey(key);
    RegDeleteKeyW(HKEY_CURRENT_USER, QuenmarkPath);
}

void runningCopies()
{
    const std::wstring name = ownName();
    std::wstring upper = name;
    CharUpperBuffW(upper.data(), DWORD(upper.size()));
    CHECK_EQUAL(ProcessSnapshot::countProcesses(upper, 10), 1);
    CHECK(!ProcessSnapshot::isProcessRunning(name));

    const HANDLE release = CreateEventW(nullptr, TRUE, FALSE, ReleaseEvent);
    std::vector<HANDLE> copies;
    // One copy besides this one may still start; with two more, the third start is refused.
    const int expected[] = {2, 3};
    for (const int count : expected) {
        copies.push_back(start(ownPath(), L"wait"));
        CHECK(copies.back() != nullptr);
        // A copy shows in the snapshot once it has started, which a loaded machine may delay.
        for (int wait = 0; wait < 100 && ProcessSnapshot::countProcesses(name, 10) < count; ++wait)
            Sleep(100);
        CHECK_EQUAL(ProcessSnapshot::countProcesses(name, 10), count);
        CHECK_EQUAL(ProcessSnapshot::isProcessRunning(name), count > 2);
    }
    CHECK(!ProcessSnapshot::isProcessRunning(L"korvane-none.exe"));
    SetEvent(release);
    for (const HANDLE copy : copies) {
        WaitForSingleObject(copy, 10000);
        CloseHandle(copy);
    }
    CloseHandle(release);
}

// Run from a copy in a folder whose name has characters outside Latin-1: each keeps its low byte.
int folderOfCopy()
{
    return ModuleFolder::lowByteDirectory().ends_with(L"\\kv AB\\") ? 0 : 3;
}

void executableFolder()
{
    const std::wstring path = ownPath();
    CHECK_EQUAL(ModuleFolder::lowByteDirectory(), path.substr(0, path.rfind(L'\\') + 1));

    wchar_t temp[MAX_PATH] = {};
    GetTempPathW(MAX_PATH, temp);
    const std::wstring folder = std::wstring(temp) + L"kv \u0141\u0142\\"; // "Łł": low bytes "AB"
    CreateDirectoryW(folder.c_str(), nullptr);
    const std::wstring copy = folder + ownName();
    CHECK(CopyFileW(path.c_str(), copy.c_str(), FALSE));
    const HANDLE process = start(copy, L"folder");
    CHECK(process != nullptr);
    DWORD code = 1;
    if (process) {
        WaitForSingleObject(process, 20000);
        GetExitCodeProcess(process, &code);
        CloseHandle(process);
    }
    CHECK_EQUAL(static_cast<long long>(code), 0LL);
    DeleteFileW(copy.c_str());
    RemoveDirectoryW(folder.c_str());
}

} // namespace

int main(int argc, char **argv)
{
    if (argc > 1 && std::string(argv[1]) == "wait") {
        const HANDLE release = OpenEventW(SYNCHRONIZE, FALSE, ReleaseEvent);
        WaitForSingleObject(release, 20000);
        return 0;
    }
    if (argc > 1 && std::string(argv[1]) == "folder")
        return folderOfCopy();
    winPeValue();
    runningCopies();
    executableFolder();
    return PlainCheck::result("tst_startupcalls");
}
