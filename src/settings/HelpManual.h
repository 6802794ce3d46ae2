#pragma once

#include <QString>
#include <QUrl>

/// Where the Help action finds the user manual, Korvane.pdf beside the executable, and what it
/// tells the user when the manual cannot be shown. The window hands the URL to the desktop or
/// shows the text; it decides nothing itself.
namespace HelpManual {

/// File name of the manual, in the executable's folder (or, installed, in share/doc/korvane beside bin).
inline constexpr const char *FileName = "Korvane.pdf";

/// What the Help action does for one executable folder.
struct Decision
{
    QString path;    ///< the manual's full path
    QUrl url;        ///< the file URL for the desktop's viewer; empty when the manual is missing
    QString message; ///< what to tell the user instead of opening it; empty when the manual is there
};

/// The decision for the executable folder \a applicationDir (QCoreApplication::applicationDirPath()).
Decision decide(const QString &applicationDir);
/// What to tell the user when no program opened the manual at \a path.
QString notOpenedMessage(const QString &path);

} // namespace HelpManual
