#include "FreeEdition.h"

#include "AppVersion.h"

QString FreeEdition::buildNumber() const
{
    return AppVersion::text();
}

QString FreeEdition::registrationText() const
{
    return QStringLiteral("<p><b>Korvane %1</b> is free software under the MIT licence.</p>"
                          "<p>Every feature is yours to use, on as many computers as you like: "
                          "there is nothing to register and no key to enter.</p>")
        .arg(buildNumber());
}
