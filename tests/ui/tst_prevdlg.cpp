#include "KorvaneImages.h"
#include "SmtpTestServer.h"
#include "TestEnv.h"
#include "WindowOnDisks.h"
#include "TestFiles.h"
#include "device/simulated/SimulatedBackend.h"
#include "health/TrayIconPlan.h"
#include "monitor/DiskMonitor.h"
#include "settings/AppSettings.h"
#include "settings/Autostart.h"
#include "settings/FreeEdition.h"
#include "settings/LanguageTable.h"
#include "settings/SettingsFile.h"
#include "settings/SettingsStore.h"
#include "ui/MainWindow.h"
#include "ui/Prev_dlg.h"
#include "ui/TrayColourPreview.h"
#include "ui/TrayController.h"
#include "ui/TrayIconPainter.h"

#include <QApplication>
#include <QCheckBox>
#include <QComboBox>
#include <QDialogButtonBox>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QMessageBox>
#include <QPlainTextEdit>
#include <QScopeGuard>
#include <QPushButton>
#include <QSignalSpy>
#include <QSpinBox>
#include <QStyleFactory>
#include <QTabWidget>
#include <QTemporaryDir>
#include <QTest>
#include <QTimer>

#include <functional>
#include <memory>

namespace {

template <typename Widget>
Widget *field(const QWidget &dialog, const char *key)
{
    auto *widget = dialog.findChild<Widget *>(QLatin1String(key));
    if (!widget)
        qFatal("no field %s", key);
    return widget;
}

void press(Prev_dlg &dialog, QDialogButtonBox::StandardButton which)
{
    dialog.findChild<QDialogButtonBox *>()->button(which)->click();
}

} // namespace

class TestPrevDlg : public QObject
{
    Q_OBJECT
    std::unique_ptr<QTemporaryDir> m_home;
    std::unique_ptr<QTemporaryDir> m_config;
    FreeEdition m_licence;
    std::unique_ptr<MainWindow> m_window;

    MainWindow &openOn(const QStringList &paths)
    {
        m_window = windowOnDisks(paths, m_licence);
        return *m_window;
    }
    // Runs \a steps on the preferences dialog the window opens, then returns once it has closed.
    void withPreferences(MainWindow &window, const std::function<void(Prev_dlg &)> &steps)
    {
        bool ran = false;
        QTimer::singleShot(0, &window, [&] {
            auto *dialog = window.findChild<Prev_dlg *>();
            if (!dialog)
                return;
            ran = true;
            steps(*dialog);
            if (dialog->isVisible())
                dialog->reject();
        });
        window.show_Pref_Dlg();
        QVERIFY(ran);
    }

private slots:
    void initTestCase()
    {
        initKorvaneImages();
    }
    void init()
    {
        m_home = std::make_unique<QTemporaryDir>();
        m_config = std::make_unique<QTemporaryDir>();
        qputenv("XDG_CONFIG_HOME", m_config->path().toUtf8());
        QString error;
        QVERIFY2(SettingsStore::instance().setHomeFolder(m_home->path(), &error), qPrintable(error));
        setDefaults(QStyleFactory::keys());
        QVERIFY(SettingsStore::instance().setLanguage(LanguageTable::English));
    }
    void cleanup()
    {
        m_window.reset();
    }

    // Every saved value goes into its field and comes out of it unchanged.
    void fieldsCarryEverySetting()
    {
        AppSettings settings = appSettings();
        QList<DiskSettings> unused;
        SettingsFile::parse("poll_time=30\npoll_period=0\ntime_check_space=2\nperiod_check_space=2\nshow_temp=1\n"
                            "temp_celsius=0\ndisk_temp_show=1\nStyleType=0\ncolor_N=5\ncolor_W=13\ncolor_C=3\n"
                            "SMTP_from=box@example.org\nSMTP_to=admin@example.org\nSMTP_server=smtp.example.org\n"
                            "SMTP_port=587\nSMTP_user=box\nSMTP_pass=p=ss word\nSMTP_auth=1\npop_notif_enable=0\n"
                            "eml_notif_enable=1\nstartup=1\nwarn_temp=45\ncrit_temp=60\n"
                            "extWarnTask=/usr/local/bin/warn.sh\nextCritTask=/usr/local/bin/crit.sh\nSMTP_security=1\n",
                            settings, unused);
        settings.LanguageType = LanguageTable::German;
        DiskRecord disk;
        disk.model = QStringLiteral("Model A");
        Prev_dlg dialog(settings, {disk, disk}, [](const AppSettings &) { return PreferencesOutcome{}; });
        QCOMPARE(SettingsFile::render(dialog.values(), {}), SettingsFile::render(settings, {}));
        QVERIFY(field<QLineEdit>(dialog, "SMTP_user")->isEnabled());

        // A remembered tray disk that is not here now stays chosen, and a colour the list lacks stays too.
        settings.disk_temp_show = 7;
        settings.color_N = 16;
        Prev_dlg absent(settings, {disk}, [](const AppSettings &) { return PreferencesOutcome{}; });
        QCOMPARE(field<QComboBox>(absent, "disk_temp_show")->currentText(), QStringLiteral("Disk 7 (not present)"));
        QCOMPARE(absent.values().disk_temp_show, 7);
        QCOMPARE(absent.values().color_N, 16);

        // The preview shows the tray at each level in the chosen unit and colours.
        field<QComboBox>(absent, "temp_celsius")->setCurrentIndex(1);
        field<QComboBox>(absent, "color_W")->setCurrentIndex(6);
        const QList<TrayColourPreview::Sample> samples = absent.findChild<TrayColourPreview *>()->samples();
        QCOMPARE(samples.size(), 3);
        QCOMPARE(samples.at(1).digits, QStringLiteral("113")); // 45 °C
        QCOMPARE(samples.at(1).colour, QColor(Qt::blue));
        QCOMPARE(samples.at(2).digits, QStringLiteral("140")); // 60 °C
    }

    // The test sends through the values typed, not the saved ones, with the dialog held still
    // meanwhile, and writes the dialogue down; choosing a security offers its usual port.
    void smtpTestWritesTheTranscript()
    {
        if (const QString missing = SmtpTestServer::missingTools(); !missing.isEmpty())
            QSKIP(qPrintable(missing));
        SmtpTestServer server;
        QVERIFY2(server.start(SmtpTestServer::StartTls, QStringLiteral("kv:s3cret")), server.log());
        qputenv("SSL_CERT_FILE", server.certificateFile().toLocal8Bit());
        auto unset = qScopeGuard([] { qunsetenv("SSL_CERT_FILE"); });
        Prev_dlg dialog(appSettings(), {}, [](const AppSettings &) { return PreferencesOutcome{}; });
        field<QCheckBox>(dialog, "eml_notif_enable")->setChecked(true);
        field<QLineEdit>(dialog, "SMTP_from")->setText(QStringLiteral("kv@example.org"));
        field<QLineEdit>(dialog, "SMTP_to")->setText(QStringLiteral("admin@example.org"));
        field<QLineEdit>(dialog, "SMTP_server")->setText(QStringLiteral("127.0.0.1"));
        auto *port = field<QSpinBox>(dialog, "SMTP_port");
        auto *security = field<QComboBox>(dialog, "SMTP_security");
        port->setValue(25);
        security->setCurrentIndex(SmtpTls);
        emit security->activated(SmtpTls);
        QCOMPARE(port->value(), 465);
        security->setCurrentIndex(SmtpStartTls);
        emit security->activated(SmtpStartTls);
        QCOMPARE(port->value(), 587);
        port->setValue(server.port());
        field<QCheckBox>(dialog, "SMTP_auth")->setChecked(true);
        field<QLineEdit>(dialog, "SMTP_user")->setText(QStringLiteral("kv"));
        field<QLineEdit>(dialog, "SMTP_pass")->setText(QStringLiteral("s3cret"));

        field<QPushButton>(dialog, "smtp_test")->click();
        QVERIFY(!dialog.isEnabled());
        QTRY_VERIFY_WITH_TIMEOUT(dialog.isEnabled(), 20000);
        const QStringList transcript = field<QPlainTextEdit>(dialog, "smtp_transcript")->toPlainText().split('\n');
        QVERIFY2(transcript.contains(QStringLiteral("<< STARTTLS")), qPrintable(transcript.join('\n')));
        QCOMPARE(transcript.last(), QStringLiteral("Test passed."));
        QCOMPARE(server.messages().size(), 1);
        QVERIFY(server.messages().first().contains("Subject: Korvane Test\r\n"));
    }

    void okPutsEverythingInForceAtOnce()
    {
        MainWindow &window = openOn({TestEnv::demoDir()});
        QVERIFY(nextEvaluation(window));
        withPreferences(window, [](Prev_dlg &dialog) {
            field<QSpinBox>(dialog, "poll_time")->setValue(2);
            field<QComboBox>(dialog, "poll_period")->setCurrentIndex(0);
            field<QSpinBox>(dialog, "warn_temp")->setValue(50);
            field<QSpinBox>(dialog, "crit_temp")->setValue(65);
            field<QCheckBox>(dialog, "show_temp")->setChecked(true);
            field<QComboBox>(dialog, "disk_temp_show")->setCurrentIndex(1);
            field<QComboBox>(dialog, "color_W")->setCurrentIndex(13);
            field<QLineEdit>(dialog, "extWarnTask")->setText(QStringLiteral("/usr/local/bin/warn.sh"));
            field<QCheckBox>(dialog, "startup")->setChecked(true);
            field<QComboBox>(dialog, "LanguageType")->setCurrentIndex(LanguageTable::Russian);
            press(dialog, QDialogButtonBox::Ok);
            QVERIFY(!dialog.isVisible());
        });
        // Saved whole, with the disks' lines (which field holds which value is fieldsCarryEverySetting's).
        QCOMPARE(TestFiles::read(SettingsStore::instance().settingsFilePath()),
                 SettingsFile::render(appSettings(), window.monitor()->disks()));
        // In force: the poll timer, the start at logon, the texts, the tray.
        QCOMPARE(window.monitor()->smartIntervalMs(), 2000);
        QVERIFY(TestFiles::read(Autostart::entryPath()).contains("hide"));
        QCOMPARE(window.findChild<QTabWidget *>()->tabText(0), LanguageTable::text(Lang::DiskInfoPage));
        QCOMPARE(languageText(Lang::LanguageName), QString::fromUtf8("Русский"));
        // The tray draws disk 1's temperature now, in the colour of its level.
        const TrayIconPlan plan = TrayIconPlan::decide(window.monitor()->disks(), appSettings(), HealthOk, QString());
        QVERIFY(plan.temperatureMode);
        QCOMPARE(window.tray()->icon().pixmap(16, 16).toImage(),
                 TrayIconPainter::temperature(plan.digits, plan.colour).toImage());
    }

    void refusedValuesKeepTheDialogOpen()
    {
        MainWindow &window = openOn({TestEnv::demoDir()});
        QVERIFY(nextEvaluation(window));
        BoxAnswerer boxes;
        withPreferences(window, [&](Prev_dlg &dialog) {
            // The joint rule of the limits is shown as soon as the pair breaks it.
            QLabel *rule = nullptr;
            for (QLabel *label : dialog.findChildren<QLabel *>())
                if (label->text() == languageText(Lang::TemperatureRule))
                    rule = label;
            QVERIFY(rule);
            QVERIFY(rule->isHidden());
            field<QSpinBox>(dialog, "crit_temp")->setValue(55);
            QVERIFY(!rule->isHidden());
            press(dialog, QDialogButtonBox::Ok);
            QVERIFY(dialog.isVisible());
            QCOMPARE(boxes.texts(), QStringList{languageText(Lang::TemperatureRule)});

            // A text the file cannot carry: the user is taken to it.
            field<QSpinBox>(dialog, "crit_temp")->setValue(70);
            field<QLineEdit>(dialog, "SMTP_pass")->setText(QStringLiteral("gr\u00fcn"));
            press(dialog, QDialogButtonBox::Apply);
            QCOMPARE(boxes.texts().size(), 2);
            QVERIFY2(boxes.texts().last().contains(QStringLiteral("\"Password\"")), qPrintable(boxes.texts().last()));
            QCOMPARE(dialog.findChild<QListWidget *>()->currentRow(), 2);
        });
        QVERIFY(!QFile::exists(SettingsStore::instance().settingsFilePath()));
        QCOMPARE(appSettings().crit_temp, 70);
    }

    void failedAutostartIsSaidAndNotRemembered()
    {
        // The autostart folder cannot be made where a file stands.
        QVERIFY(TestFiles::write(m_config->filePath(QStringLiteral("autostart")), "not a folder"));
        MainWindow &window = openOn({TestEnv::demoDir()});
        QVERIFY(nextEvaluation(window));
        BoxAnswerer boxes;
        withPreferences(window, [&](Prev_dlg &dialog) {
            field<QCheckBox>(dialog, "startup")->setChecked(true);
            press(dialog, QDialogButtonBox::Apply);
            QVERIFY(!field<QCheckBox>(dialog, "startup")->isChecked());
        });
        QCOMPARE(boxes.texts().size(), 1);
        QVERIFY2(boxes.texts().first().contains(QStringLiteral("cannot be created or opened")), qPrintable(boxes.texts().first()));
        QVERIFY(TestFiles::read(SettingsStore::instance().settingsFilePath()).contains("startup=0\r\n"));
    }

    void nothingOpensWhileDisksAreSought()
    {
        // The first read of this disk takes seconds: discovery is still running meanwhile.
        const QString hanging = m_home->filePath(QStringLiteral("slow.json"));
        QVERIFY(TestFiles::write(hanging, R"({"size": 1000204886016, "identity": {"model": "Slow Disk"},
                                          "smart": {"attributes": [{"id": 194, "raw": 35}]},
                                          "behaviour": {"hang": {"seconds": 2, "polls": [0]}}})"));
        MainWindow &window = openOn({hanging});
        QTRY_VERIFY(window.monitor()->isDiscovering());
        window.show_Pref_Dlg(); // returns at once: a modal dialog would not
        QVERIFY(!window.findChild<Prev_dlg *>());
        QAction *preferences = nullptr;
        for (QAction *action : window.findChildren<QAction *>())
            if (action->text() == languageText(Lang::PreferencesTitle))
                preferences = action;
        QVERIFY(preferences && !preferences->isEnabled());
        QVERIFY(nextEvaluation(window));
        QVERIFY(preferences->isEnabled());
    }
};

QTEST_MAIN(TestPrevDlg)
#include "tst_prevdlg.moc"
