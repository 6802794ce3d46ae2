#pragma once

#include <cstdio>
#include <optional>
#include <string>

/// Checks for the plain C++ test programs that run where QtTest cannot (cross-compiled for
/// Windows, under wine): each failed check prints its place and values, and the program's exit
/// code says whether any failed.
namespace PlainCheck {

/// The number of failed checks so far.
inline int &failures()
{
    static int count = 0;
    return count;
}

/// A value as the failure message shows it; wide text outside ASCII shows as "?".
inline std::string describe(const std::wstring &text)
{
    std::string shown = "\"";
    for (const wchar_t c : text)
        shown += c >= 0x20 && c < 0x7f ? static_cast<char>(c) : '?';
    return shown + "\"";
}
/// Narrow text as the failure message shows it.
inline std::string describe(const std::string &text)
{
    return "\"" + text + "\"";
}
/// Text that may be missing, as the failure message shows it.
inline std::string describe(const std::optional<std::wstring> &text)
{
    return text ? describe(*text) : std::string("nothing");
}
/// A number as the failure message shows it.
inline std::string describe(long long number)
{
    return std::to_string(number);
}

/// Counts and prints a failed check; \a condition back.
inline bool check(bool condition, const char *text, const char *file, int line)
{
    if (!condition) {
        ++failures();
        std::printf("FAIL %s:%d: %s\n", file, line, text);
    }
    return condition;
}

/// Counts and prints a check of \a actual against \a expected that failed; whether they are equal.
template <typename Actual, typename Expected>
bool checkEqual(const Actual &actual, const Expected &expected, const char *text, const char *file, int line)
{
    if (actual == expected)
        return true;
    ++failures();
    std::printf("FAIL %s:%d: %s\n    actual:   %s\n    expected: %s\n", file, line, text,
                describe(actual).c_str(), describe(expected).c_str());
    return false;
}

/// The exit code of a test program: 0 when every check passed; says how it went.
inline int result(const char *program)
{
    std::printf("%s: %s (%d failed)\n", program, failures() == 0 ? "PASS" : "FAIL", failures());
    return failures() == 0 ? 0 : 1;
}

} // namespace PlainCheck

/// Checks that \a condition holds.
#define CHECK(condition) PlainCheck::check((condition), #condition, __FILE__, __LINE__)
/// Checks that \a actual equals \a expected, printing both when not.
#define CHECK_EQUAL(actual, expected) \
    PlainCheck::checkEqual((actual), (expected), #actual " == " #expected, __FILE__, __LINE__)
