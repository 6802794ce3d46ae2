#include "settings/AppSettings.h"
#include "settings/FreeEdition.h"
#include "settings/ProcessCount.h"
#include "settings/StartupOptions.h"

#include "TestFiles.h"

#include <QDir>
#include <QTemporaryDir>
#include <QtTest>

namespace {

class RegisteredEdition final : public LicenceLayer
{
public:
    bool isRegistered() const override { return true; }
    QString buildNumber() const override { return QStringLiteral("77"); }
    QString registrationText() const override { return {}; }
};

// A proc file system of processes with the given names (pid = position + 1), plus entries that
// are no processes.
void makeProc(const QString &root, const QStringList &names)
{
    for (int i = 0; i < names.size(); ++i) {
        const QString dir = QStringLiteral("%1/%2").arg(root).arg(i + 1);
        QDir().mkpath(dir);
        TestFiles::write(dir + QStringLiteral("/comm"), names.at(i).toUtf8() + '\n');
    }
    QDir().mkpath(root + QStringLiteral("/self"));
    TestFiles::write(root + QStringLiteral("/self/comm"), "Korvane\n");
    QDir().mkpath(root + QStringLiteral("/sys"));
    QDir().mkpath(root + QStringLiteral("/99")); // ended between listing and reading: no comm
}

} // namespace

class TestStartup : public QObject
{
    Q_OBJECT
private slots:
    void firstArgumentOnly_data()
    {
        QTest::addColumn<QStringList>("arguments");
        QTest::addColumn<bool>("shown");
        QTest::addColumn<bool>("detailLog");
        QTest::newRow("none") << QStringList{} << true << false;
        QTest::newRow("hide") << QStringList{QStringLiteral("hide")} << false << false;
        QTest::newRow("-detlog") << QStringList{QStringLiteral("-detlog")} << true << true;
        QTest::newRow("HIDE is not hide") << QStringList{QStringLiteral("HIDE")} << true << false;
        QTest::newRow("hide -detlog: second ignored")
            << QStringList{QStringLiteral("hide"), QStringLiteral("-detlog")} << false << false;
        QTest::newRow("-detlog hide: second ignored")
            << QStringList{QStringLiteral("-detlog"), QStringLiteral("hide")} << true << true;
        QTest::newRow("--hide") << QStringList{QStringLiteral("--hide")} << true << false;
    }

    void firstArgumentOnly()
    {
        QFETCH(QStringList, arguments);
        QFETCH(bool, shown);
        QFETCH(bool, detailLog);
        AppSettings settings;
        applyArguments(settings, QStringList{QStringLiteral("Korvane")} + arguments);
        QCOMPARE(settings.showMainWindow, shown);
        QCOMPARE(settings.detailLogEnabled, detailLog);
    }

    void processCount()
    {
        QTemporaryDir proc;
        makeProc(proc.path(), {QStringLiteral("bash"), QStringLiteral("Korvane"), QStringLiteral("KORVANE"),
                               QStringLiteral("korvanectl"), QStringLiteral("Korvane-screens")});
        // Case is ignored, other names and non-process entries are not counted.
        QCOMPARE(countProcesses(QStringLiteral("Korvane"), proc.path()), 2);
        // The kernel cuts names at 15 characters: a longer name matches its cut form.
        QCOMPARE(countProcesses(QStringLiteral("korvane-screenshots"), proc.path()), 1);
        QCOMPARE(countProcesses(QStringLiteral("absent"), proc.path()), 0);
        QCOMPARE(countProcesses(QStringLiteral("Korvane"), proc.filePath(QStringLiteral("missing"))), 0);
        // This test process itself is seen in the real /proc.
        QCOMPARE(countProcesses(QStringLiteral("tst_startup")), 1);
        QVERIFY(!isProcessRunning(QStringLiteral("tst_startup")));
    }

    void windowTitles()
    {
        const FreeEdition free;
        QCOMPARE(windowTitle(free), QStringLiteral("Korvane [Build %1 Free Version]").arg(free.buildNumber()));
        QCOMPARE(windowTitle(RegisteredEdition()), QStringLiteral("Korvane Build 77"));
    }
};

QTEST_GUILESS_MAIN(TestStartup)
#include "tst_startup.moc"
