#include "TestEnv.h"

#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QProcess>
#include <QRegularExpression>
#include <QTemporaryDir>
#include <QtTest>

#include <csignal>

namespace {

QProcess *startMonitor(QObject *parent, const QString &home, const QStringList &extra)
{
    auto *process = new QProcess(parent);
    QProcessEnvironment env = QProcessEnvironment::systemEnvironment();
    env.remove(QStringLiteral("KORVANE_SIMULATE"));
    env.remove(QStringLiteral("KORVANE_HOME"));
    process->setProcessEnvironment(env);
    process->start(TestEnv::korvanectl(), QStringList{QStringLiteral("monitor"), QStringLiteral("--home"), home,
                                                      QStringLiteral("--simulate"), TestEnv::demoDir()}
                                              + extra);
    return process;
}

QStringList logLines(const QString &home)
{
    QFile file(home + QStringLiteral("/KV_f.log"));
    if (!file.open(QIODevice::ReadOnly))
        return {};
    return QString::fromLocal8Bit(file.readAll()).split(QLatin1Char('\n'), Qt::SkipEmptyParts);
}

QList<QJsonObject> jsonReports(const QByteArray &out)
{
    QList<QJsonObject> reports;
    for (const QByteArray &line : out.split('\n'))
        if (!line.trimmed().isEmpty())
            reports << QJsonDocument::fromJson(line).object();
    return reports;
}

// Level of the disk whose model starts with \a model in one per-poll report.
int levelOf(const QJsonObject &report, const QString &model)
{
    for (const QJsonValue &v : report.value(QStringLiteral("disks")).toArray())
        if (v.toObject().value(QStringLiteral("model")).toString().startsWith(model))
            return v.toObject().value(QStringLiteral("level")).toInt();
    return -1;
}

} // namespace

class TestMonitorCommand : public QObject
{
    Q_OBJECT

private slots:
    void onceWritesSessionAndOneRecordPerDisk();
    void homeSettingsMoveTheTemperatureLimits();
    void terminationWritesTheLastRecord();
};

void TestMonitorCommand::onceWritesSessionAndOneRecordPerDisk()
{
    QTemporaryDir home;
    QScopedPointer<QProcess> monitor(startMonitor(nullptr, home.path(), {QStringLiteral("--once")}));
    QVERIFY(monitor->waitForFinished(60000));
    QCOMPARE(monitor->exitCode(), 0);

    const QStringList out = QString::fromUtf8(monitor->readAllStandardOutput()).split(QLatin1Char('\n'), Qt::SkipEmptyParts);
    const QRegularExpression stamped(QStringLiteral("^\\d{4}-\\d\\d-\\d\\d \\d\\d:\\d\\d:\\d\\d (.*)$"));
    QVERIFY(out.size() >= 3);
    for (const QString &line : out)
        QVERIFY2(stamped.match(line).hasMatch(), qPrintable(line));
    QVERIFY(out.first().endsWith(QLatin1String(" Session started")));
    QVERIFY(out.last().endsWith(QLatin1String(" Session finished")));
    // The demo's archive disk sits at its reallocation threshold from the start.
    QVERIFY(out.filter(QStringLiteral("Param(Reallocated sector count) has reached WARNING level")).size() == 1);

    const QStringList log = logLines(home.path());
    QVERIFY(log.size() >= 3);
    QVERIFY(QRegularExpression(QStringLiteral("^\\d{14}\\]!\\[INFO\\]!\\[Session started$")).match(log.first()).hasMatch());
    QVERIFY(QRegularExpression(QStringLiteral("^\\d{14}\\]!\\[INFO\\]!\\[Session finished$")).match(log.last()).hasMatch());
    const QStringList records = log.filter(QStringLiteral("]![SMART]!["));
    QCOMPARE(records.size(), log.size() - 2);
    // index, serial, level, health, temperature then one value per attribute.
    const QRegularExpression record(QStringLiteral("^\\d{14}\\]!\\[SMART\\]!\\[(\\d+)\\]!\\[[^\\]]+\\]!\\[([0-3])\\]!\\[(\\d+)\\]!\\[\\d+(~;\\d+)*$"));
    for (int i = 0; i < records.size(); ++i) {
        const auto m = record.match(records.at(i));
        QVERIFY2(m.hasMatch(), qPrintable(records.at(i)));
        QCOMPARE(m.captured(1).toInt(), i);
    }
    QVERIFY(records.filter(QStringLiteral("]![2]![")).size() >= 1); // the WARNING disk
}

void TestMonitorCommand::homeSettingsMoveTheTemperatureLimits()
{
    QTemporaryDir home;
    {
        QFile ini(home.filePath(QStringLiteral("Korvane.ini")));
        QVERIFY(ini.open(QIODevice::WriteOnly));
        ini.write("warn_temp=30\r\ncrit_temp=45\r\n");
    }
    QScopedPointer<QProcess> monitor(
        startMonitor(nullptr, home.path(), {QStringLiteral("--once"), QStringLiteral("--json")}));
    QVERIFY(monitor->waitForFinished(60000));
    QCOMPARE(monitor->exitCode(), 0);
    const QList<QJsonObject> reports = jsonReports(monitor->readAllStandardOutput());
    QCOMPARE(reports.size(), 1);
    // The hot disk starts at 49 C: below the default 55, above the 45 set here.
    QCOMPARE(levelOf(reports.first(), QStringLiteral("Brenner")), 3);
    QCOMPARE(reports.first().value(QStringLiteral("overallLevel")).toInt(), 3);
    QCOMPARE(reports.first().value(QStringLiteral("popUp")).toObject().value(QStringLiteral("title")).toString(),
             QStringLiteral("Alarm"));
}

void TestMonitorCommand::terminationWritesTheLastRecord()
{
    QTemporaryDir home;
    QScopedPointer<QProcess> monitor(
        startMonitor(nullptr, home.path(), {QStringLiteral("--interval"), QStringLiteral("1"), QStringLiteral("--json")}));
    QByteArray out;
    // Wait for the first read plus two polls.
    QTRY_VERIFY_WITH_TIMEOUT((out += monitor->readAllStandardOutput(), out.count('\n') >= 3), 30000);
    ::kill(pid_t(monitor->processId()), SIGTERM);
    QVERIFY(monitor->waitForFinished(10000));
    QCOMPARE(monitor->exitStatus(), QProcess::NormalExit);
    QCOMPARE(monitor->exitCode(), 0);

    const QStringList log = logLines(home.path());
    QVERIFY(log.last().endsWith(QLatin1String("]![INFO]![Session finished")));
    // Every poll samples every monitored disk again.
    const QList<QJsonObject> reports = jsonReports(out + monitor->readAllStandardOutput());
    const int disks = int(reports.first().value(QStringLiteral("disks")).toArray().size());
    QCOMPARE(log.filter(QStringLiteral("]![SMART]![")).size(), disks * int(reports.size()));
}

QTEST_GUILESS_MAIN(TestMonitorCommand)
#include "tst_monitorcommand.moc"
