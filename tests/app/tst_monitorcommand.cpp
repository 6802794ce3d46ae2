#include "TestEnv.h"
#include "TestFiles.h"

#include <QElapsedTimer>
#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QProcess>
#include <QRegularExpression>
#include <QTemporaryDir>
#include <QtTest>

#include <csignal>
#include <cstdio>

#include <sys/stat.h>

namespace {

// `korvanectl monitor` on the demo disks (and any further --simulate in \a extra), keeping its files in \a home.
QProcess *startMonitor(QObject *parent, const QString &home, const QStringList &extra)
{
    auto *process = new QProcess(parent);
    process->setProcessEnvironment(TestEnv::ctlEnvironment());
    process->start(TestEnv::korvanectl(), QStringList{QStringLiteral("monitor"), QStringLiteral("--home"), home,
                                                      QStringLiteral("--simulate"), TestEnv::demoDir()}
                                              + extra);
    return process;
}

using Finished = TestEnv::CtlRun;

Finished runCtl(const QStringList &arguments, const QProcessEnvironment &env = TestEnv::ctlEnvironment())
{
    return TestEnv::runKorvanectl(arguments, env);
}

void writeFile(const QString &path, const QByteArray &content)
{
    QVERIFY(TestFiles::write(path, content));
}

// A disk of the demo set that hangs \a seconds at its poll \a poll (0: the first read).
QString hangingDisk(const QTemporaryDir &dir, int seconds, int poll)
{
    const QString path = dir.filePath(QStringLiteral("hanging.json"));
    writeFile(path, QStringLiteral(R"({"size": 320072933376,
  "identity": {"model": "Halvard HX320-7K1", "serial": "HX7K1D2208815"},
  "smart": {"attributes": [{"id": 1, "flags": 11, "current": [100, 90, 80, 70], "threshold": 50, "raw": 0},
                           {"id": 194, "flags": 34, "current": 100, "threshold": 0, "raw": 39}]},
  "behaviour": {"hang": {"seconds": %1, "polls": [%2]}}})").arg(seconds).arg(poll).toUtf8());
    return path;
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
    void rememberedPowerOnUnitIsHonoured();
    void stopRequestsAreHonouredWhenever_data();
    void stopRequestsAreHonouredWhenever();
    void pollsGoOnPastADiskThatHangs();
    void closedOutputEndsCleanly();
    void refusedHomes_data();
    void refusedHomes();
    void toldWhatCannotBeDone_data();
    void toldWhatCannotBeDone();
    void pathsInAnotherEncodingNameTheUsersFiles();
    void controlCharactersStayOnOneLine();
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

void TestMonitorCommand::rememberedPowerOnUnitIsHonoured()
{
    QTemporaryDir home;
    // The demo's system disk counts attribute 9 in hours by itself; remembered here in half-minutes.
    writeFile(home.filePath(QStringLiteral("Korvane.ini")), "disk[HX7K2A9F31042]=(1,3)\r\n");
    const Finished run = runCtl({QStringLiteral("monitor"), QStringLiteral("--once"), QStringLiteral("--json"),
                                 QStringLiteral("--home"), home.path(), QStringLiteral("--simulate"), TestEnv::demoDir()});
    QCOMPARE(run.exitCode, 0);
    const QList<QJsonObject> reports = jsonReports(run.out.toUtf8());
    QCOMPARE(reports.size(), 1);
    const QJsonArray disks = reports.first().value(QStringLiteral("disks")).toArray();
    QCOMPARE(disks.at(0).toObject().value(QStringLiteral("serial")).toString(), QStringLiteral("HX7K2A9F31042"));
    QCOMPARE(disks.at(0).toObject().value(QStringLiteral("powerOnUnit")).toInt(), 3);
    QCOMPARE(disks.at(0).toObject().value(QStringLiteral("powerOnUnitFixed")).toBool(), false);

    // The same disk fields as `info --json`, plus the level and health of the evaluation.
    const Finished info = runCtl({QStringLiteral("info"), QStringLiteral("--json"), QStringLiteral("--simulate"),
                                  TestEnv::demoDir()});
    const QJsonObject infoDisk =
        QJsonDocument::fromJson(info.out.toUtf8()).object().value(QStringLiteral("disks")).toArray().at(0).toObject();
    QStringList keys = infoDisk.keys();
    keys << QStringLiteral("level") << QStringLiteral("health");
    keys.sort();
    QCOMPARE(disks.at(0).toObject().keys(), keys);
}

void TestMonitorCommand::stopRequestsAreHonouredWhenever_data()
{
    QTest::addColumn<int>("signal");
    QTest::addColumn<bool>("duringFirstRead"); // else between polls
    QTest::newRow("SIGTERM during the first read") << int(SIGTERM) << true;
    QTest::newRow("SIGINT during the first read") << int(SIGINT) << true;
    QTest::newRow("SIGHUP during the first read") << int(SIGHUP) << true;
    QTest::newRow("SIGTERM between polls") << int(SIGTERM) << false;
    QTest::newRow("SIGHUP between polls") << int(SIGHUP) << false;
}

void TestMonitorCommand::stopRequestsAreHonouredWhenever()
{
    QFETCH(int, signal);
    QFETCH(bool, duringFirstRead);
    QTemporaryDir home;
    QTemporaryDir disks;
    // During the first read one disk hangs for longer than the watchdog waits.
    QStringList extra{QStringLiteral("--interval"), QStringLiteral("1"), QStringLiteral("--json")};
    if (duringFirstRead)
        extra << QStringLiteral("--simulate") << hangingDisk(disks, 45, 0);
    QScopedPointer<QProcess> monitor(startMonitor(nullptr, home.path(), extra));
    QByteArray out;
    if (duringFirstRead) {
        QTRY_VERIFY_WITH_TIMEOUT(QFileInfo(home.filePath(QStringLiteral("KV_f.log"))).size() > 0, 10000);
        QTest::qWait(300);
    } else {
        QTRY_VERIFY_WITH_TIMEOUT((out += monitor->readAllStandardOutput(), out.count('\n') >= 3), 30000);
    }

    QElapsedTimer clock;
    clock.start();
    ::kill(pid_t(monitor->processId()), signal);
    QVERIFY(monitor->waitForFinished(5000));
    QVERIFY2(clock.elapsed() < 1000, "the monitor took more than a second to stop");
    QCOMPARE(monitor->exitStatus(), QProcess::NormalExit);
    QCOMPARE(monitor->exitCode(), 0);

    const QStringList log = logLines(home.path());
    QVERIFY(log.last().endsWith(QLatin1String("]![INFO]![Session finished")));
    // Every evaluation samples every monitored disk.
    const QList<QJsonObject> reports = jsonReports(out + monitor->readAllStandardOutput());
    QCOMPARE(reports.isEmpty(), duringFirstRead);
    if (!reports.isEmpty()) {
        const int perPoll = int(reports.first().value(QStringLiteral("disks")).toArray().size());
        QCOMPARE(log.filter(QStringLiteral("]![SMART]![")).size(), perPoll * int(reports.size()));
    }
}

void TestMonitorCommand::pollsGoOnPastADiskThatHangs()
{
    QTemporaryDir home;
    QTemporaryDir disks;
    QScopedPointer<QProcess> monitor(startMonitor(
        nullptr, home.path(),
        {QStringLiteral("--simulate"), hangingDisk(disks, 60, 1), QStringLiteral("--interval"), QStringLiteral("1"),
         QStringLiteral("--json")}));
    QByteArray out;
    // The first evaluation, then five more while the disk hangs from its first re-read on.
    QTRY_VERIFY_WITH_TIMEOUT((out += monitor->readAllStandardOutput(), out.count('\n') >= 6), 9000);
    const QList<QJsonObject> reports = jsonReports(out);
    for (const QJsonObject &report : reports) {
        int values = 0;
        for (const QJsonValue &disk : report.value(QStringLiteral("disks")).toArray()) {
            if (disk.toObject().value(QStringLiteral("serial")).toString() != QLatin1String("HX7K1D2208815"))
                continue;
            const QJsonArray attributes = disk.toObject().value(QStringLiteral("attributes")).toArray();
            values = attributes.at(0).toObject().value(QStringLiteral("current")).toInt();
        }
        QCOMPARE(values, 100);
    }
    // The others are read at every poll: the demo's hot disk warms up.
    QVERIFY(reports.first() != reports.last());

    QElapsedTimer clock;
    clock.start();
    ::kill(pid_t(monitor->processId()), SIGTERM);
    QVERIFY(monitor->waitForFinished(5000));
    QVERIFY2(clock.elapsed() < 1000, "the monitor took more than a second to stop");
    QCOMPARE(monitor->exitCode(), 0);
    QVERIFY(logLines(home.path()).last().endsWith(QLatin1String("]![INFO]![Session finished")));
}

void TestMonitorCommand::closedOutputEndsCleanly()
{
    QTemporaryDir home;
    QProcess shell;
    QProcessEnvironment env = TestEnv::ctlEnvironment();
    env.insert(QStringLiteral("CTL"), TestEnv::korvanectl());
    shell.setProcessEnvironment(env);
    // The reader goes away after the first line; pipefail gives the monitor's own exit status.
    shell.start(QStringLiteral("/bin/bash"),
                {QStringLiteral("-c"),
                 QStringLiteral("set -o pipefail; \"$CTL\" monitor --interval 1 --home \"$1\" --simulate \"$2\" | head -1"),
                 QStringLiteral("bash"), home.path(), TestEnv::demoDir()});
    QVERIFY(shell.waitForFinished(10000));
    QCOMPARE(shell.exitCode(), 0);
    QVERIFY(shell.readAllStandardOutput().endsWith(" Session started\n"));
    QVERIFY(logLines(home.path()).last().endsWith(QLatin1String("]![INFO]![Session finished")));
}

void TestMonitorCommand::refusedHomes_data()
{
    QTest::addColumn<bool>("fromEnvironment");
    QTest::addColumn<QString>("home");
    QTest::addColumn<QString>("message");
    QTest::newRow("KORVANE_HOME=/dev/null") << true << QStringLiteral("/dev/null")
                                            << QStringLiteral("KORVANE_HOME=/dev/null: /dev/null is not a folder");
    QTest::newRow("--home /dev/null") << false << QStringLiteral("/dev/null") << QStringLiteral("/dev/null is not a folder");
    QTest::newRow("KORVANE_HOME under a file") << true << QStringLiteral("/dev/null/korvane")
                                               << QStringLiteral("cannot create the folder /dev/null/korvane: ");
}

void TestMonitorCommand::refusedHomes()
{
    QFETCH(bool, fromEnvironment);
    QFETCH(QString, home);
    QFETCH(QString, message);
    QProcessEnvironment env = TestEnv::ctlEnvironment();
    QStringList arguments{QStringLiteral("monitor"), QStringLiteral("--once"), QStringLiteral("--simulate"), TestEnv::demoDir()};
    if (fromEnvironment)
        env.insert(QStringLiteral("KORVANE_HOME"), home);
    else
        arguments << QStringLiteral("--home") << home;
    const Finished run = runCtl(arguments, env);
    QCOMPARE(run.exitCode, 2);
    QVERIFY2(run.err.contains(message), qPrintable(run.err));
    QVERIFY(run.out.isEmpty());
}

void TestMonitorCommand::toldWhatCannotBeDone_data()
{
    QTest::addColumn<QString>("setUp"); // what stands in the home folder
    QTest::addColumn<QString>("message");
    QTest::newRow("event log is a folder") << QStringLiteral("log-folder")
                                           << QStringLiteral("KV_f.log: it is a directory, not a regular file; the event "
                                                             "log's records are lost");
    QTest::newRow("event log is a dangling link") << QStringLiteral("log-dangling")
                                                  << QStringLiteral("records are lost");
    QTest::newRow("event log is a FIFO") << QStringLiteral("log-fifo")
                                         << QStringLiteral("KV_f.log: it is a FIFO (named pipe), not a regular file");
    QTest::newRow("settings file is a FIFO") << QStringLiteral("ini-fifo")
                                             << QStringLiteral("Korvane.ini was not read: it is a FIFO");
    QTest::newRow("settings file is /dev/zero") << QStringLiteral("ini-zero")
                                                << QStringLiteral("Korvane.ini was not read: it is a character device");
    QTest::newRow("no disks") << QStringLiteral("no-disks") << QStringLiteral("no fixed ATA disks found");
}

void TestMonitorCommand::toldWhatCannotBeDone()
{
    QFETCH(QString, setUp);
    QFETCH(QString, message);
    QTemporaryDir home;
    QStringList arguments{QStringLiteral("monitor"), QStringLiteral("--once"), QStringLiteral("--home"), home.path(),
                          QStringLiteral("--simulate")};
    const QString log = home.filePath(QStringLiteral("KV_f.log"));
    if (setUp == QLatin1String("log-folder"))
        QVERIFY(QDir().mkpath(log));
    else if (setUp == QLatin1String("log-dangling"))
        QVERIFY(QFile::link(home.filePath(QStringLiteral("gone/KV_f.log")), log));
    else if (setUp == QLatin1String("log-fifo"))
        QCOMPARE(::mkfifo(QFile::encodeName(log).constData(), 0600), 0);
    else if (setUp == QLatin1String("ini-fifo"))
        QCOMPARE(::mkfifo(QFile::encodeName(home.filePath(QStringLiteral("Korvane.ini"))).constData(), 0600), 0);
    else if (setUp == QLatin1String("ini-zero"))
        QVERIFY(QFile::link(QStringLiteral("/dev/zero"), home.filePath(QStringLiteral("Korvane.ini"))));
    if (setUp == QLatin1String("no-disks")) {
        QVERIFY(QDir().mkpath(home.filePath(QStringLiteral("empty"))));
        arguments << home.filePath(QStringLiteral("empty"));
    } else {
        arguments << TestEnv::demoDir();
    }
    const Finished run = runCtl(arguments);
    QCOMPARE(run.exitCode, 0);
    // Said once, however many records were lost.
    QCOMPARE(run.err.count(message), 1);
    QVERIFY(run.out.contains(QLatin1String("Session finished")));
}

void TestMonitorCommand::pathsInAnotherEncodingNameTheUsersFiles()
{
    // A Latin-1 "démo" folder, and a description file inside it, as an older system names them.
    QTemporaryDir root;
    const QByteArray folder = QFile::encodeName(root.path()) + "/d\xe9mo";
    const QByteArray home = folder + "/home";
    QVERIFY(::mkdir(folder.constData(), 0700) == 0);
    {
        QFile source(TestEnv::demoDir() + QStringLiteral("/01-halvard-system.json"));
        QVERIFY(source.open(QIODevice::ReadOnly));
        const QByteArray content = source.readAll();
        FILE *file = ::fopen((folder + "/disk.json").constData(), "wb");
        QVERIFY(file);
        QCOMPARE(::fwrite(content.constData(), 1, size_t(content.size()), file), size_t(content.size()));
        ::fclose(file);
    }
    QProcess shell;
    QProcessEnvironment env = TestEnv::ctlEnvironment();
    env.insert(QStringLiteral("CTL"), TestEnv::korvanectl());
    shell.setProcessEnvironment(env);
    // The bytes go in through the shell's printf: QProcess would pass its arguments as UTF-8.
    const QString escaped = root.path() + QStringLiteral("/d\\351mo");
    shell.start(QStringLiteral("/bin/sh"),
                {QStringLiteral("-c"),
                 QStringLiteral("exec \"$CTL\" monitor --once --home \"$(printf '%b/home' \"$1\")\" "
                                "--simulate \"$(printf '%b' \"$1\")\""),
                 QStringLiteral("sh"), escaped});
    QVERIFY(shell.waitForStarted());
    QVERIFY(shell.waitForFinished(30000));
    QCOMPARE(shell.exitCode(), 0);
    QVERIFY(QString::fromUtf8(shell.readAllStandardOutput()).contains(QLatin1String("Session finished")));
    struct stat info = {};
    QVERIFY2(::stat((home + "/KV_f.log").constData(), &info) == 0, "the log is not in the folder named");
    QVERIFY(info.st_size > 0);
}

void TestMonitorCommand::controlCharactersStayOnOneLine()
{
    QTemporaryDir home;
    QTemporaryDir disks;
    // A serial that would start a forged record on a line of its own, at the warning level.
    writeFile(disks.filePath(QStringLiteral("odd.json")), R"({"size": 320072933376,
  "identity": {"model": "Odd\nDisk", "serial": "A\n20991231235959]![X"},
  "smart": {"attributes": [{"id": 5, "flags": 51, "current": 30, "threshold": 30, "raw": 9}]}})");
    const Finished run = runCtl({QStringLiteral("monitor"), QStringLiteral("--once"), QStringLiteral("--home"),
                                 home.path(), QStringLiteral("--simulate"), disks.path()});
    QCOMPARE(run.exitCode, 0);
    const QRegularExpression stamped(QStringLiteral("^\\d{4}-\\d\\d-\\d\\d \\d\\d:\\d\\d:\\d\\d "));
    const QStringList out = run.out.split(QLatin1Char('\n'), Qt::SkipEmptyParts);
    QCOMPARE(out.size(), 3);
    for (const QString &line : out)
        QVERIFY2(stamped.match(line).hasMatch(), qPrintable(line));
    QVERIFY(out.at(1).contains(QLatin1String("Disk: Odd Disk  Serial: A 20991231235959]![X Param(")));
    const QStringList log = logLines(home.path());
    QCOMPARE(log.size(), 3);
    for (const QString &line : log)
        QVERIFY2(QRegularExpression(QStringLiteral("^\\d{14}\\]!\\[(INFO|SMART)\\]!\\[")).match(line).hasMatch(), qPrintable(line));
}

QTEST_GUILESS_MAIN(TestMonitorCommand)
#include "tst_monitorcommand.moc"
