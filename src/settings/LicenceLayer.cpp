#include "LicenceLayer.h"

QString windowTitle(const LicenceLayer &licence)
{
    return (licence.isRegistered() ? QStringLiteral("Korvane Build %1") : QStringLiteral("Korvane [Build %1 Free Version]"))
        .arg(licence.buildNumber());
}
