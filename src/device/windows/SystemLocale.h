#pragma once

/// What the size texts take from the system's locale settings.
namespace SystemLocale {

/// The decimal separator of the system default locale (GetSystemDefaultLCID), or '.' when it
/// cannot be read.
wchar_t decimalSeparator();

} // namespace SystemLocale
