#include "HealthEvaluator.h"

#include "MailNotifier.h"
#include "device/DiskRecord.h"
#include "settings/AppSettings.h"
#include "settings/LanguageTable.h"

#include <algorithm>

namespace {

constexpr quint32 kTemperatureId = 194;
constexpr quint32 kPowerOnId = 9;
// Fixed floors of the normalised value, independent of the vendor threshold.
constexpr quint32 kAlarmFloor = 5;
constexpr quint32 kWarningFloor = 10;

const QString kOkIcon = QStringLiteral(":/new/prefix1/images/harddisk_Ok.png");
const QString kWarningIcon = QStringLiteral(":/new/prefix1/images/harddisk_Wrg.png");
const QString kAlarmIcon = QStringLiteral(":/new/prefix1/images/harddisk_Alr.png");

const QString kAllOkMail = QStringLiteral("All is OK.\nAll params of your disk(s) are in Normal condition.");
const QString kNoSmtpParams = QStringLiteral("Sending of the message is impossible. Need to set SMTP params");
const QString kMailInFlight = QStringLiteral("Sending of the message is impossible. Previous E-Mail notification in progress...");

QString statusParagraph(QLatin1StringView textColour, QLatin1StringView background, const QString &text)
{
    return QStringLiteral("<p style=\" margin-top:0px; margin-bottom:0px; margin-left:0px; margin-right:0px;"
                          "font-size:8pt;font-size:8pt; font-weight:400; font-style:normal; "
                          "text-decoration:none;color:#%1; background:#%2\">%3</p>")
        .arg(textColour, background, text);
}

QString levelName(int level)
{
    return level == HealthAlarm ? QStringLiteral("ALARM") : QStringLiteral("WARNING");
}

QLatin1StringView alertBackground(int level)
{
    return level == HealthAlarm ? QLatin1StringView("FD7471") : QLatin1StringView("F1F3A7");
}

QString alertImage(int level)
{
    return level == HealthAlarm
        ? QStringLiteral("<img src=\":/new/prefix1/images/secure_red.png\" width=\"16\" height=\"16\">")
        : QStringLiteral("<img src=\":/new/prefix1/images/secure_at.png\" width=\"16\" height=\"16\">");
}

/// Share of a normalised value: vendors scale to 100, 200 or 253 as the best value.
int attributePercentage(quint32 v)
{
    if (v > 200)
        return int(v / 253.0 * 100);
    if (v > 100)
        return int(v / 200.0 * 100);
    return int(v);
}

/// What one disk's pass gathers before it is stored.
struct DiskPass
{
    int level = HealthOk;
    QString statusHtml; ///< alert paragraphs: temperature ones in front, attribute ones behind
    QString events;     ///< alert lines for pop-up and e-mail
};

} // namespace

HealthEvaluation HealthEvaluator::checkHealthStatus(QList<DiskRecord> &disks, const AppSettings &settings,
                                                    const QStringList &languageTable, const MailNotifier *mail)
{
    // The fixed paragraphs are built once; every disk then shares the same text.
    static const QString notMonitoringNote =
        statusParagraph(QLatin1StringView("000000"), QLatin1StringView("e8fffc"),
                        QStringLiteral("<img src=\":/new/prefix1/images/harddisk_Stop.png\" "
                                       "width=\"38\" height=\"16\">Not monitoring"));
    static const QString noSmartNote =
        statusParagraph(QLatin1StringView("000000"), QLatin1StringView("e8fffc"),
                        QStringLiteral("<img src=\":/new/prefix1/images/harddisk_NoSMART.png\" "
                                       "width=\"38\" height=\"16\">SMART not supported"));
    static const QString everythingOkNote =
        statusParagraph(QLatin1StringView("000000"), QLatin1StringView("9AFE8B"),
                        QStringLiteral("<img src=\":/new/prefix1/images/secure_apply.png\" "
                                       "width=\"16\" height=\"16\">Everything is OK"));

    HealthEvaluation result;
    result.treeIcons.resize(disks.size());

    const QString unitText = languageTable.value(Lang::UnitCelsius + (settings.temp_celsius ? 1 : 0));
    auto display = [&settings](qint32 celsius) { return settings.displayTemperature(celsius); };

    auto raiseAlert = [&](DiskPass &pass, int level, const QString &statusText, const QString &logText,
                          const QString &eventText, bool inFront) {
        const QString paragraph = statusParagraph(QLatin1StringView("000000"), alertBackground(level),
                                                  alertImage(level) + statusText);
        if (inFront)
            pass.statusHtml.prepend(paragraph);
        else
            pass.statusHtml.append(paragraph);
        result.eventLines.append({level == HealthAlarm ? EventLineKind::Alarm : EventLineKind::Warning, logText});
        pass.events += eventText;
    };

    int overall = HealthOk;
    QString summary = languageTable.value(Lang::Title);
    QString eventText;
    bool summaryGained = false;

    for (qsizetype i = 0; i < disks.size(); ++i) {
        DiskRecord &disk = disks[i];
        if (!disk.monitored) {
            disk.note = notMonitoringNote;
            continue;
        }
        if (disk.smartState <= 0) {
            disk.note = noSmartNote;
            continue;
        }

        DiskPass pass;
        int percentage = 100;
        QString line = QStringLiteral("HD") + QString::number(i);

        for (const SmartAttribute &attr : disk.attributes) {
            if (attr.id == kTemperatureId) {
                // The summary shows the temperature of the previous poll: the new one is stored
                // only after it has been printed.
                line += QLatin1Char(' ') + QString::number(display(disk.temperature)) + unitText;
                disk.temperature = qint32(quint32(quint64(attr.raw) & 0xffffffffu));
                if (disk.temperature >= settings.warn_temp && pass.level < HealthWarning)
                    pass.level = HealthWarning;
                if (disk.temperature >= settings.crit_temp && pass.level < HealthAlarm)
                    pass.level = HealthAlarm;
                // Whatever raised the level so far is reported as a temperature alert.
                if (pass.level == HealthWarning || pass.level == HealthAlarm) {
                    const QString shown = QString::number(display(disk.temperature));
                    raiseAlert(pass, pass.level, QStringLiteral("Temperature is ") + levelName(pass.level),
                               QStringLiteral("Disk: %1  Serial: %2  Temperature is %3%4")
                                   .arg(disk.model, disk.serial, shown, unitText),
                               QStringLiteral("  Temperature has reached %1 level (%2%3)\n")
                                   .arg(levelName(pass.level), shown, unitText),
                               true);
                }
            } else if (attr.id == kPowerOnId) {
                disk.powerOnRaw = quint64(attr.raw);
            }

            if (attr.performance != 0)
                continue;

            const quint32 v = attr.current;
            percentage = std::min(percentage, attributePercentage(v));
            // At or below the vendor threshold is a warning; only the fixed floor makes an alarm.
            if ((v > attr.threshold && v <= kWarningFloor) || v <= attr.threshold) {
                if (pass.level == HealthOk)
                    pass.level = HealthWarning;
            }
            if (v <= kAlarmFloor && pass.level < HealthAlarm)
                pass.level = HealthAlarm;

            int alert = 0;
            if (v <= kAlarmFloor)
                alert = HealthAlarm;
            else if (v <= attr.threshold)
                alert = HealthWarning;
            if (alert != 0) {
                raiseAlert(pass, alert,
                           QStringLiteral("Attribute %1 is %2").arg(attr.id).arg(levelName(alert)),
                           QStringLiteral("Disk: %1  Serial: %2 Param(%3) has reached %4 level")
                               .arg(disk.model, disk.serial, attr.name, levelName(alert)),
                           QStringLiteral("  Param(%1) has reached %2 level\n").arg(attr.name, levelName(alert)),
                           false);
            }
        }

        disk.healthValue = percentage;
        disk.healthState = pass.level;
        line += QLatin1Char(' ') + QString::number(percentage) + QLatin1Char('%');

        if (pass.level == HealthOk) {
            disk.note = everythingOkNote;
            line += QStringLiteral(" OK\n");
            result.treeIcons[i] = kOkIcon;
        } else {
            disk.note = pass.statusHtml;
            line += pass.level == HealthAlarm ? QStringLiteral(" A\n") : QStringLiteral(" W\n");
            result.treeIcons[i] = pass.level == HealthAlarm ? kAlarmIcon : kWarningIcon;
            overall = std::max(overall, pass.level);
            pass.events.prepend(QStringLiteral("HD%1(%2) Health(%3%4)\n")
                                    .arg(QString::number(i), disk.model, QString::number(percentage),
                                         QStringLiteral("%")));
        }
        eventText += pass.events;
        summary += line;
        summaryGained = true;
    }

    if (summaryGained)
        summary.chop(1);
    if (!eventText.isEmpty())
        eventText.chop(1);

    result.overallLevel = HealthState(overall);
    result.traySummary = summary;
    result.eventText = eventText;

    // Balloon and external task repeat on every poll while the level lasts.
    if (overall >= HealthWarning) {
        if (settings.pop_notif_enable)
            result.popUp = HealthPopUp{overall == HealthAlarm ? QStringLiteral("Alarm") : QStringLiteral("Warning"),
                                       HealthState(overall), eventText};
        result.externalTask = overall == HealthAlarm ? settings.extCritTask : settings.extWarnTask;
    }

    // E-mail only on a change; a notification that cannot go out now is dropped, not retried.
    result.levelChanged = overall != m_previousLevel;
    if (settings.eml_notif_enable && result.levelChanged) {
        if (!settings.isSmtpConfigured())
            result.eventLines.append({EventLineKind::MailError, kNoSmtpParams});
        else if (mail && mail->isSending())
            result.eventLines.append({EventLineKind::MailError, kMailInFlight});
        else
            result.mail = HealthMail{HealthState(overall), overall == HealthOk ? kAllOkMail : eventText};
    }
    m_previousLevel = HealthState(overall);
    return result;
}
