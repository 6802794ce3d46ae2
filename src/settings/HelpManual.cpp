#include "HelpManual.h"

#include "LanguageTable.h"

#include <QDir>
#include <QFileInfo>

namespace HelpManual {

Decision decide(const QString &applicationDir)
{
    Decision decision;
    decision.path = applicationDir + QLatin1Char('/') + QLatin1String(FileName);
    // A folder of that name, or a link to nothing, is no manual either; handed to the desktop,
    // it would fail in the viewer, out of our sight, instead of being explained here.
    const QFileInfo manual(decision.path);
    if (manual.isFile() && manual.isReadable())
        decision.url = QUrl::fromLocalFile(decision.path);
    else
        decision.message = languageText(Lang::HelpMissing).arg(QDir::toNativeSeparators(decision.path));
    return decision;
}

QString notOpenedMessage(const QString &path)
{
    return languageText(Lang::HelpNotOpened).arg(QDir::toNativeSeparators(path));
}

} // namespace HelpManual
