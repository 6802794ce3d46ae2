#include "ShellOpen.h"

#include <windows.h>

#include <shellapi.h>

#include <cwchar>

namespace ShellOpen {

bool open(const std::wstring &file)
{
    // A longer name would lose its end and start another file than the one set.
    if (file.size() > kMaxLength)
        return false;
    wchar_t buffer[kMaxLength + 1] = {};
    std::wmemcpy(buffer, file.data(), file.size());
    const HINSTANCE result = ShellExecuteW(nullptr, L"open", buffer, nullptr, nullptr, SW_SHOWNORMAL);
    // The shell's old convention: a value above 32 is success, anything else an error code.
    return reinterpret_cast<INT_PTR>(result) > 32;
}

} // namespace ShellOpen
