#include "HelpManual.h"

#include "LanguageTable.h"

#include <QDir>
#include <QFileInfo>

namespace {

// A folder of that name, or a link to nothing, is no manual either; handed to the desktop,
// it would fail in the viewer, out of our sight, instead of being explained here.
bool isManual(const QString &path)
{
    const QFileInfo manual(path);
    return manual.isFile() && manual.isReadable();
}

} // namespace

namespace HelpManual {

Decision decide(const QString &applicationDir)
{
    Decision decision;
    decision.path = applicationDir + QLatin1Char('/') + QLatin1String(FileName);
    // A package keeps the manual with the other documentation, not among the programs.
    const QString installed =
        QDir::cleanPath(applicationDir + QStringLiteral("/../share/doc/korvane/") + QLatin1String(FileName));
    if (!isManual(decision.path) && isManual(installed))
        decision.path = installed;
    if (isManual(decision.path))
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
