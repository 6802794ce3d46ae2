#include "MonitorSession.h"

#include "DiskSession.h"
#include "device/DiskDiscovery.h"
#include "health/EventLogRecord.h"
#include "health/HealthEvaluation.h"
#include "monitor/ATA_Smart.h"
#include "settings/AppPaths.h"
#include "settings/AppSettings.h"
#include "settings/LanguageTable.h"

#include <QDateTime>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

MonitorSession::MonitorSession(DriveBackend &backend, const CtlOptions &options, QObject *parent)
    : QObject(parent)
    , m_backend(backend)
    , m_json(options.json)
    , m_log(AppPaths::eventLogPath())
    , m_out(stdout)
{
}

MonitorSession::~MonitorSession() = default;

void MonitorSession::start()
{
    m_log.writeLog(EventLogRecord::sessionStartedBody());
    if (!m_json)
        printLine(QDateTime::currentDateTime(), QStringLiteral("Session started"));

    m_disks = getDevice_Info(m_backend);
    for (int i = 0; i < m_disks.size(); ++i)
        applyDiskSettings(m_disks, i);
    m_smart = new ATA_Smart(m_backend, m_disks, this);
    DiskSession::readFirst(*m_smart);
    evaluate();
}

void MonitorSession::poll()
{
    m_smart->reReadSMART(false);
    evaluate();
}

void MonitorSession::finish()
{
    m_log.writeLog(EventLogRecord::sessionFinishedBody());
    if (!m_json)
        printLine(QDateTime::currentDateTime(), QStringLiteral("Session finished"));
}

void MonitorSession::evaluate()
{
    // No mail client is wired in yet: the evaluation still decides when a
    // message is due and reports why one cannot go out.
    const HealthEvaluation result = m_evaluator.checkHealthStatus(m_disks, appSettings(), languageTable());
    const QDateTime now = QDateTime::currentDateTime();
    if (m_json) {
        printJson(now, result);
    } else {
        for (const EventLine &line : result.eventLines)
            printLine(now, line.text);
    }
    m_log.compareValues(m_disks);
}

void MonitorSession::printLine(const QDateTime &when, const QString &text)
{
    m_out << QStringLiteral("%1 %2 %3")
                 .arg(when.date().toString(Qt::ISODate), when.time().toString(Qt::ISODate), text)
          << Qt::endl;
}

void MonitorSession::printJson(const QDateTime &when, const HealthEvaluation &result)
{
    QJsonArray disks;
    for (int i = 0; i < m_disks.size(); ++i) {
        const DiskRecord &d = m_disks.at(i);
        disks.append(QJsonObject{
            {QStringLiteral("index"), i},
            {QStringLiteral("model"), d.model},
            {QStringLiteral("serial"), d.serial},
            {QStringLiteral("monitored"), d.monitored},
            {QStringLiteral("smartState"), d.smartState},
            {QStringLiteral("level"), d.healthState},
            {QStringLiteral("health"), d.healthValue},
            {QStringLiteral("temperature"), d.temperature},
        });
    }
    QJsonArray lines;
    for (const EventLine &line : result.eventLines)
        lines.append(QJsonObject{{QStringLiteral("kind"), int(line.kind)}, {QStringLiteral("text"), line.text}});

    QJsonObject report{
        {QStringLiteral("time"), when.toString(Qt::ISODate)},
        {QStringLiteral("overallLevel"), int(result.overallLevel)},
        {QStringLiteral("levelChanged"), result.levelChanged},
        {QStringLiteral("disks"), disks},
        {QStringLiteral("lines"), lines},
        {QStringLiteral("externalTask"), result.externalTask},
    };
    if (result.popUp)
        report.insert(QStringLiteral("popUp"),
                      QJsonObject{{QStringLiteral("title"), result.popUp->title}, {QStringLiteral("text"), result.popUp->text}});
    if (result.mail)
        report.insert(QStringLiteral("mail"),
                      QJsonObject{{QStringLiteral("level"), int(result.mail->level)}, {QStringLiteral("text"), result.mail->text}});
    m_out << QJsonDocument(report).toJson(QJsonDocument::Compact) << Qt::endl;
}
