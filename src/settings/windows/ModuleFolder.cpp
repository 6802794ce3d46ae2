#include "ModuleFolder.h"

#include <windows.h>

namespace ModuleFolder {

std::wstring lowByteDirectory()
{
    wchar_t path[MAX_PATH] = {};
    const DWORD length = GetModuleFileNameW(nullptr, path, MAX_PATH);
    if (length == 0)
        return {};
    std::wstring directory;
    // A name cut at the buffer's end carries no terminating zero on older Windows.
    for (DWORD i = 0; i < length && i < MAX_PATH && path[i] != L'\0'; ++i)
        directory += wchar_t(path[i] & 0xFF);
    directory.resize(directory.rfind(L'\\') + 1); // npos + 1: no separator leaves nothing
    return directory;
}

} // namespace ModuleFolder
