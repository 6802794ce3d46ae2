#include "AppVersion.h"

namespace AppVersion {

QString text()
{
    return QStringLiteral(KORVANE_VERSION);
}

} // namespace AppVersion
