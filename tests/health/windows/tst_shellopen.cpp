// The external task started through the shell for real under wine: a batch file that leaves a
// mark, at the longest name the 128-unit buffer takes and one unit beyond.
#include "health/windows/ShellOpen.h"

#include "PlainCheck.h"

#include <windows.h>

#include <string>

namespace {

std::wstring tempFolder()
{
    wchar_t temp[MAX_PATH] = {};
    GetTempPathW(MAX_PATH, temp);
    return temp;
}

// A batch file of exactly \a length units that writes \a mark.
std::wstring batchOfLength(const std::wstring &folder, std::size_t length, const std::wstring &mark)
{
    std::wstring path = folder + L"t";
    path.append(length - path.size() - 4, L'x');
    path += L".bat";
    const HANDLE file = CreateFileW(path.c_str(), GENERIC_WRITE, 0, nullptr, CREATE_ALWAYS, 0, nullptr);
    std::string text = "@echo started> \"";
    for (const wchar_t c : mark)
        text += char(c);
    text += "\"\r\n";
    DWORD written = 0;
    WriteFile(file, text.data(), DWORD(text.size()), &written, nullptr);
    CloseHandle(file);
    return path;
}

bool appears(const std::wstring &path)
{
    for (int wait = 0; wait < 100; ++wait, Sleep(100))
        if (GetFileAttributesW(path.c_str()) != INVALID_FILE_ATTRIBUTES)
            return true;
    return false;
}

} // namespace

int main()
{
    const std::wstring folder = tempFolder() + L"kvshell\\";
    CreateDirectoryW(folder.c_str(), nullptr);
    const std::wstring mark = folder + L"started.txt";
    DeleteFileW(mark.c_str());

    const std::wstring longest = batchOfLength(folder, ShellOpen::kMaxLength, mark);
    const std::wstring tooLong = batchOfLength(folder, ShellOpen::kMaxLength + 1, mark);
    CHECK(!ShellOpen::open(tooLong));
    CHECK(!ShellOpen::open(folder + L"missing.bat"));
    Sleep(500);
    CHECK(GetFileAttributesW(mark.c_str()) == INVALID_FILE_ATTRIBUTES);

    CHECK(ShellOpen::open(longest));
    CHECK(appears(mark));

    Sleep(300);
    DeleteFileW(mark.c_str());
    DeleteFileW(longest.c_str());
    DeleteFileW(tooLong.c_str());
    RemoveDirectoryW(folder.c_str());
    return PlainCheck::result("tst_shellopen");
}
