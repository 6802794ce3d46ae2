#pragma once

#include "EventLine.h"

#include <QDateTime>
#include <QString>

/// The texts of the main window that are not a disk's: headings with the time of the last
/// check, Events Log list lines and their icons, the attribute description pane and its legend.
namespace WindowTexts {

/// The resource path of the image file \a name ("harddisk_Ok.png"): every image of the window lives there.
QString imagePath(QLatin1StringView name);
/// "Disk Status [Last Checked: <date> <time>]", ISO date and time.
QString diskStatusHeading(const QDateTime &when);
/// "Volumes [Last Checked: <date> <time>]".
QString volumesHeading(const QDateTime &when);
/// One Events Log list line: "<date> <time> <text>".
QString eventListLine(const QDateTime &when, const QString &text);
/// The first Events Log list line of a session.
QString sessionStartedLine(const QDateTime &when);
/// Resource path of the icon of an Events Log line kind.
QString eventIcon(EventLineKind kind);
/// Resource path of the icon of the session's first line.
QString sessionStartedIcon();
/// A line another part (the surface scan) adds for a disk: its model, a blank and the text.
QString diskLine(const QString &model, const QString &text);
/// The description pane: the fixed head, the category icon of \a iconName ("attr_health", ...)
/// and the attribute's description.
QString attributeDescriptionHtml(const QString &iconName, const QString &description);
/// The legend under the attribute table: each category icon with its name.
QString attributeLegendHtml();
/// The heading of the "Disk Info" page while there is no disk to show.
QString noDisksHeading();
/// The about box: name, version \a build (with the free edition's note unless \a registered),
/// what Korvane does and its licence, in the current language.
QString aboutHtml(const QString &build, bool registered);

} // namespace WindowTexts
