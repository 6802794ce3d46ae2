#include "SystemLocale.h"

#include <windows.h>

namespace SystemLocale {

wchar_t decimalSeparator()
{
    // The machine's locale, not the user's: the size texts drop a separator the system would show.
    wchar_t text[4] = {};
    if (GetLocaleInfoW(GetSystemDefaultLCID(), LOCALE_SDECIMAL, text, 4) <= 1)
        return L'.';
    return text[0];
}

} // namespace SystemLocale
