// The decimal separator of the size texts, read for real from wine's system locale, which wine
// takes from the Unix one: the test runs under LC_ALL=C, English to wine.
#include "device/windows/SystemLocale.h"

#include "PlainCheck.h"

int main()
{
    CHECK_EQUAL(std::wstring(1, SystemLocale::decimalSeparator()), std::wstring(L"."));
    return PlainCheck::result("tst_systemlocale");
}
