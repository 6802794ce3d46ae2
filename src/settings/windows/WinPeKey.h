#pragma once

/// The per-user registry value that marks a run from a pre-installation boot disk
/// (HKEY_CURRENT_USER "Software\Quenmark", value "WinPE"). Plain C++ over the Win32 registry calls.
namespace WinPeKey {

/// True when the value is there as a non-zero REG_DWORD; false when the key or the value is
/// missing, unreadable or of another type or size.
bool isSet();

} // namespace WinPeKey
