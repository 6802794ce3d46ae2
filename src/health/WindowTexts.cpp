#include "WindowTexts.h"

#include "settings/LanguageTable.h"

namespace WindowTexts {

namespace {

QString stamp(const QDateTime &when)
{
    return QStringLiteral("%1 %2").arg(when.date().toString(Qt::ISODate),
                                       when.time().toString(Qt::ISODate));
}

QString image(const QString &name)
{
    return QStringLiteral(":/new/prefix1/images/") + name;
}

QString iconFragment(const QString &iconName)
{
    return QStringLiteral("<img src=\"%1\" width=\"24\" height=\"24\" >").arg(image(iconName + QStringLiteral(".png")));
}

} // namespace

QString imagePath(QLatin1StringView name)
{
    return image(name);
}

QString diskStatusHeading(const QDateTime &when)
{
    return QStringLiteral("Disk Status [Last Checked: %1]").arg(stamp(when));
}

QString volumesHeading(const QDateTime &when)
{
    return QStringLiteral("Volumes [Last Checked: %1]").arg(stamp(when));
}

QString eventListLine(const QDateTime &when, const QString &text)
{
    return QStringLiteral("%1 %2").arg(stamp(when), text);
}

QString sessionStartedLine(const QDateTime &when)
{
    return eventListLine(when, QStringLiteral("Session started"));
}

QString eventIcon(EventLineKind kind)
{
    switch (kind) {
    case EventLineKind::Warning:
        return image(QStringLiteral("secure_at.png"));
    case EventLineKind::Alarm:
        return image(QStringLiteral("secure_red.png"));
    case EventLineKind::MailError:
        return image(QStringLiteral("mail_error.png"));
    case EventLineKind::Information:
        break;
    }
    return image(QStringLiteral("information.png"));
}

QString sessionStartedIcon()
{
    return image(QStringLiteral("gears_run.png"));
}

QString diskLine(const QString &model, const QString &text)
{
    return model + QLatin1Char(' ') + text;
}

QString attributeDescriptionHtml(const QString &iconName, const QString &description)
{
    return QStringLiteral("<html><head><meta name=\"qrichtext\" content=\"1\" /><title>Description</title>"
                          "<style type=\"text/css\">p,li { white-space: pre-wrap; }</style></head>"
                          "<body style=\" font-family:'MS Shell Dlg 2'; font-size:8.25pt; font-weight:400;"
                          " font-style:normal;\" bgcolor=\"#e8fffc\"><p style=\"margin-top:0px;margin-bottom:0px\">")
        + iconFragment(iconName) + description + QStringLiteral("</body></html>");
}

QString attributeLegendHtml()
{
    // A one-row table, so that each icon stays beside its words however narrow the pane is.
    const QString gap = QString(6, QChar(0x00A0));
    const auto cell = [](const QString &icon, const QString &text) {
        return QStringLiteral("<td style=\"vertical-align:middle\">") + iconFragment(icon) + QStringLiteral("</td>"
                              "<td style=\"vertical-align:middle\">") + text;
    };
    return QStringLiteral("<table cellspacing=\"0\" cellpadding=\"0\"><tr>")
        + cell(QStringLiteral("attr_health"), QStringLiteral("Health attribute.")) + gap + QStringLiteral("</td>")
        + cell(QStringLiteral("attr_h_p"), QStringLiteral("Health/Perfomance attribute.")) + gap + QStringLiteral("</td>")
        + cell(QStringLiteral("attr_perf"), QStringLiteral("Perfomance attribute.")) + gap + QStringLiteral("</td>")
        + cell(QStringLiteral("attr_info"), QStringLiteral("Information attribute.")) + QStringLiteral("</td></tr></table>");
}

QString noDisksHeading()
{
    return QStringLiteral("<B>No Disks");
}

QString aboutHtml(const QString &build, bool registered)
{
    QString version = languageText(Lang::AboutVersion).arg(build);
    if (!registered)
        version += QLatin1Char(' ') + languageText(Lang::FreeEditionNote);
    return QStringLiteral("<h2>%1</h2><p>%2</p><p>%3</p><p>%4</p>")
        .arg(languageText(Lang::Title).toHtmlEscaped(), version.toHtmlEscaped(),
             languageText(Lang::AboutText).toHtmlEscaped(), languageText(Lang::AboutLicence).toHtmlEscaped());
}

} // namespace WindowTexts
