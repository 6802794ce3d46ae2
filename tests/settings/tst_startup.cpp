#include "settings/AppSettings.h"
#include "settings/DetailLog.h"
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
    void firstArgumentOnly_data();
    void firstArgumentOnly();
    void processCount();
    void windowTitles();
    void detailLogStartsAfreshInTheWorkingDirectory();
};

void TestStartup::firstArgumentOnly_data()
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

void TestStartup::firstArgumentOnly()
{
    QFETCH(QStringList, arguments);
    QFETCH(bool, shown);
    QFETCH(bool, detailLog);
    AppSettings settings;
    applyArguments(settings, QStringList{QStringLiteral("Korvane")} + arguments);
    QCOMPARE(settings.showMainWindow, shown);
    QCOMPARE(settings.detailLogEnabled, detailLog);
}

void TestStartup::processCount()
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

void TestStartup::windowTitles()
{
    const FreeEdition free;
    QCOMPARE(windowTitle(free), QStringLiteral("Korvane [Build %1 Free Version]").arg(free.buildNumber()));
    QVERIFY(!free.buildNumber().isEmpty());
    QVERIFY(free.registrationText().contains(QStringLiteral("MIT")));
    QCOMPARE(windowTitle(RegisteredEdition()), QStringLiteral("Korvane Build 77"));
}

void TestStartup::detailLogStartsAfreshInTheWorkingDirectory()
{
    QTemporaryDir dir;
    const QString saved = QDir::currentPath();
    QDir::setCurrent(dir.path());
    const QString path = dir.filePath(QStringLiteral("KVdet.log"));
    TestFiles::write(path, "from an earlier run\n");
    writeDetailLog(true, QStringLiteral("Start app"));
    writeDetailLog(false, QStringLiteral("Before initSystem"));
    writeDetailLog(false, QStringLiteral("Before initSystem"));
    QDir::setCurrent(saved);
    const QList<QByteArray> lines = TestFiles::read(path).split('\n');
    QCOMPARE(lines.size(), 4); // three lines and the empty rest after the last line end
    QVERIFY(lines.at(0).endsWith(" Start app"));
    QVERIFY(lines.at(2).endsWith("    Before initSystem"));
    const QByteArray stamp = lines.at(0).left(19);
    QVERIFY2(QDateTime::fromString(QString::fromLatin1(stamp).replace(QLatin1Char(' '), QLatin1Char('T')),
                                   Qt::ISODate).isValid(), stamp.constData());
    // A folder that cannot be written is skipped without a word.
    QDir::setCurrent(QStringLiteral("/proc"));
    writeDetailLog(true, QStringLiteral("nowhere"));
    QDir::setCurrent(saved);
}

QTEST_GUILESS_MAIN(TestStartup)
#include "tst_startup.moc"
