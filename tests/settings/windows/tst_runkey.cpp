// The Run key for real, in the registry of the test's own wine prefix.
#include "settings/AutostartResult.h"
#include "settings/windows/RunKey.h"

#include "PlainCheck.h"

#include <windows.h>

#include <vector>

namespace {

constexpr const wchar_t *RunPath = L"Software\\Microsoft\\Windows\\CurrentVersion\\Run";

// The value as the registry holds it, read without RunKey.
struct Stored
{
    bool present = false;
    DWORD type = REG_NONE;
    DWORD bytes = 0;
    std::wstring text;   // as many characters as the bytes hold, a terminating zero included
    DWORD valueCount = 0; // values under the key, ours and others
};

Stored stored()
{
    Stored value;
    HKEY key = nullptr;
    if (RegOpenKeyExW(HKEY_LOCAL_MACHINE, RunPath, 0, KEY_READ, &key) != ERROR_SUCCESS)
        return value;
    RegQueryInfoKeyW(key, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, &value.valueCount, nullptr,
                     nullptr, nullptr, nullptr);
    if (RegQueryValueExW(key, L"Korvane", nullptr, &value.type, nullptr, &value.bytes) == ERROR_SUCCESS) {
        std::vector<wchar_t> data(value.bytes / sizeof(wchar_t) + 1);
        DWORD bytes = value.bytes;
        value.present = RegQueryValueExW(key, L"Korvane", nullptr, nullptr, reinterpret_cast<BYTE *>(data.data()),
                                         &bytes) == ERROR_SUCCESS;
        value.text.assign(data.data(), bytes / sizeof(wchar_t));
    }
    RegCloseKey(key);
    return value;
}

// A fresh prefix may lack the key Windows always has; a value an earlier run left goes.
void prepareKey()
{
    HKEY key = nullptr;
    if (RegCreateKeyExW(HKEY_LOCAL_MACHINE, RunPath, 0, nullptr, 0, KEY_ALL_ACCESS, nullptr, &key, nullptr)
        == ERROR_SUCCESS) {
        RegDeleteValueW(key, L"Korvane");
        RegCloseKey(key);
    }
}

void commandLines()
{
    struct Row
    {
        const wchar_t *directory;
        bool is64;
        const wchar_t *expected;
    };
    const Row rows[] = {
        {L"C:\\Program Files\\Korvane\\", true, L"\"C:\\Program Files\\Korvane\\Korvane64.exe\" hide"},
        {L"C:\\Program Files (x86)\\Korvane\\", false, L"\"C:\\Program Files (x86)\\Korvane\\Korvane.exe\" hide"},
    };
    for (const Row &row : rows)
        CHECK_EQUAL(RunKey::commandLine(row.directory, row.is64), std::wstring(row.expected));
}

void enablingTwiceLeavesOneValue()
{
    const std::wstring line = RunKey::commandLine(L"C:\\Program Files\\Korvane\\", true);
    const DWORD othersBefore = stored().valueCount;
    for (int time = 0; time < 2; ++time) {
        CHECK_EQUAL(RunKey::setAutostart(true, line), int(Autostart::Done));
        const Stored value = stored();
        CHECK(value.present);
        CHECK_EQUAL(value.type, DWORD(REG_SZ));
        // The size counts the terminating zero, which is stored too.
        CHECK_EQUAL(value.bytes, DWORD((line.size() + 1) * sizeof(wchar_t)));
        CHECK_EQUAL(value.text, line + L'\0');
        CHECK_EQUAL(value.valueCount, othersBefore + 1);
        CHECK_EQUAL(RunKey::registeredCommandLine(), std::optional<std::wstring>(line));
    }
    CHECK_EQUAL(RunKey::setAutostart(false, std::wstring()), int(Autostart::Done));
    CHECK(!stored().present);
    CHECK_EQUAL(stored().valueCount, othersBefore);
}

void disablingWithoutAValueFails()
{
    CHECK(!stored().present);
    CHECK_EQUAL(RunKey::setAutostart(false, std::wstring()), int(Autostart::RemoveFailed));
    CHECK_EQUAL(RunKey::registeredCommandLine(), std::optional<std::wstring>());
}

void readBack()
{
    // The start-up code reads into 2048 bytes: 1023 characters and the zero fit, one more does not.
    const std::wstring fits(1023, L'k');
    CHECK_EQUAL(RunKey::setAutostart(true, fits), int(Autostart::Done));
    CHECK_EQUAL(RunKey::registeredCommandLine(), std::optional<std::wstring>(fits));
    CHECK_EQUAL(RunKey::setAutostart(true, fits + L" "), int(Autostart::Done));
    CHECK_EQUAL(RunKey::registeredCommandLine(), std::optional<std::wstring>());
    CHECK_EQUAL(RunKey::setAutostart(false, std::wstring()), int(Autostart::Done));
}

void missingKeyFails()
{
    CHECK(RegDeleteKeyW(HKEY_LOCAL_MACHINE, RunPath) == ERROR_SUCCESS);
    CHECK_EQUAL(RunKey::setAutostart(true, L"\"C:\\K\\Korvane64.exe\" hide"), int(Autostart::FolderUnavailable));
    CHECK_EQUAL(RunKey::setAutostart(false, std::wstring()), int(Autostart::FolderUnavailable));
    CHECK_EQUAL(RunKey::registeredCommandLine(), std::optional<std::wstring>());
    prepareKey();
}

} // namespace

int main()
{
    prepareKey();
    commandLines();
    enablingTwiceLeavesOneValue();
    disablingWithoutAValueFails();
    readBack();
    missingKeyFails();
    return PlainCheck::result("tst_runkey");
}
