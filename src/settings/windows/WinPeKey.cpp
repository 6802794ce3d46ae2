#include "WinPeKey.h"

#include <windows.h>

namespace WinPeKey {

bool isSet()
{
    HKEY key = nullptr;
    if (RegOpenKeyExW(HKEY_CURRENT_USER, L"Software\\Quenmark", 0, KEY_READ, &key) != ERROR_SUCCESS)
        return false;
    DWORD type = REG_NONE;
    DWORD value = 0;
    DWORD bytes = sizeof value;
    const LSTATUS status =
        RegQueryValueExW(key, L"WinPE", nullptr, &type, reinterpret_cast<BYTE *>(&value), &bytes);
    RegCloseKey(key);
    // A value of another size does not fit the four bytes and fails the read; a four-byte one of
    // another type (a REG_BINARY) says nothing about the boot disk either.
    return status == ERROR_SUCCESS && type == REG_DWORD && bytes == sizeof value && value != 0;
}

} // namespace WinPeKey
