#include "StartupOptions.h"

#include "AppSettings.h"

void applyArguments(AppSettings &settings, const QStringList &arguments)
{
    if (arguments.size() < 2)
        return;
    const QString &first = arguments.at(1);
    if (first == QLatin1String("hide"))
        settings.showMainWindow = false;
    else if (first == QLatin1String("-detlog"))
        settings.detailLogEnabled = true;
}
