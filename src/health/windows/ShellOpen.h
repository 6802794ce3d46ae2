#pragma once

#include <string>

/// Starts a file the way the shell opens it (an executable runs, a document opens in its
/// program). Plain C++ over Win32, no Qt.
namespace ShellOpen {

/// Longest file name in UTF-16 units: the name travels in a buffer of 128 units with its zero.
inline constexpr std::size_t kMaxLength = 127;

/// Opens \a file with the shell's "open" verb, without arguments or working folder, shown
/// normally. False when \a file is longer than kMaxLength (nothing is started) or the shell
/// reports a failure.
bool open(const std::wstring &file);

} // namespace ShellOpen
