#include "settings/AppPaths.h"
#include "settings/AppSettings.h"
#include "settings/Autostart.h"
#include "settings/LanguageTable.h"
#include "settings/PreferencesApply.h"
#include "settings/PreferencesCheck.h"
#include "settings/SettingsFile.h"
#include "settings/SettingsStore.h"

#include "TestFiles.h"

#include <QDir>
#include <QProcess>
#include <QRandomGenerator>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QtTest>

#include <memory>

namespace {

using Setter = std::function<void(AppSettings &)>;

QString keysOf(const QList<PreferencesProblem> &problems)
{
    QStringList keys;
    for (const PreferencesProblem &problem : problems)
        keys << problem.key;
    return keys.join(QLatin1Char(','));
}

} // namespace

Q_DECLARE_METATYPE(Setter)

class TestPreferences : public QObject
{
    Q_OBJECT
    std::unique_ptr<QTemporaryDir> m_home;

    QString settingsFile() const { return m_home->filePath(QStringLiteral("Korvane.ini")); }

private slots:
    void initTestCase()
    {
        QVERIFY(loadLanguage(LanguageTable::English));
    }
    void init()
    {
        m_home = std::make_unique<QTemporaryDir>();
        QString error;
        QVERIFY2(SettingsStore::instance().setHomeFolder(m_home->path(), &error), qPrintable(error));
        setDefaults({});
        QVERIFY(SettingsStore::instance().setLanguage(LanguageTable::English));
    }

    // Only what the settings file gives back unchanged may be saved; the rest is named, with
    // what to do about it where the cause is clear.
    void valuesThatWouldNotReadBack_data()
    {
        QTest::addColumn<Setter>("change");
        QTest::addColumn<QString>("refused");
        QTest::addColumn<QString>("hint"); // part of the first problem's text

        QTest::newRow("defaults") << Setter([](AppSettings &) {}) << "" << "";
        QTest::newRow("the widest pair") << Setter([](AppSettings &s) { s.warn_temp = 80; s.crit_temp = 100; }) << "" << "";
        QTest::newRow("German, a session's choice") << Setter([](AppSettings &s) { s.LanguageType = 2; }) << "" << "";
        QTest::newRow("blanks and = in a password")
            << Setter([](AppSettings &s) { s.SMTP_pass = QStringLiteral("p=ss word"); }) << "" << "";
        QTest::newRow("an emptied text")
            << Setter([](AppSettings &s) { s.extWarnTask.clear(); s.SMTP_pass.clear(); }) << "" << "";
        QTest::newRow("equal limits")
            << Setter([](AppSettings &s) { s.warn_temp = 60; s.crit_temp = 60; }) << "warn_temp" << "between 30 and 80";
        QTest::newRow("warning too low") << Setter([](AppSettings &s) { s.warn_temp = 29; }) << "warn_temp" << "";
        QTest::newRow("critical too high") << Setter([](AppSettings &s) { s.crit_temp = 101; }) << "warn_temp" << "";
        QTest::newRow("no interval") << Setter([](AppSettings &s) { s.poll_time = 0; }) << "poll_time"
                                     << "\"Check SMART attributes every\"";
        QTest::newRow("an eleventh style") << Setter([](AppSettings &s) { s.StyleType = 10; }) << "StyleType" << "";
        QTest::newRow("a letter outside ASCII")
            << Setter([](AppSettings &s) { s.SMTP_pass = QStringLiteral("m\u00fcller"); }) << "SMTP_pass" << "ASCII";
        QTest::newRow("a key inside a task")
            << Setter([](AppSettings &s) { s.extCritTask = QStringLiteral("notify SMTP_user=root"); })
            << "extCritTask" << "Remove \"SMTP_user=\"";
        QTest::newRow("a placeholder in the sender")
            << Setter([](AppSettings &s) {
                   s.SMTP_from = QStringLiteral("%14");
                   s.SMTP_to = QStringLiteral("admin@example.org");
               })
            << "SMTP_from" << "Remove \"%14\"";
    }
    void valuesThatWouldNotReadBack()
    {
        QFETCH(Setter, change);
        QFETCH(QString, refused);
        QFETCH(QString, hint);
        AppSettings wanted;
        wanted.extWarnTask = QStringLiteral("/usr/local/bin/warn.sh");
        wanted.SMTP_pass = QStringLiteral("secret");
        change(wanted);
        const QList<PreferencesProblem> problems = PreferencesCheck::problems(wanted);
        QCOMPARE(keysOf(problems), refused);
        if (!hint.isEmpty())
            QVERIFY2(problems.first().text.contains(hint), qPrintable(problems.first().text));
    }

    void refusedValuesChangeNothing()
    {
        QSignalSpy changed(&SettingsStore::instance(), &SettingsStore::settingsChanged);
        int autostartCalls = 0;
        AppSettings wanted = appSettings();
        wanted.poll_time = 1;
        wanted.startup = true;
        wanted.warn_temp = 75;
        wanted.crit_temp = 70;
        const PreferencesOutcome outcome =
            PreferencesApply::apply(wanted, {}, [&](bool) { return ++autostartCalls, 0; });
        QVERIFY(!outcome.applied);
        QCOMPARE(keysOf(outcome.refused), QStringLiteral("warn_temp"));
        QCOMPARE(autostartCalls, 0);
        QCOMPARE(changed.count(), 0);
        QCOMPARE(appSettings().poll_time, 5);
        QVERIFY(!QFile::exists(settingsFile()));
    }

    // The values take effect, are told to everyone and are saved; the language switches first.
    void appliedValuesAreSavedAndTold()
    {
        QSignalSpy changed(&SettingsStore::instance(), &SettingsStore::settingsChanged);
        QSignalSpy language(&SettingsStore::instance(), &SettingsStore::languageChanged);
        QList<bool> registrations;
        AppSettings wanted = appSettings();
        wanted.poll_time = 30;
        wanted.poll_period = 0;
        wanted.color_W = 13;
        wanted.startup = true;
        wanted.LanguageType = LanguageTable::Russian;
        DiskRecord disk;
        disk.serial = QStringLiteral("S1");
        disk.monitored = false;
        const PreferencesOutcome outcome =
            PreferencesApply::apply(wanted, {disk}, [&](bool enable) { return registrations << enable, 0; });
        QVERIFY(outcome.applied);
        QVERIFY2(outcome.warnings.isEmpty(), qPrintable(outcome.warnings.join(QLatin1Char('\n'))));
        QCOMPARE(registrations, QList<bool>{true});
        QCOMPARE(changed.count(), 1);
        QCOMPARE(language.count(), 1);
        QCOMPARE(languageText(Lang::LanguageName), QString::fromUtf8("Русский"));
        QCOMPARE(appSettings().smartIntervalMs(), 30000);
        QCOMPARE(TestFiles::read(settingsFile()), SettingsFile::render(appSettings(), {disk}));

        // Unchanged, the start at logon is not registered again.
        PreferencesApply::apply(appSettings(), {}, [&](bool enable) { return registrations << enable, 0; });
        QCOMPARE(registrations.size(), 1);
    }

    // A registration that fails keeps the old state, and the user hears why; the rest still applies.
    void failedRegistrationKeepsTheOldState_data()
    {
        QTest::addColumn<bool>("enable");
        QTest::addColumn<int>("code");
        QTest::addColumn<QString>("words");
        QTest::newRow("folder") << true << int(Autostart::FolderUnavailable) << "cannot be created or opened";
        QTest::newRow("entry") << true << int(Autostart::WriteFailed) << "cannot be written";
        QTest::newRow("removal") << false << int(Autostart::RemoveFailed) << "could not stop";
    }
    void failedRegistrationKeepsTheOldState()
    {
        QFETCH(bool, enable);
        QFETCH(int, code);
        QFETCH(QString, words);
        appSettings().startup = !enable;
        AppSettings wanted = appSettings();
        wanted.startup = enable;
        wanted.poll_time = 7;
        const PreferencesOutcome outcome = PreferencesApply::apply(wanted, {}, [code](bool) { return code; });
        QVERIFY(outcome.applied);
        QCOMPARE(outcome.warnings.size(), 1);
        QVERIFY2(outcome.warnings.first().contains(words), qPrintable(outcome.warnings.first()));
        QVERIFY(outcome.warnings.first().contains(QStringLiteral("autostart")));
        QCOMPARE(appSettings().startup, !enable);
        QCOMPARE(appSettings().poll_time, 7);
        QVERIFY(TestFiles::read(settingsFile()).contains("startup=" + QByteArray::number(int(!enable)) + "\r\n"));
    }

    void unsavableFileIsSaid()
    {
        QVERIFY(QDir(m_home->path()).mkdir(QStringLiteral("Korvane.ini")));
        AppSettings wanted = appSettings();
        wanted.poll_time = 9;
        const PreferencesOutcome outcome = PreferencesApply::apply(wanted, {}, [](bool) { return 0; });
        QVERIFY(outcome.applied);
        QCOMPARE(appSettings().poll_time, 9);
        QCOMPARE(outcome.warnings, QStringList{languageText(Lang::SettingsNotSaved).arg(settingsFile())});
    }

    // A process killed at any moment of a save leaves the old file or the new one, never a part.
    void killedSaveLeavesAWholeFile()
    {
        const QString saver = QCoreApplication::applicationDirPath() + QStringLiteral("/settings_saver");
        QVERIFY2(QFile::exists(saver), qPrintable(saver));
        const QString path = settingsFile();
        QList<DiskSettings> entries;
        for (int round = 0; round < 25; ++round) {
            QProcess process;
            process.start(saver, {path});
            QVERIFY(process.waitForStarted());
            QTest::qWait(5 + int(QRandomGenerator::global()->bounded(40)));
            process.kill();
            QVERIFY(process.waitForFinished());
            if (!QFile::exists(path))
                continue; // killed before its first save ended
            // Each save writes a generation into both ends of the file: they must agree.
            AppSettings loaded;
            QVERIFY(SettingsFile::load(path, loaded, entries));
            QCOMPARE(entries.size(), 2000);
            QCOMPARE(entries.last().attr9Unit, loaded.poll_time);
        }
        QVERIFY(QFile::exists(path));
    }
};

QTEST_GUILESS_MAIN(TestPreferences)
#include "tst_preferences.moc"
