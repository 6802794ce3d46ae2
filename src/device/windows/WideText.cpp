#include "WideText.h"

#include <windows.h>

namespace WideText {

std::wstring fromUtf8(const std::string &text)
{
    if (text.empty())
        return {};
    const int length = MultiByteToWideChar(CP_UTF8, 0, text.data(), int(text.size()), nullptr, 0);
    std::wstring wide(std::size_t(length > 0 ? length : 0), L'\0');
    if (length > 0)
        MultiByteToWideChar(CP_UTF8, 0, text.data(), int(text.size()), wide.data(), length);
    return wide;
}

std::string toUtf8(const wchar_t *text)
{
    const int length = text ? WideCharToMultiByte(CP_UTF8, 0, text, -1, nullptr, 0, nullptr, nullptr) : 0;
    if (length <= 1)
        return {};
    std::string narrow(std::size_t(length), '\0');
    WideCharToMultiByte(CP_UTF8, 0, text, -1, narrow.data(), length, nullptr, nullptr);
    narrow.resize(std::size_t(length - 1)); // the terminating zero the call counted
    return narrow;
}

} // namespace WideText
