#include "settings/Autostart.h"

#include "TestEnv.h"
#include "TestFiles.h"

#include <QDeadlineTimer>
#include <QDir>
#include <QProcess>
#include <QTemporaryDir>
#include <QTest>

#include <csignal>
#include <memory>

namespace {

QString korvane()
{
    return qEnvironmentVariable("KORVANE_GUI");
}

// A user configuration of our own: a developer's autostart entry must not steer a hidden start.
QString emptyConfigHome()
{
    static const QTemporaryDir config;
    return config.path();
}

// The program as a user starts it on the demo disks, keeping its files in \a home (when given),
// with \a configHome as the user's configuration folder.
std::unique_ptr<QProcess> startKorvane(const QString &home, const QStringList &arguments = {},
                                       const QString &workingDirectory = {},
                                       const QString &configHome = emptyConfigHome())
{
    auto process = std::make_unique<QProcess>();
    QProcessEnvironment env = TestEnv::ctlEnvironment();
    env.insert(QStringLiteral("KORVANE_SIMULATE"), TestEnv::demoDir());
    if (!home.isEmpty())
        env.insert(QStringLiteral("KORVANE_HOME"), home);
    env.insert(QStringLiteral("XDG_CONFIG_HOME"), configHome);
    env.insert(QStringLiteral("QT_QPA_PLATFORM"), QStringLiteral("offscreen"));
    process->setProcessEnvironment(env);
    process->setProcessChannelMode(QProcess::ForwardedErrorChannel);
    if (!workingDirectory.isEmpty())
        process->setWorkingDirectory(workingDirectory);
    process->start(korvane(), arguments);
    process->waitForStarted();
    return process;
}

// Waits until the file at \a path holds \a text.
bool waitForText(const QString &path, const QByteArray &text, int timeoutMs = 30000)
{
    QDeadlineTimer deadline(timeoutMs);
    while (!deadline.hasExpired()) {
        if (TestFiles::read(path).contains(text))
            return true;
        QTest::qWait(50);
    }
    return false;
}

// Sends \a signal and returns the exit code, -1 when it did not end cleanly.
int stop(QProcess &process, int signal = SIGTERM)
{
    ::kill(pid_t(process.processId()), signal);
    if (!process.waitForFinished(30000) || process.exitStatus() != QProcess::NormalExit)
        return -1;
    return process.exitCode();
}

} // namespace

class TestKorvaneApp : public QObject
{
    Q_OBJECT
private slots:
    void initTestCase()
    {
        if (korvane().isEmpty())
            QSKIP("KORVANE_GUI is not set: run through ctest");
    }
    void aThirdCopyLeavesSilently()
    {
        QTemporaryDir home;
        const QString log = home.filePath(QStringLiteral("KV_f.log"));
        auto first = startKorvane(home.path());
        QVERIFY(waitForText(log, "Session started"));
        // The program counts itself: a second copy may start.
        auto second = startKorvane(home.path());
        QVERIFY(!second->waitForFinished(1500));
        auto third = startKorvane(home.path());
        QVERIFY(third->waitForFinished(15000));
        QCOMPARE(third->exitCode(), 1);
        QCOMPARE(third->readAllStandardOutput(), QByteArray());
        QCOMPARE(stop(*second), 0);
        QCOMPARE(stop(*first), 0);
    }

    // Which signals stop a run is tested through korvanectl, which shares the watcher.
    void aStopSignalEndsTheSessionLikeClose()
    {
        QTemporaryDir home;
        const QString log = home.filePath(QStringLiteral("KV_f.log"));
        auto korvaneRun = startKorvane(home.path(), {QStringLiteral("hide")});
        // The first SMART records mean discovery is over and the disks are known.
        QVERIFY(waitForText(log, "]![SMART]!["));
        QCOMPARE(stop(*korvaneRun, SIGHUP), 0);
        const QList<QByteArray> records = TestFiles::read(log).trimmed().split('\n');
        QVERIFY2(records.last().endsWith("INFO]![Session finished"), records.last().constData());
        // The settings were saved with one line per disk.
        QVERIFY(TestFiles::read(home.filePath(QStringLiteral("Korvane.ini"))).contains("disk[HX7K2A9F31042]="));
    }

    void detailedLogGoesToTheWorkingDirectory()
    {
        QTemporaryDir home;
        QTemporaryDir elsewhere;
        const QString trace = elsewhere.filePath(QStringLiteral("KVdet.log"));
        TestFiles::write(trace, "left from an earlier run\n");
        auto korvaneRun = startKorvane(home.path(), {QStringLiteral("-detlog")}, elsewhere.path());
        QVERIFY(waitForText(trace, "End initSystem"));
        QCOMPARE(stop(*korvaneRun), 0);
        const QList<QByteArray> lines = TestFiles::read(trace).trimmed().split('\n');
        const QList<QByteArray> expected = {"Start app", "Before initSystem", "Before getDevice_Info",
                                            "Before getSMART_Info", "get_device_coplette", "End initSystem"};
        QCOMPARE(lines.size(), expected.size()); // started afresh
        for (int i = 0; i < expected.size(); ++i) {
            QVERIFY2(lines.at(i).endsWith("    " + expected.at(i)), lines.at(i).constData());
            QVERIFY(QDateTime::fromString(QString::fromLatin1(lines.at(i).left(19)).replace(QLatin1Char(' '), QLatin1Char('T')),
                                          Qt::ISODate).isValid());
        }
    }

    void aHiddenStartKeepsItsFilesWhereAutostartPoints()
    {
        QTemporaryDir config;
        QTemporaryDir install;
        const QString folder = install.filePath(QStringLiteral("my tools"));
        QVERIFY(QDir().mkpath(folder));
        qputenv("XDG_CONFIG_HOME", QFile::encodeName(config.path()));
        QCOMPARE(Autostart::setAutostart(true, folder + QStringLiteral("/Korvane")), int(Autostart::Done));
        auto korvaneRun = startKorvane(QString(), {QStringLiteral("hide")}, {}, config.path());
        const QString log = folder + QStringLiteral("/KV_f.log");
        QVERIFY(waitForText(log, "]![SMART]!["));
        QCOMPARE(stop(*korvaneRun), 0);
        QVERIFY(TestFiles::read(log).trimmed().endsWith("INFO]![Session finished"));
        QVERIFY(TestFiles::read(folder + QStringLiteral("/Korvane.ini")).contains("disk[HX7K2A9F31042]="));
    }
};

QTEST_GUILESS_MAIN(TestKorvaneApp)
#include "tst_korvaneapp.moc"
