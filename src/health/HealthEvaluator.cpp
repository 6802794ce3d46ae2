#include "HealthEvaluator.h"

#include "HealthRules.h"
#include "HealthTexts.h"
#include "MailNotifier.h"
#include "device/DiskRecord.h"
#include "device/TextLine.h"
#include "settings/AppSettings.h"
#include "settings/LanguageTable.h"

#include <algorithm>

namespace {

constexpr quint32 kTemperatureId = 194;
constexpr quint32 kPowerOnId = 9;

/// What one disk's pass gathers before it is stored.
struct DiskPass
{
    HealthState level = HealthOk;
    int percentage = 100;
    QString statusHtml; ///< alert paragraphs: temperature ones in front, attribute ones behind
    QString events;     ///< alert lines for pop-up and e-mail
};

/// What every disk's pass reads, and the list its Events Log lines go to.
struct PassContext
{
    const AppSettings &settings;
    QString unitText;
    QList<EventLine> &eventLines;
};

void addEventLine(QList<EventLine> &lines, EventLineKind kind, const QString &text)
{
    // A model or serial read from a disk may hold a line break; the list shows one line per entry.
    lines.append({kind, TextLine::oneLine(text)});
}

/// One alert: a status paragraph, an Events Log line and a line of the event text.
void raiseAlert(DiskPass &pass, const PassContext &context, HealthState level, const QString &paragraph,
                const QString &logLine, const QString &eventLine, bool inFront)
{
    if (inFront)
        pass.statusHtml.prepend(paragraph);
    else
        pass.statusHtml.append(paragraph);
    addEventLine(context.eventLines, level == HealthAlarm ? EventLineKind::Alarm : EventLineKind::Warning, logLine);
    pass.events += eventLine;
}

void temperatureStep(DiskRecord &disk, const SmartAttribute &attr, const PassContext &context, DiskPass &pass,
                     QString &summaryLine)
{
    const AppSettings &settings = context.settings;
    // The summary shows the temperature of the previous poll: the new one is stored only after
    // it has been printed.
    summaryLine += HealthTexts::summaryTemperature(settings.displayTemperature(disk.temperature), context.unitText);
    disk.temperature = qint32(quint32(quint64(attr.raw) & 0xffffffffu));
    pass.level = std::max(pass.level, HealthRules::temperatureLevel(disk.temperature, settings));
    // Whatever raised the level so far is reported as a temperature alert.
    if (pass.level >= HealthWarning) {
        const QString shown = QString::number(settings.displayTemperature(disk.temperature));
        raiseAlert(pass, context, pass.level, HealthTexts::temperatureParagraph(pass.level),
                   HealthTexts::temperatureLogLine(disk, shown, context.unitText),
                   HealthTexts::temperatureEventLine(pass.level, shown, context.unitText), true);
    }
}

void attributeStep(const DiskRecord &disk, const SmartAttribute &attr, const PassContext &context, DiskPass &pass)
{
    pass.percentage = std::min(pass.percentage, HealthRules::attributePercentage(attr.current));
    pass.level = std::max(pass.level, HealthRules::attributeLevel(attr));
    const HealthState alert = HealthRules::attributeAlert(attr);
    if (alert != HealthOk) {
        raiseAlert(pass, context, alert, HealthTexts::attributeParagraph(alert, attr),
                   HealthTexts::attributeLogLine(alert, disk, attr), HealthTexts::attributeEventLine(alert, attr),
                   false);
    }
}

/// Evaluates a monitored disk with SMART data and stores its results; the tray summary line
/// gets the temperature piece.
DiskPass evaluateDisk(DiskRecord &disk, const PassContext &context, QString &summaryLine)
{
    DiskPass pass;
    for (const SmartAttribute &attr : disk.attributes) {
        if (attr.id == kTemperatureId)
            temperatureStep(disk, attr, context, pass, summaryLine);
        else if (attr.id == kPowerOnId)
            disk.powerOnRaw = quint64(attr.raw);
        // Performance-related attributes vary with load, not with wear.
        if (attr.performance == 0)
            attributeStep(disk, attr, context, pass);
    }
    disk.healthValue = pass.percentage;
    disk.healthState = pass.level;
    disk.note = pass.level == HealthOk ? HealthTexts::everythingOkNote() : pass.statusHtml;
    return pass;
}

} // namespace

HealthEvaluation HealthEvaluator::checkHealthStatus(QList<DiskRecord> &disks, const AppSettings &settings,
                                                    const QStringList &languageTable, const MailNotifier *mail)
{
    HealthEvaluation result;
    result.treeIcons.resize(disks.size());
    const PassContext context{settings, HealthTexts::unitText(settings, languageTable), result.eventLines};

    HealthState overall = HealthOk;
    QString summary = languageTable.value(Lang::Title);
    QString eventText;
    bool summaryGained = false;

    for (qsizetype i = 0; i < disks.size(); ++i) {
        DiskRecord &disk = disks[i];
        if (!disk.monitored) {
            disk.note = HealthTexts::notMonitoringNote();
            continue;
        }
        if (disk.smartState <= 0) {
            disk.note = HealthTexts::noSmartNote();
            continue;
        }

        QString line = HealthTexts::summaryHead(int(i));
        DiskPass pass = evaluateDisk(disk, context, line);
        line += HealthTexts::summaryTail(pass.percentage, pass.level);
        result.treeIcons[i] = HealthTexts::treeIcon(pass.level);
        if (pass.level != HealthOk) {
            overall = std::max(overall, pass.level);
            pass.events.prepend(HealthTexts::diskEventHead(int(i), disk, pass.percentage));
        }
        eventText += pass.events;
        summary += line;
        summaryGained = true;
    }

    if (summaryGained)
        summary.chop(1);
    if (!eventText.isEmpty())
        eventText.chop(1);

    result.overallLevel = overall;
    result.traySummary = summary;
    result.eventText = eventText;
    decideNotifications(result, settings, mail);
    return result;
}

void HealthEvaluator::decideNotifications(HealthEvaluation &result, const AppSettings &settings,
                                          const MailNotifier *mail)
{
    const HealthState overall = result.overallLevel;
    // Balloon and external task repeat on every poll while the level lasts.
    if (overall >= HealthWarning) {
        if (settings.pop_notif_enable)
            result.popUp = HealthPopUp{HealthTexts::popUpTitle(overall), overall, result.eventText};
        result.externalTask = overall == HealthAlarm ? settings.extCritTask : settings.extWarnTask;
    }

    // E-mail only on a change; a notification that cannot go out now is dropped, not retried.
    result.levelChanged = overall != m_previousLevel;
    if (settings.eml_notif_enable && result.levelChanged) {
        if (!settings.isSmtpConfigured())
            addEventLine(result.eventLines, EventLineKind::MailError, HealthTexts::noSmtpParams());
        else if (mail && mail->isSending())
            addEventLine(result.eventLines, EventLineKind::MailError, HealthTexts::mailInFlight());
        else
            result.mail = HealthMail{overall, overall == HealthOk ? HealthTexts::allOkMail() : result.eventText};
    }
    m_previousLevel = overall;
}
