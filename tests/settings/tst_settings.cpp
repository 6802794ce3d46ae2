#include "settings/AppPaths.h"
#include "settings/AppSettings.h"
#include "settings/LanguageTable.h"
#include "settings/SettingsFile.h"
#include "settings/SettingsStore.h"

#include "TestFiles.h"

#include <QDir>
#include <QFile>
#include <QSignalSpy>
#include <QStandardPaths>
#include <QTemporaryDir>
#include <QtTest>

#include <future>
#include <limits>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace {

// The values the comma-separated keys would be saved with: observing the record through the file
// format keeps the loader tests independent of field types.
QString savedValues(const AppSettings &settings, const QString &keys)
{
    const QStringList lines = QString::fromLocal8Bit(SettingsFile::render(settings, {})).split(QStringLiteral("\r\n"));
    QStringList values;
    for (const QString &key : keys.split(QLatin1Char(','))) {
        const auto line = std::find_if(lines.begin(), lines.end(),
                                       [&](const QString &l) { return l.startsWith(key + QLatin1Char('=')); });
        values << (line == lines.end() ? QStringLiteral("<missing>") : line->mid(key.size() + 1));
    }
    return values.join(QLatin1Char(','));
}

QString describe(const QList<DiskSettings> &list)
{
    QStringList parts;
    for (const DiskSettings &entry : list)
        parts << QStringLiteral("%1,%2,%3").arg(entry.serial).arg(int(entry.monitored)).arg(entry.attr9Unit);
    return parts.join(QLatin1Char(';'));
}

DiskRecord disk(const QString &serial, bool monitored, int unit)
{
    DiskRecord record;
    record.serial = serial;
    record.monitored = monitored;
    record.powerOnUnit = unit;
    return record;
}

} // namespace

class TestSettings : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase()
    {
        QStandardPaths::setTestModeEnabled(true);
    }
    void init()
    {
        qunsetenv(AppPaths::HomeVariable);
    }

    void defaultsAndDerivedValues()
    {
        AppSettings settings;
        settings.showMainWindow = false;
        settings.poll_time = 99;
        settings.setDefaults({QStringLiteral("Windows"), QStringLiteral("Fusion"),
                              QStringLiteral("WindowsXP"), QStringLiteral("WindowsVista")});
        QCOMPARE(settings.StyleType, 3);
        QCOMPARE(settings.poll_time, 5);
        QVERIFY(!settings.showMainWindow); // run-time values are not defaults of the file
        QCOMPARE(AppSettings::defaultStyleIndex({QStringLiteral("Windows"), QStringLiteral("windowsvista")}), 1);

        QCOMPARE(settings.displayTemperature(37), 98); // Fahrenheit by default; 98.6 truncated
        QCOMPARE(settings.displayTemperature(-3), 27); // -27 / 5 truncates toward zero
        settings.temp_celsius = 0;
        QCOMPARE(settings.displayTemperature(40), 40);
        QCOMPARE(settings.smartIntervalMs(), 300000);
        // Beyond a timer's int of milliseconds: held at the longest interval it counts.
        QCOMPARE(AppSettings::intervalMs(1000, 2), qint64(std::numeric_limits<int>::max()));
        settings.time_check_space = std::numeric_limits<int>::max();
        settings.period_check_space = 0;
        QCOMPARE(settings.spaceCheckIntervalMs(), qint64(std::numeric_limits<int>::max()));
    }

    void loadValues_data()
    {
        QTest::addColumn<QByteArray>("content");
        QTest::addColumn<QString>("keys");
        QTest::addColumn<QString>("expected");

        QTest::newRow("key inside a longer line") << QByteArray("xxpoll_time=7") << "poll_time" << "7";
        QTest::newRow("zero interval refused") << QByteArray("poll_time=0") << "poll_time" << "5";
        QTest::newRow("unit 3 refused") << QByteArray("poll_period=3") << "poll_period" << "1";
        QTest::newRow("port above range") << QByteArray("SMTP_port=50000") << "SMTP_port" << "2525";
        QTest::newRow("port at top") << QByteArray("SMTP_port=49999") << "SMTP_port" << "49999";
        QTest::newRow("security 3 refused") << QByteArray("SMTP_security=3") << "SMTP_security" << "0";
        QTest::newRow("security TLS") << QByteArray("SMTP_security=2") << "SMTP_security" << "2";
        QTest::newRow("language 2 refused") << QByteArray("LanguageType=2") << "LanguageType" << "0";
        QTest::newRow("style 10 refused") << QByteArray("StyleType=10") << "StyleType" << "1";
        QTest::newRow("colour 17 refused") << QByteArray("color_W=17") << "color_W" << "12";
        QTest::newRow("unit flag 2 refused") << QByteArray("temp_celsius=2") << "temp_celsius" << "1";
        QTest::newRow("bool word reads 0") << QByteArray("pop_notif_enable=yes") << "pop_notif_enable" << "0";
        QTest::newRow("bool 2 refused") << QByteArray("pop_notif_enable=2") << "pop_notif_enable" << "1";
        QTest::newRow("value holding a later key") << QByteArray("extWarnTask=cmd SMTP_user=a")
                                                   << "extWarnTask,SMTP_user" << "cmd SMTP_user=a,a";
        QTest::newRow("bytes read as Latin-1") << QByteArray("SMTP_user=p\xe4ss") << "SMTP_user"
                                               << QString::fromUtf8("p\xc3\xa4ss");
        QTest::newRow("NUL ends the line") << QByteArray("SMTP_user=bob\0junk", 18) << "SMTP_user" << "bob";
        QTest::newRow("empty string keeps the value") << QByteArray("SMTP_pass=\r\nextCritTask=\r\n")
                                                      << "SMTP_pass,extCritTask" << "secret,beep";
        // The temperature pair is taken only as a whole.
        const QString pair = QStringLiteral("warn_temp,crit_temp");
        QTest::newRow("critical below default warning") << QByteArray("crit_temp=40") << pair << "55,70";
        QTest::newRow("lowest pair") << QByteArray("warn_temp=30\ncrit_temp=31") << pair << "30,31";
        QTest::newRow("highest pair") << QByteArray("warn_temp=80\ncrit_temp=100") << pair << "80,100";
        QTest::newRow("warning too low") << QByteArray("warn_temp=29") << pair << "55,70";
        QTest::newRow("warning too high") << QByteArray("warn_temp=81\ncrit_temp=100") << pair << "55,70";
        QTest::newRow("critical too high") << QByteArray("crit_temp=101") << pair << "55,70";
        QTest::newRow("equal pair") << QByteArray("warn_temp=50\ncrit_temp=50") << pair << "55,70";
    }
    void loadValues()
    {
        QFETCH(QByteArray, content);
        QFETCH(QString, keys);
        QFETCH(QString, expected);
        AppSettings settings;
        settings.SMTP_pass = QStringLiteral("secret");
        settings.extCritTask = QStringLiteral("beep");
        QList<DiskSettings> disks;
        SettingsFile::parse(content, settings, disks);
        QCOMPARE(savedValues(settings, keys), expected);
    }

    void diskLines_data()
    {
        QTest::addColumn<QByteArray>("content");
        QTest::addColumn<QString>("expected");

        QTest::newRow("off with unit") << QByteArray("disk[ABC]=(0,3)") << "ABC,0,3";
        QTest::newRow("on without unit") << QByteArray("disk[ABC]=(1)") << "ABC,1,0";
        QTest::newRow("empty serial") << QByteArray("disk[]=(1,2)") << "";
        QTest::newRow("empty value") << QByteArray("disk[ABC]=()") << "";
        QTest::newRow("no closing bracket") << QByteArray("disk[ABC]=(1,2") << "";
        QTest::newRow("not numbers") << QByteArray("disk[ABC]=(x,-2)") << "ABC,0,0";
        QTest::newRow("brackets in the serial are lost") << QByteArray("disk[A(B)]=(1,2)") << "AB,1,2";
        QTest::newRow("duplicates kept in order") << QByteArray("disk[S1]=(0,3)\r\ndisk[S1]=(1,1)\r\n")
                                                  << "S1,0,3;S1,1,1";
    }
    void diskLines()
    {
        QFETCH(QByteArray, content);
        QFETCH(QString, expected);
        AppSettings settings;
        QList<DiskSettings> disks{DiskSettings{QStringLiteral("stale"), true, 1}};
        SettingsFile::parse(content, settings, disks);
        QCOMPARE(describe(disks), expected);
    }

    // The first entry for a serial wins, serials match case-sensitively, and a unit is taken only
    // when both the entry and the disk have one.
    void applyDiskSettings()
    {
        const QList<DiskSettings> entries{{QStringLiteral("S1"), false, 3}, {QStringLiteral("S1"), true, 1},
                                          {QStringLiteral("S2"), true, 2}, {QStringLiteral("S3"), true, 0}};
        QStringList results;
        for (const auto &[serial, unit] : {std::pair{"S1", 1}, {"S2", 0}, {"S3", 2}, {"s1", 1}}) {
            DiskRecord record = disk(QLatin1String(serial), false, unit);
            SettingsFile::applyDiskSettings(entries, record);
            results << QStringLiteral("%1:%2,%3").arg(record.serial).arg(int(record.monitored)).arg(record.powerOnUnit);
        }
        QCOMPARE(results.join(QLatin1Char(' ')), QStringLiteral("S1:0,3 S2:1,0 S3:1,2 s1:0,1"));
    }

    // A serial comes from the disk: whatever it holds, it stays on its disk line, sets nothing
    // else, and its disk still finds that line.
    void serialsStayOnTheirLine_data()
    {
        QTest::addColumn<QString>("serial");
        QTest::newRow("plain") << "WD-WCAV12345678";
        QTest::newRow("CR LF and a setting") << "S1\r\nextCritTask=rm -rf ~";
        QTest::newRow("LF") << "S2\nS3";
        QTest::newRow("a setting on the disk line") << "extCritTask=rm -rf ~";
        QTest::newRow("other control characters") << QStringLiteral("S4\t\x1b\x7f") + QChar(0x85);
    }
    void serialsStayOnTheirLine()
    {
        QFETCH(QString, serial);
        const AppSettings defaults;
        AppSettings loaded;
        QList<DiskSettings> entries;
        SettingsFile::parse(SettingsFile::render(defaults, {disk(serial, false, 3)}), loaded, entries);
        QCOMPARE(SettingsFile::render(loaded, {}), SettingsFile::render(defaults, {}));
        QCOMPARE(entries.size(), 1);

        DiskRecord record = disk(serial, true, 1);
        SettingsFile::applyDiskSettings(entries, record);
        QCOMPARE(std::pair(record.monitored, record.powerOnUnit), std::pair(false, 3));
    }

    void defaultFileContent()
    {
        AppSettings settings;
        settings.StyleType = 0;
        const QByteArray expected =
            "poll_time=5\r\npoll_period=1\r\ntime_check_space=10\r\nperiod_check_space=1\r\nshow_temp=0\r\n"
            "temp_celsius=1\r\ndisk_temp_show=0\r\nStyleType=0\r\nLanguageType=0\r\ncolor_N=4\r\ncolor_W=12\r\n"
            "color_C=2\r\nSMTP_from=\r\nSMTP_to=\r\nSMTP_server=\r\nSMTP_port=2525\r\nSMTP_user=\r\nSMTP_pass=\r\n"
            "SMTP_auth=0\r\npop_notif_enable=1\r\neml_notif_enable=0\r\nstartup=0\r\nwarn_temp=55\r\ncrit_temp=70\r\n"
            "extWarnTask=\r\nextCritTask=\r\nSMTP_security=0\r\ndisk[WD-123]=(0,2)\r\n";
        QCOMPARE(SettingsFile::render(settings, {disk(QStringLiteral("WD-123"), false, 2)}), expected);

        // Values are filled in one after the other, so "%14" in the sender is taken by the recipient.
        settings.SMTP_from = QStringLiteral("%14");
        settings.SMTP_to = QStringLiteral("to@example.org");
        QCOMPARE(savedValues(settings, QStringLiteral("SMTP_from")), QStringLiteral("to@example.org"));
        // The security, written after the template, is never taken by a "%N" left in the last value.
        settings.extCritTask = QStringLiteral("beep %5");
        settings.SMTP_security = SmtpTls;
        QCOMPARE(savedValues(settings, QStringLiteral("extCritTask,SMTP_security")), QStringLiteral("beep %5,2"));
    }

    void roundTripThroughAnAtomicOwnerOnlySave()
    {
        QTemporaryDir dir;
        const QString path = dir.filePath(QStringLiteral("Korvane.ini"));
        const QString link = dir.filePath(QStringLiteral("old-copy"));
        QVERIFY(TestFiles::write(path, "poll_time=1\r\n"));
        QVERIFY(QFile::setPermissions(path, QFile::ReadOwner | QFile::WriteOwner | QFile::ReadOther));
        QCOMPARE(::link(QFile::encodeName(path).constData(), QFile::encodeName(link).constData()), 0);

        // Every key away from its default, including a password holding "=" and a blank.
        AppSettings saved;
        QList<DiskSettings> entries;
        SettingsFile::parse(
            "poll_time=30\npoll_period=0\ntime_check_space=2\nperiod_check_space=2\nshow_temp=1\ntemp_celsius=0\n"
            "disk_temp_show=1\nStyleType=4\nLanguageType=1\ncolor_N=5\ncolor_W=13\ncolor_C=3\n"
            "SMTP_from=box@example.org\nSMTP_to=admin@example.org\nSMTP_server=smtp.example.org\nSMTP_port=587\n"
            "SMTP_user=box\nSMTP_pass=p=ss word\nSMTP_auth=1\npop_notif_enable=0\neml_notif_enable=1\nstartup=1\n"
            "warn_temp=45\ncrit_temp=60\nextWarnTask=/usr/local/bin/warn.sh\nextCritTask=/usr/local/bin/crit.sh\n",
            saved, entries);
        QCOMPARE(saved.SMTP_pass, QStringLiteral("p=ss word"));
        QVERIFY(SettingsFile::save(path, saved,
                                   {disk(QStringLiteral("S1"), false, 4), disk(QStringLiteral("S2"), true, 0)}));

        // The new content went into a new file that replaced the name: the old inode is untouched.
        QCOMPARE(TestFiles::read(link), QByteArray("poll_time=1\r\n"));
        QCOMPARE(QDir(dir.path()).entryList(QDir::Files | QDir::Hidden).size(), 2);
        struct stat info {};
        QCOMPARE(::stat(QFile::encodeName(path).constData(), &info), 0);
        QCOMPARE(info.st_mode & 0777, mode_t(0600));

        AppSettings loaded;
        QVERIFY(SettingsFile::load(path, loaded, entries));
        QCOMPARE(SettingsFile::render(loaded, {}), SettingsFile::render(saved, {}));
        QCOMPARE(describe(entries), QStringLiteral("S1,0,4;S2,1,0"));

        // A later load of a file without disk lines forgets the old entries; so does a missing file.
        QVERIFY(TestFiles::write(path, "poll_time=9\r\n"));
        QVERIFY(SettingsFile::load(path, loaded, entries));
        QCOMPARE(loaded.poll_time, 9);
        QVERIFY(entries.isEmpty());
        entries.append(DiskSettings{});
        QVERIFY(!SettingsFile::load(dir.filePath(QStringLiteral("absent.ini")), loaded, entries));
        QVERIFY(entries.isEmpty());
        QVERIFY(!SettingsFile::save(dir.filePath(QStringLiteral("missing/Korvane.ini")), AppSettings{}, {}));
    }

    // What load() refuses, what it says and what it still reads. A FIFO would block the open and
    // /dev/zero never ends; a long file is read up to 1 MB, less the line the limit cuts through.
    void loadTellsWhatIsWrong_data()
    {
        constexpr int MB = 1024 * 1024;
        QTest::addColumn<QString>("name");
        QTest::addColumn<QByteArray>("content"); // written to name when not empty
        QTest::addColumn<bool>("read");
        QTest::addColumn<QString>("error");    // part of the message; empty: no message
        QTest::addColumn<QString>("expected"); // poll_time,poll_period afterwards

        QByteArray overMB = QByteArray("poll_time=7\r\n").leftJustified(MB - 12, '#');
        overMB += "poll_time=12345\r\npoll_period=2\r\n";
        QByteArray oneMB = QByteArray("poll_time=7\r\n").leftJustified(MB - 15, '#') + "\npoll_period=2\n";

        const QByteArray none;
        QTest::newRow("missing") << "absent.ini" << none << false << "" << "5,1";
        QTest::newRow("FIFO") << "fifo" << none << false << "is a FIFO (named pipe), not a regular file" << "5,1";
        QTest::newRow("link to /dev/zero") << "zero" << none << false << "is a character device, not a regular file"
                                           << "5,1";
        QTest::newRow("folder") << "folder" << none << false << "is a directory, not a regular file" << "5,1";
        QTest::newRow("link to nothing") << "dangling" << none << false << "is a symbolic link to" << "5,1";
        QTest::newRow("1 MB") << "Korvane.ini" << oneMB << true << "" << "7,2";
        QTest::newRow("over 1 MB") << "Korvane.ini" << overMB << true
                                   << QStringLiteral("is %1 bytes long; only its first 1 MB (1048576 bytes) was read")
                                          .arg(overMB.size())
                                   << "7,1";
    }
    void loadTellsWhatIsWrong()
    {
        QFETCH(QString, name);
        QFETCH(QByteArray, content);
        QFETCH(bool, read);
        QFETCH(QString, error);
        QFETCH(QString, expected);
        QTemporaryDir dir;
        QCOMPARE(::mkfifo(QFile::encodeName(dir.filePath(QStringLiteral("fifo"))).constData(), 0600), 0);
        QVERIFY(QFile::link(QStringLiteral("/dev/zero"), dir.filePath(QStringLiteral("zero"))));
        QVERIFY(QDir(dir.path()).mkdir(QStringLiteral("folder")));
        QVERIFY(QFile::link(dir.filePath(QStringLiteral("gone.ini")), dir.filePath(QStringLiteral("dangling"))));
        const QString path = dir.filePath(name);
        if (!content.isEmpty())
            QVERIFY(TestFiles::write(path, content));

        AppSettings settings;
        QList<DiskSettings> entries{DiskSettings{}};
        QString message = QStringLiteral("stale");
        auto loading = std::async(std::launch::async, [&] { return SettingsFile::load(path, settings, entries, &message); });
        if (loading.wait_for(std::chrono::seconds(5)) != std::future_status::ready) {
            // A writer that comes and goes frees the open, and the read then ends.
            ::close(::open(QFile::encodeName(path).constData(), O_WRONLY | O_NONBLOCK));
            loading.wait();
            QFAIL("load() blocked");
        }
        QCOMPARE(loading.get(), read);
        QVERIFY(entries.isEmpty());
        QCOMPARE(savedValues(settings, QStringLiteral("poll_time,poll_period")), expected);
        if (error.isEmpty()) {
            QCOMPARE(message, QString());
        } else {
            QVERIFY2(message.contains(error), qPrintable(message));
            QVERIFY2(message.contains(path), qPrintable(message));
        }
    }

    void paths()
    {
        QTemporaryDir exeDir;
        QCOMPARE(AppPaths::settingsFilePath(exeDir.path()), exeDir.filePath(QStringLiteral("Korvane.ini")));
        QCOMPARE(AppPaths::eventLogPath(exeDir.path() + QLatin1Char('/')), exeDir.filePath(QStringLiteral("KV_f.log")));

        // A folder we cannot write to sends both files to the per-user folders.
        const QString gone = exeDir.filePath(QStringLiteral("not-there"));
        const QString config = AppPaths::settingsFilePath(gone);
        QCOMPARE(config, QDir(QStandardPaths::writableLocation(QStandardPaths::AppConfigLocation))
                             .filePath(QStringLiteral("Korvane.ini")));
        QVERIFY(QFileInfo(config).dir().exists());
        QCOMPARE(AppPaths::eventLogPath(gone), QDir(QStandardPaths::writableLocation(QStandardPaths::AppDataLocation))
                                                   .filePath(QStringLiteral("KV_f.log")));

        // A home folder overrides both.
        QCOMPARE(AppPaths::settingsFilePath(exeDir.path(), QStringLiteral("/h")), QStringLiteral("/h/Korvane.ini"));
        QCOMPARE(AppPaths::eventLogPath(gone, QStringLiteral("/h/")), QStringLiteral("/h/KV_f.log"));
        QVERIFY(AppPaths::executableDirectory().endsWith(QLatin1Char('/')));
    }

    // The store takes a home folder from --home or KORVANE_HOME by one rule, and the
    // process-wide settings follow it.
    void homeFolder_data()
    {
        QTest::addColumn<QString>("folder");
        QTest::addColumn<QString>("refusal"); // empty: taken
        QTest::newRow("missing folder is made") << QStringLiteral("new/korvane") << QString();
        QTest::newRow("empty name") << QString() << QStringLiteral("needs a name");
        QTest::newRow("a file") << QStringLiteral("plain.txt") << QStringLiteral("is not a folder");
        QTest::newRow("a device") << QStringLiteral("/dev/null") << QStringLiteral("/dev/null is not a folder");
        QTest::newRow("under a file") << QStringLiteral("plain.txt/sub") << QStringLiteral("cannot create the folder");
    }
    void homeFolder()
    {
        QFETCH(QString, folder);
        QFETCH(QString, refusal);
        QTemporaryDir dir;
        QVERIFY(TestFiles::write(dir.filePath(QStringLiteral("plain.txt")), "x"));
        const QString path = folder.isEmpty() || folder.startsWith(QLatin1Char('/')) ? folder : dir.filePath(folder);
        SettingsStore &store = SettingsStore::instance();
        const QString before = store.homeFolder();

        // An empty KORVANE_HOME is as good as none; an empty --home is refused.
        for (bool fromEnvironment : {false, !path.isEmpty()}) {
            QString error;
            bool taken = false;
            if (fromEnvironment) {
                qputenv(AppPaths::HomeVariable, QFile::encodeName(path));
                taken = store.useHomeFromEnvironment(&error);
            } else {
                taken = store.setHomeFolder(path, &error);
            }
            QCOMPARE(taken, refusal.isEmpty());
            QVERIFY2(error.contains(refusal), qPrintable(error));
            if (!taken && !path.isEmpty())
                QCOMPARE(store.homeFolder(), before);
        }
        if (!refusal.isEmpty())
            return;
        QVERIFY(QFileInfo(path).isDir());
        QCOMPARE(store.settingsFilePath(), path + QStringLiteral("/Korvane.ini"));
        QCOMPARE(store.eventLogPath(), path + QStringLiteral("/KV_f.log"));

        // The process-wide settings go there too, and whoever listens hears of them.
        QSignalSpy changed(&store, &SettingsStore::settingsChanged);
        setDefaults({});
        appSettings().poll_time = 12;
        QVERIFY(saveSettings({disk(QStringLiteral("S9"), false, 2)}));
        setDefaults({});
        QVERIFY(loadSettings());
        QCOMPARE(changed.count(), 1);
        QCOMPARE(appSettings().poll_time, 12);
        QList<DiskRecord> disks{disk(QStringLiteral("S9"), true, 1)};
        ::applyDiskSettings(disks, 0);
        ::applyDiskSettings(disks, 1); // no such disk: ignored
        QCOMPARE(QStringLiteral("%1,%2").arg(int(disks[0].monitored)).arg(disks[0].powerOnUnit), QStringLiteral("0,2"));
    }

    void storeSignalsChanges()
    {
        SettingsStore &store = SettingsStore::instance();
        QSignalSpy settings(&store, &SettingsStore::settingsChanged);
        QSignalSpy language(&store, &SettingsStore::languageChanged);
        setDefaults({});
        QVERIFY(store.setLanguage(LanguageTable::German));

        AppSettings changed = appSettings();
        changed.poll_time = 3;
        changed.LanguageType = LanguageTable::Russian; // only setLanguage() switches languages
        store.apply(changed);
        QCOMPARE(settings.count(), 1);
        QCOMPARE(appSettings().poll_time, 3);
        QCOMPARE(appSettings().LanguageType, int(LanguageTable::German));

        QCOMPARE(language.count(), 1);
        QCOMPARE(languageText(Lang::LanguageName), LanguageTable::text(Lang::LanguageName));
        QVERIFY(store.setLanguage(LanguageTable::English));
        QCOMPARE(language.count(), 2);
        QCOMPARE(appSettings().LanguageType, int(LanguageTable::English));
    }
};

QTEST_GUILESS_MAIN(TestSettings)
#include "tst_settings.moc"
