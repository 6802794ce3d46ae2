#include "SmtpTestServer.h"
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

#include <sys/stat.h>

namespace {

using Finished = TestEnv::CtlRun;

// `korvanectl monitor` on the demo disks and \a extra, keeping its files in \a home.
QStringList monitorArguments(const QString &home, const QStringList &extra)
{
    return QStringList{"monitor", "--home", home, "--simulate", TestEnv::demoDir()} + extra;
}

// A disk of the demo set that hangs \a seconds at its poll \a poll (0: the first read).
QString hangingDisk(const QTemporaryDir &dir, int seconds, int poll)
{
    const QString path = dir.filePath(QStringLiteral("hanging.json"));
    TestFiles::write(path, QStringLiteral(R"({"size": 320072933376,
  "identity": {"model": "Halvard HX320-7K1", "serial": "HX7K1D2208815"},
  "smart": {"attributes": [{"id": 1, "flags": 11, "current": [100, 90, 80, 70], "threshold": 50, "raw": 0},
                           {"id": 194, "flags": 34, "current": 100, "threshold": 0, "raw": 39}]},
  "behaviour": {"hang": {"seconds": %1, "polls": [%2]}}})").arg(seconds).arg(poll).toUtf8());
    return path;
}

QStringList logLines(const QString &home)
{
    return QString::fromLocal8Bit(TestFiles::read(home + QStringLiteral("/KV_f.log")))
        .split(QLatin1Char('\n'), Qt::SkipEmptyParts);
}

QList<QJsonObject> jsonReports(const QByteArray &out)
{
    QList<QJsonObject> reports;
    for (const QByteArray &line : out.split('\n'))
        if (!line.trimmed().isEmpty())
            reports << QJsonDocument::fromJson(line).object();
    return reports;
}

// Runs \a script in bash with \a arguments as $1..., korvanectl as $CTL; its exit code, -1 when it hung.
int shell(const char *script, const QStringList &arguments, QByteArray *out)
{
    QProcess bash;
    QProcessEnvironment env = TestEnv::ctlEnvironment();
    env.insert(QStringLiteral("CTL"), TestEnv::korvanectl());
    bash.setProcessEnvironment(env);
    bash.start(QStringLiteral("/bin/bash"), QStringList{"-c", QString::fromUtf8(script), "bash"} + arguments);
    if (!bash.waitForFinished(30000))
        return -1;
    *out = bash.readAllStandardOutput();
    return bash.exitCode();
}

QJsonObject diskOf(const QJsonObject &report, const QString &model)
{
    for (const QJsonValue &v : report.value(QStringLiteral("disks")).toArray())
        if (v.toObject().value(QStringLiteral("model")).toString().startsWith(model))
            return v.toObject();
    return {};
}

// A serial that would start a forged record on a line of its own, at the warning level.
const QByteArray oddDisk = R"({"size": 320072933376,
  "identity": {"model": "Odd\nDisk", "serial": "A\n20991231235959]![X"},
  "smart": {"attributes": [{"id": 5, "flags": 51, "current": 30, "threshold": 30, "raw": 9}]}})";

} // namespace

class TestMonitorCommand : public QObject
{
    Q_OBJECT

private slots:
    // Every line of the output and of the event log is one stamped line, whatever a disk calls itself.
    void onceWritesOneStampedLinePerEvent()
    {
        QTemporaryDir home;
        QTemporaryDir disks;
        QVERIFY(TestFiles::write(disks.filePath(QStringLiteral("odd.json")), oddDisk));
        const Finished run = TestEnv::runKorvanectl(monitorArguments(home.path(), {"--once", "--simulate", disks.path()}));
        QCOMPARE(run.exitCode, 0);
        const QStringList out = run.out.split(QLatin1Char('\n'), Qt::SkipEmptyParts);
        const QRegularExpression stamped(QStringLiteral("^\\d{4}-\\d\\d-\\d\\d \\d\\d:\\d\\d:\\d\\d "));
        for (const QString &line : out)
            QVERIFY2(stamped.match(line).hasMatch(), qPrintable(line));
        QVERIFY(out.first().endsWith(QLatin1String(" Session started")));
        QVERIFY(out.last().endsWith(QLatin1String(" Session finished")));
        // The demo's archive disk sits at its reallocation threshold from the start.
        QCOMPARE(out.filter(QStringLiteral("HX2000-5K4  Serial: HX5K4C0B77310 Param(Reallocated sector count) "
                                           "has reached WARNING level")).size(), 1);
        QCOMPARE(out.filter(QStringLiteral("Disk: Odd Disk  Serial: A 20991231235959]![X Param(")).size(), 1);

        const QStringList log = logLines(home.path());
        for (const QString &line : log)
            QVERIFY2(QRegularExpression(QStringLiteral("^\\d{14}\\]!\\[(INFO|SMART)\\]!\\[")).match(line).hasMatch(),
                     qPrintable(line));
        QVERIFY(log.first().endsWith(QLatin1String("]![INFO]![Session started")));
        QVERIFY(log.last().endsWith(QLatin1String("]![INFO]![Session finished")));
        QVERIFY(log.filter(QStringLiteral("]![SMART]![")).size() >= 5);
    }

    // The first evaluation is a change of level: `--once` mails it and waits for the dialogue (each
    // kind of connection is the client's test); a failure is one stamped line among the events,
    // and the run goes on.
    void mailsTheFirstEvaluation_data()
    {
        QTest::addColumn<int>("mode");
        QTest::addColumn<QString>("password");
        QTest::addColumn<QString>("failure");
        QTest::newRow("STARTTLS") << int(SmtpTestServer::StartTls) << "s3cret" << QString();
        QTest::newRow("password refused") << int(SmtpTestServer::StartTls) << "wrong"
                                          << "SMTP error: Unexpected reply from SMTP server.";
    }
    void mailsTheFirstEvaluation()
    {
        QFETCH(int, mode);
        QFETCH(QString, password);
        QFETCH(QString, failure);
        if (const QString missing = SmtpTestServer::missingTools(); !missing.isEmpty())
            QSKIP(qPrintable(missing));
        SmtpTestServer server;
        QVERIFY2(server.start(SmtpTestServer::Mode(mode), QStringLiteral("kv:s3cret")), server.log());
        QTemporaryDir home;
        QVERIFY(TestFiles::write(home.filePath(QStringLiteral("Korvane.ini")),
                                 QStringLiteral("eml_notif_enable=1\r\nSMTP_from=kv@example.org\r\n"
                                                "SMTP_to=admin@example.org\r\nSMTP_server=127.0.0.1\r\n"
                                                "SMTP_port=%1\r\nSMTP_auth=1\r\nSMTP_user=kv\r\nSMTP_pass=%2\r\n"
                                                "SMTP_security=%3\r\n")
                                     .arg(server.port()).arg(password).arg(mode).toUtf8()));
        QProcessEnvironment env = TestEnv::ctlEnvironment();
        env.insert(QStringLiteral("SSL_CERT_FILE"), server.certificateFile());
        const Finished run = TestEnv::runKorvanectl(monitorArguments(home.path(), {"--once"}), env);
        QCOMPARE(run.exitCode, 0);
        const QStringList out = run.out.split(QLatin1Char('\n'), Qt::SkipEmptyParts);
        QVERIFY(out.last().endsWith(QLatin1String(" Session finished")));
        if (!failure.isEmpty()) {
            QCOMPARE(out.filter(failure).size(), 1);
            QCOMPARE(server.messages().size(), 0);
            return;
        }
        QVERIFY2(out.filter(QStringLiteral("SMTP error")).isEmpty(), qPrintable(run.out));
        QCOMPARE(server.messages().size(), 1);
        const QByteArray mail = server.messages().first();
        QVERIFY2(mail.startsWith("From: kv@example.org\r\nTo: admin@example.org\r\n"
                                 "Subject: Korvane [Health status: WARNING]\r\n\r\n"), mail);
        QVERIFY(mail.contains("Param(Reallocated sector count) has reached WARNING level"));
    }

    // The settings in the home folder are read (what each does is the monitor's test).
    void homeSettingsAreHonoured()
    {
        QTemporaryDir home;
        QVERIFY(TestFiles::write(home.filePath(QStringLiteral("Korvane.ini")), "warn_temp=30\r\ncrit_temp=45\r\n"));
        const Finished run = TestEnv::runKorvanectl(monitorArguments(home.path(), {"--once", "--json"}));
        QCOMPARE(run.exitCode, 0);
        const QList<QJsonObject> reports = jsonReports(run.out.toUtf8());
        QCOMPARE(reports.size(), 1);
        const QJsonObject report = reports.first();
        // The hot disk starts at 49 C: below the default 55, above the 45 set here.
        QCOMPARE(diskOf(report, QStringLiteral("Brenner")).value(QStringLiteral("level")).toInt(), 3);
        QCOMPARE(report.value(QStringLiteral("overallLevel")).toInt(), 3);
        QCOMPARE(report.value(QStringLiteral("popUp")).toObject().value(QStringLiteral("title")).toString(),
                 QStringLiteral("Alarm"));
        const QJsonObject system = diskOf(report, QStringLiteral("Halvard HX1000"));

        // The same disk fields as `info --json`, plus the level and health of the evaluation.
        const Finished info = TestEnv::runKorvanectl({"info", "--json", "--simulate", TestEnv::demoDir()});
        QStringList keys = QJsonDocument::fromJson(info.out.toUtf8())
                               .object().value(QStringLiteral("disks")).toArray().at(0).toObject().keys();
        keys << QStringLiteral("level") << QStringLiteral("health");
        keys.sort();
        QCOMPARE(system.keys(), keys);
    }

    void stopRequestsAreHonouredWhenever_data()
    {
        QTest::addColumn<int>("signal");
        QTest::addColumn<int>("hangAt"); // the poll at which a disk hangs (0: the first read); -1 none
        QTest::newRow("SIGTERM during the first read") << int(SIGTERM) << 0;
        QTest::newRow("SIGINT during the first read") << int(SIGINT) << 0;
        QTest::newRow("SIGHUP during the first read") << int(SIGHUP) << 0;
        QTest::newRow("SIGTERM between polls") << int(SIGTERM) << -1;
        QTest::newRow("SIGHUP between polls") << int(SIGHUP) << -1;
        QTest::newRow("SIGTERM while a re-read hangs") << int(SIGTERM) << 1;
    }
    void stopRequestsAreHonouredWhenever()
    {
        QFETCH(int, signal);
        QFETCH(int, hangAt);
        QTemporaryDir home;
        QTemporaryDir disks;
        // The hang lasts longer than the watchdog waits.
        QStringList extra{"--interval", "1", "--json"};
        if (hangAt >= 0)
            extra << "--simulate" << hangingDisk(disks, 60, hangAt);
        QProcess monitor;
        monitor.setProcessEnvironment(TestEnv::ctlEnvironment());
        monitor.start(TestEnv::korvanectl(), monitorArguments(home.path(), extra));
        QByteArray out;
        if (hangAt == 0) {
            QTRY_VERIFY_WITH_TIMEOUT(QFileInfo(home.filePath(QStringLiteral("KV_f.log"))).size() > 0, 10000);
            QTest::qWait(300);
        } else {
            QTRY_VERIFY_WITH_TIMEOUT((out += monitor.readAllStandardOutput(), out.count('\n') >= 3), 30000);
        }

        QElapsedTimer clock;
        clock.start();
        ::kill(pid_t(monitor.processId()), signal);
        QVERIFY(monitor.waitForFinished(5000));
        QVERIFY2(clock.elapsed() < 1000, "the monitor took more than a second to stop");
        QCOMPARE(monitor.exitStatus(), QProcess::NormalExit);
        QCOMPARE(monitor.exitCode(), 0);

        const QStringList log = logLines(home.path());
        QVERIFY(log.last().endsWith(QLatin1String("]![INFO]![Session finished")));
        // Every evaluation samples every monitored disk.
        const QList<QJsonObject> reports = jsonReports(out + monitor.readAllStandardOutput());
        QCOMPARE(reports.isEmpty(), hangAt == 0);
        if (!reports.isEmpty()) {
            const int perPoll = int(reports.first().value(QStringLiteral("disks")).toArray().size());
            QCOMPARE(log.filter(QStringLiteral("]![SMART]![")).size(), perPoll * int(reports.size()));
        }
    }

    void closedOutputEndsCleanly()
    {
        QTemporaryDir home;
        // The reader goes away after the first line; pipefail gives the monitor's own exit status.
        QByteArray out;
        QCOMPARE(shell("set -o pipefail; \"$CTL\" monitor --interval 1 --home \"$1\" --simulate \"$2\" | head -1",
                       {home.path(), TestEnv::demoDir()}, &out), 0);
        QVERIFY(out.endsWith(" Session started\n"));
        QVERIFY(logLines(home.path()).last().endsWith(QLatin1String("]![INFO]![Session finished")));
    }

    void refusedHomes_data()
    {
        QTest::addColumn<bool>("fromEnvironment");
        QTest::addColumn<QString>("message");
        QTest::newRow("KORVANE_HOME") << true << QStringLiteral("KORVANE_HOME=/dev/null: /dev/null is not a folder");
        QTest::newRow("--home") << false << QStringLiteral("/dev/null is not a folder");
    }
    void refusedHomes()
    {
        QFETCH(bool, fromEnvironment);
        QFETCH(QString, message);
        QProcessEnvironment env = TestEnv::ctlEnvironment();
        QStringList arguments{"monitor", "--once", "--simulate", TestEnv::demoDir()};
        if (fromEnvironment)
            env.insert(QStringLiteral("KORVANE_HOME"), QStringLiteral("/dev/null"));
        else
            arguments << "--home" << QStringLiteral("/dev/null");
        const Finished run = TestEnv::runKorvanectl(arguments, env);
        QCOMPARE(run.exitCode, 2);
        QVERIFY2(run.err.contains(message), qPrintable(run.err));
        QVERIFY(run.out.isEmpty());
    }

    // Files that would block or never end where the monitor reads or writes: it says so, once,
    // and goes on.
    void toldWhatCannotBeDone_data()
    {
        QTest::addColumn<QString>("file"); // what stands in the home folder under that name
        QTest::addColumn<QString>("message");
        QTest::newRow("event log is a FIFO") << "fifo:KV_f.log"
                                             << "KV_f.log: it is a FIFO (named pipe), not a regular file";
        QTest::newRow("settings file is a FIFO") << "fifo:Korvane.ini" << "Korvane.ini was not read: it is a FIFO";
        QTest::newRow("settings file is /dev/zero") << "zero:Korvane.ini"
                                                    << "Korvane.ini was not read: it is a character device";
        QTest::newRow("no disks") << "" << "no fixed ATA disks found";
    }
    void toldWhatCannotBeDone()
    {
        QFETCH(QString, file);
        QFETCH(QString, message);
        QTemporaryDir home;
        const QString path = home.filePath(file.section(QLatin1Char(':'), 1));
        if (file.startsWith(QLatin1String("fifo:")))
            QCOMPARE(::mkfifo(QFile::encodeName(path).constData(), 0600), 0);
        else if (file.startsWith(QLatin1String("zero:")))
            QVERIFY(QFile::link(QStringLiteral("/dev/zero"), path));
        const QString empty = home.filePath(QStringLiteral("empty"));
        QVERIFY(QDir().mkpath(empty));
        const Finished run = TestEnv::runKorvanectl(
            {"monitor", "--once", "--home", home.path(), "--simulate", file.isEmpty() ? empty : TestEnv::demoDir()});
        QCOMPARE(run.exitCode, 0);
        QCOMPARE(run.err.count(message), 1);
        QVERIFY(run.out.contains(QLatin1String("Session finished")));
    }

    void pathsInAnotherEncodingNameTheUsersFiles()
    {
        // A Latin-1 "démo" folder, and a description file inside it, as an older system names them.
        // The bytes go in through the shell's printf: QProcess would pass its arguments as UTF-8.
        QTemporaryDir root;
        QByteArray out;
        QCOMPARE(shell("d=$(printf '%b' \"$1\") && mkdir \"$d\" && cp \"$2\" \"$d/disk.json\" && "
                       "exec \"$CTL\" monitor --once --home \"$d/home\" --simulate \"$d\"",
                       {root.path() + "/d\\351mo", TestEnv::demoDir() + "/01-halvard-system.json"}, &out), 0);
        QVERIFY(out.contains("Session finished"));
        struct stat info = {};
        const QByteArray log = QFile::encodeName(root.path()) + "/d\xe9mo/home/KV_f.log";
        QVERIFY2(::stat(log.constData(), &info) == 0, "the log is not in the folder named");
        QVERIFY(info.st_size > 0);
    }
};

QTEST_GUILESS_MAIN(TestMonitorCommand)
#include "tst_monitorcommand.moc"
