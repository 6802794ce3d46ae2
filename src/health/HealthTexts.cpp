#include "HealthTexts.h"

#include "device/DiskRecord.h"
#include "settings/AppSettings.h"
#include "settings/LanguageTable.h"

#include <QStringBuilder>

namespace HealthTexts {

namespace {

// What a status paragraph holds before its text: black text behind an icon, 38 pixels wide for a
// disk state, 16 for a verdict.
QString paragraphHead(QLatin1StringView background, QLatin1StringView icon, int width)
{
    return QStringLiteral("<p style=\" margin-top:0px; margin-bottom:0px; margin-left:0px; margin-right:0px;"
                          "font-size:8pt;font-size:8pt; font-weight:400; font-style:normal; "
                          "text-decoration:none;color:#000000; background:#%1\">"
                          "<img src=\":/new/prefix1/images/%2\" width=\"%3\" height=\"16\">")
        .arg(background, icon, QString::number(width));
}

QString statusParagraph(const QString &head, const QString &text)
{
    return head % text % QLatin1StringView("</p>");
}

QString alertParagraph(HealthState level, const QString &text)
{
    // Alerts recur on every poll while a disk is failing: their heads are built once.
    static const QString alarmHead =
        paragraphHead(QLatin1StringView("FD7471"), QLatin1StringView("secure_red.png"), 16);
    static const QString warningHead =
        paragraphHead(QLatin1StringView("F1F3A7"), QLatin1StringView("secure_at.png"), 16);
    return statusParagraph(level == HealthAlarm ? alarmHead : warningHead, text);
}

} // namespace

QString unitText(const AppSettings &settings, const QStringList &languageTable)
{
    return languageTable.value(Lang::UnitCelsius + (settings.temp_celsius ? 1 : 0));
}

// The fixed paragraphs are built once; every disk then shares the same text.
const QString &notMonitoringNote()
{
    static const QString note = statusParagraph(
        paragraphHead(QLatin1StringView("e8fffc"), QLatin1StringView("harddisk_Stop.png"), 38),
        QStringLiteral("Not monitoring"));
    return note;
}

const QString &noSmartNote()
{
    static const QString note = statusParagraph(
        paragraphHead(QLatin1StringView("e8fffc"), QLatin1StringView("harddisk_NoSMART.png"), 38),
        QStringLiteral("SMART not supported"));
    return note;
}

const QString &everythingOkNote()
{
    static const QString note = statusParagraph(
        paragraphHead(QLatin1StringView("9AFE8B"), QLatin1StringView("secure_apply.png"), 16),
        QStringLiteral("Everything is OK"));
    return note;
}

QString levelName(HealthState level)
{
    return level == HealthAlarm ? QStringLiteral("ALARM") : QStringLiteral("WARNING");
}

QString temperatureParagraph(HealthState level)
{
    return alertParagraph(level, QStringLiteral("Temperature is ") + levelName(level));
}

// The multi-argument arg() substitutes in one pass, so a model or serial holding "%1" stays as it is.
QString temperatureLogLine(const DiskRecord &disk, const QString &shown, const QString &unit)
{
    return QStringLiteral("Disk: %1  Serial: %2  Temperature is %3%4").arg(disk.model, disk.serial, shown, unit);
}

QString temperatureEventLine(HealthState level, const QString &shown, const QString &unit)
{
    return QStringLiteral("  Temperature has reached %1 level (%2%3)\n").arg(levelName(level), shown, unit);
}

QString attributeParagraph(HealthState level, const SmartAttribute &attribute)
{
    return alertParagraph(level, QStringLiteral("Attribute %1 is %2").arg(attribute.id).arg(levelName(level)));
}

QString attributeLogLine(HealthState level, const DiskRecord &disk, const SmartAttribute &attribute)
{
    return QStringLiteral("Disk: %1  Serial: %2 Param(%3) has reached %4 level")
        .arg(disk.model, disk.serial, attribute.name, levelName(level));
}

QString attributeEventLine(HealthState level, const SmartAttribute &attribute)
{
    return QStringLiteral("  Param(%1) has reached %2 level\n").arg(attribute.name, levelName(level));
}

QString diskEventHead(int index, const DiskRecord &disk, int percentage)
{
    return QStringLiteral("HD%1(%2) Health(%3%4)\n")
        .arg(QString::number(index), disk.model, QString::number(percentage), QStringLiteral("%"));
}

QString summaryHead(int index)
{
    return QStringLiteral("HD") + QString::number(index);
}

QString summaryTemperature(int shown, const QString &unit)
{
    return QLatin1Char(' ') + QString::number(shown) + unit;
}

QString summaryTail(int percentage, HealthState level)
{
    QString tag = QStringLiteral(" OK\n");
    if (level == HealthWarning)
        tag = QStringLiteral(" W\n");
    else if (level == HealthAlarm)
        tag = QStringLiteral(" A\n");
    return QLatin1Char(' ') + QString::number(percentage) + QLatin1Char('%') + tag;
}

QString treeIcon(HealthState level)
{
    if (level == HealthAlarm)
        return QStringLiteral(":/new/prefix1/images/harddisk_Alr.png");
    if (level == HealthWarning)
        return QStringLiteral(":/new/prefix1/images/harddisk_Wrg.png");
    return QStringLiteral(":/new/prefix1/images/harddisk_Ok.png");
}

QString popUpTitle(HealthState level)
{
    return level == HealthAlarm ? QStringLiteral("Alarm") : QStringLiteral("Warning");
}

QString allOkMail()
{
    return QStringLiteral("All is OK.\nAll params of your disk(s) are in Normal condition.");
}

QString noSmtpParams()
{
    return QStringLiteral("Sending of the message is impossible. Need to set SMTP params");
}

QString mailInFlight()
{
    return QStringLiteral("Sending of the message is impossible. Previous E-Mail notification in progress...");
}

} // namespace HealthTexts
