#pragma once

#include <string>

/// Conversions between the seam's UTF-8 text and the UTF-16 of the Win32 calls.
namespace WideText {

/// \a text (UTF-8) as UTF-16.
std::wstring fromUtf8(const std::string &text);
/// \a text (UTF-16, up to its first zero) as UTF-8.
std::string toUtf8(const wchar_t *text);

} // namespace WideText
