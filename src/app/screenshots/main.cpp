// Draws the window on the demo disks into PNG files, page by page and language by language, so
// what users see can be looked at (and the README's picture refreshed) without a desktop.
#include "ui/AboutDialog.h"
#include "ui/Attr_setting.h"
#include "ui/DiskTree.h"
#include "ui/MainWindow.h"
#include "ui/Prev_dlg.h"
#include "ui/ScanDiskPages.h"
#include "ui/form_scan_set.h"
#include "ui/paintblock.h"
#include "ui/scandisk.h"
#include "ui/show_block.h"
#include "ui/UiFont.h"
#include "ui/smart_stat.h"

#include "KorvaneImages.h"
#include "device/BackendFactory.h"
#include "monitor/DiskMonitor.h"
#include "settings/AppSettings.h"
#include "settings/FreeEdition.h"
#include "settings/LanguageTable.h"
#include "settings/PreferencesApply.h"
#include "settings/SettingsStore.h"
#include "stats/GeneratedLog.h"

#include <QApplication>
#include <QCheckBox>
#include <QComboBox>
#include <QDoubleSpinBox>
#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QLineEdit>
#include <QMessageBox>
#include <QPushButton>
#include <QSignalSpy>
#include <QSpinBox>
#include <QStyleFactory>
#include <QTabWidget>
#include <QTcpServer>
#include <QTemporaryDir>
#include <QTextStream>
#include <QTimer>

#include <functional>

namespace {

void wait(int ms)
{
    QEventLoop loop;
    QTimer::singleShot(ms, &loop, &QEventLoop::quit);
    loop.exec();
}

bool save(QWidget &widget, const QString &path)
{
    const bool ok = widget.grab().save(path);
    QTextStream(stdout) << (ok ? "wrote " : "could not write ") << path << '\n';
    return ok;
}

// The e-mail page after a test against a port where nothing listens: the transcript in use.
bool shootSmtpTest(Prev_dlg &preferences, const QString &path)
{
    QTcpServer probe;
    probe.listen(QHostAddress::LocalHost);
    const quint16 closed = probe.serverPort();
    probe.close();
    preferences.showPage(2);
    preferences.findChild<QCheckBox *>(QStringLiteral("eml_notif_enable"))->setChecked(true);
    preferences.findChild<QLineEdit *>(QStringLiteral("SMTP_from"))->setText(QStringLiteral("korvane@example.org"));
    preferences.findChild<QLineEdit *>(QStringLiteral("SMTP_to"))->setText(QStringLiteral("admin@example.org"));
    preferences.findChild<QLineEdit *>(QStringLiteral("SMTP_server"))->setText(QStringLiteral("127.0.0.1"));
    preferences.findChild<QSpinBox *>(QStringLiteral("SMTP_port"))->setValue(closed);
    preferences.findChild<QComboBox *>(QStringLiteral("SMTP_security"))->setCurrentIndex(SmtpStartTls);
    preferences.findChild<QPushButton *>(QStringLiteral("smtp_test"))->click();
    for (int waited = 0; !preferences.isEnabled() && waited < 5000; waited += 50)
        wait(50);
    wait(100);
    return save(preferences, path);
}

// Every page of the preferences, with the demo disks in the tray's list.
bool shootPreferences(MainWindow &window, const QString &folder, const QString &language)
{
    bool ok = true;
    Prev_dlg preferences(appSettings(), window.monitor()->disks(),
                         [](const AppSettings &) { return PreferencesOutcome{}; }, &window);
    preferences.show();
    for (int page = 0; page < preferences.pageCount(); ++page) {
        preferences.showPage(page);
        wait(100);
        ok &= save(preferences, QStringLiteral("%1/preferences-%2-%3.png").arg(folder, language).arg(page));
    }
    return ok && shootSmtpTest(preferences, QStringLiteral("%1/preferences-%2-2-test.png").arg(folder, language));
}

// Runs \a open, which shows a modal window, and pictures that window into \a path once it is up.
bool shootModal(const std::function<void()> &open, const QString &path)
{
    bool ok = false;
    QTimer picture;
    picture.setSingleShot(true);
    QObject::connect(&picture, &QTimer::timeout, [&] {
        if (QWidget *modal = QApplication::activeModalWidget()) {
            ok = save(*modal, path);
            modal->close();
        }
    });
    picture.start(200);
    open();
    return ok;
}

// Pictures the next modal window into \a path as soon as it is up, within \a timeoutMs; \a ok
// says later whether it did.
void shootNextModal(const QString &path, int timeoutMs, bool &ok)
{
    auto *poll = new QTimer;
    auto *clock = new QElapsedTimer;
    clock->start();
    QObject::connect(poll, &QTimer::timeout, [poll, clock, path, timeoutMs, &ok] {
        QWidget *modal = QApplication::activeModalWidget();
        if (!modal && clock->elapsed() < timeoutMs)
            return;
        ok = modal && save(*modal, path);
        if (modal)
            modal->close();
        poll->deleteLater();
        delete clock;
    });
    poll->start(100);
}

// The archive disk's scan page: a scan of its first 200 blocks, which finds bad and slow
// places, while it runs; the completion dialog, the map in both colourings and a bad block's
// details.
bool shootScan(MainWindow &window, const QString &folder, const QString &language)
{
    constexpr int kArchive = 2;
    auto *tree = window.findChild<DiskTree *>();
    tree->setCurrentItem(tree->topLevelItem(kArchive));
    auto *tabs = window.findChild<QTabWidget *>();
    tabs->setCurrentIndex(2);
    scandisk *page = window.findChild<ScanDiskPages *>()->page(kArchive);
    page->form()->latencyBox->setChecked(false);
    page->form()->spinBox_2->setValue(200 * 61440 - 1);
    bool dialogShot = false;
    shootNextModal(QStringLiteral("%1/scan-complete-%2.png").arg(folder, language), 60000, dialogShot);
    page->form()->pushButton->click();
    wait(400);
    bool ok = save(window, QStringLiteral("%1/scan-running-%2.png").arg(folder, language));
    while (page->isScanning() || QApplication::activeModalWidget())
        wait(100);
    wait(100);
    ok &= save(window, QStringLiteral("%1/scan-map-%2.png").arg(folder, language));
    page->form()->latencyBox->setChecked(true);
    wait(100);
    ok &= save(window, QStringLiteral("%1/scan-latency-%2.png").arg(folder, language));
    ok &= shootModal([&] { show_block(page->blockMap()->map(), 5, page).exec(); },
                     QStringLiteral("%1/scan-block-%2.png").arg(folder, language));
    tree->setCurrentItem(tree->topLevelItem(0));
    tabs->setCurrentIndex(0);
    return ok && dialogShot;
}

// The settings forms and the exports' message boxes, in the current language.
bool shootForms(MainWindow &window, const QString &folder, const QString &language)
{
    bool ok = shootModal([&] { window.show_Dev_Dlg(); }, QStringLiteral("%1/disk-settings-%2.png").arg(folder, language));
    for (const bool lowerIsWorse : {true, false}) {
        Attr_setting form(lowerIsWorse, &window);
        form.show();
        wait(100);
        ok &= save(form, QStringLiteral("%1/attribute-settings-%2-%3.png")
                             .arg(folder, language, lowerIsWorse ? QStringLiteral("lower") : QStringLiteral("higher")));
    }
    const QString exported = QDir(folder).filePath(QStringLiteral("SMARTinfo.txt"));
    for (const QString &path : {exported, QStringLiteral("/nonexistent/SMARTinfo.txt")}) {
        window.setSaveFileChooser([path](QWidget *, const QString &, const QString &, const QString &) { return path; });
        ok &= shootModal([&] { window.saveSMART(); },
                         QStringLiteral("%1/export-%2-%3.png")
                             .arg(folder, path == exported ? QStringLiteral("saved") : QStringLiteral("failed"), language));
    }
    QFile::remove(exported);
    return ok;
}

// Every page of the window, then the about box and the forms, in the current language.
bool shootLanguage(MainWindow &window, const QString &folder, const QString &language)
{
    bool ok = true;
    auto *tabs = window.findChild<QTabWidget *>();
    for (int page = 0; page < tabs->count(); ++page) {
        tabs->setCurrentIndex(page);
        wait(100);
        ok &= save(window, QStringLiteral("%1/main-%2-%3.png").arg(folder, language).arg(page));
    }
    tabs->setCurrentIndex(0);
    AboutDialog about(FreeEdition(), &window);
    about.show();
    wait(100);
    ok &= save(about, QStringLiteral("%1/about-%2.png").arg(folder, language));
    about.close();
    ok &= shootModal([&] { window.registrationApp(); }, QStringLiteral("%1/register-%2.png").arg(folder, language));
    ok &= shootForms(window, folder, language);
    ok &= shootScan(window, folder, language);
    return ok & shootPreferences(window, folder, language);
}

// The statistics page over the generated history: both tabs for a day, a month and a year (the
// month alone in \a allPeriods' absence), and the graph settings form.
bool shootStatistics(MainWindow &window, const QString &folder, const QString &language, bool allPeriods)
{
    struct Period
    {
        QString name;
        QDate from;
        QDate to;
    };
    const QList<Period> periods = {{QStringLiteral("day"), QDate(2026, 3, 31), QDate(2026, 3, 31)},
                                   {QStringLiteral("month"), QDate(2026, 3, 1), QDate(2026, 3, 31)},
                                   {QStringLiteral("year"), QDate(2025, 4, 1), QDate(2026, 3, 31)}};
    auto *tabs = window.findChild<QTabWidget *>();
    auto *page = window.findChild<smart_stat *>();
    tabs->setCurrentWidget(page);
    bool ok = true;
    for (const Period &period : periods) {
        if (!allPeriods && period.name != QLatin1String("month"))
            continue;
        QSignalSpy done(page, &smart_stat::readingDone);
        page->showPeriod(period.from, period.to);
        ok &= done.wait(60000);
        for (int tab = 0; tab < page->tabs()->count(); ++tab) {
            page->tabs()->setCurrentIndex(tab);
            wait(100);
            ok &= save(window, QStringLiteral("%1/statistics-%2-%3-%4.png")
                                   .arg(folder, language, period.name, tab == 0 ? QStringLiteral("events") : QStringLiteral("graph")));
        }
    }
    ok &= shootModal([&] { page->openGraphSettings(); }, QStringLiteral("%1/graph-settings-%2.png").arg(folder, language));
    tabs->setCurrentIndex(0);
    return ok;
}

} // namespace

int main(int argc, char *argv[])
{
    QApplication app(argc, argv);
    const QStringList arguments = QCoreApplication::arguments();
    if (arguments.size() != 2) {
        QTextStream(stderr) << "usage: korvane-screenshots OUTPUT-FOLDER (with KORVANE_SIMULATE set)\n";
        return 2;
    }
    const QString folder = arguments.at(1);
    QDir().mkpath(folder);
    initKorvaneImages();
    UiFont::substituteWindowsFaces();
    QTemporaryDir home;
    QString error;
    if (!SettingsStore::instance().setHomeFolder(home.path(), &error)) {
        QTextStream(stderr) << error << '\n';
        return 1;
    }
    setDefaults(QStyleFactory::keys());
    LanguageTable::loadLanguage(LanguageTable::English);
    QStringList errors;
    const FreeEdition licence;
    MainWindow window(createDriveBackend({}, &errors), licence);
    window.resize(900, 600);
    window.setWindowTitle(windowTitle(licence));
    // Simulated disks can be read before the panel is pictured: listen from the start.
    QSignalSpy evaluated(window.monitor(), &DiskMonitor::evaluated);
    window.show();
    wait(30);
    bool ok = save(window, folder + QStringLiteral("/looking-for-devices.png"));
    if (evaluated.isEmpty() && !evaluated.wait(30000))
        return 1;
    wait(200);
    const QList<QPair<int, QString>> languages = {{LanguageTable::English, QStringLiteral("en")},
                                                 {LanguageTable::German, QStringLiteral("de")},
                                                 {LanguageTable::Russian, QStringLiteral("ru")}};
    // A year of history for the statistics page: four disks polled every five minutes.
    ok &= GeneratedLog::write(SettingsStore::instance().eventLogPath(), {QDate(2025, 4, 1), QDate(2026, 3, 31), 4, 300, 20});
    for (const auto &[index, name] : languages) {
        SettingsStore::instance().setLanguage(index);
        ok &= shootLanguage(window, folder, name);
        ok &= shootStatistics(window, folder, name, name == QLatin1String("en"));
    }
    // The last demo disk has no SMART: its panel and status line differ from the others.
    auto *tree = window.findChild<DiskTree *>();
    tree->setCurrentItem(tree->topLevelItem(tree->topLevelItemCount() - 1));
    wait(100);
    ok &= save(window, folder + QStringLiteral("/main-en-0-no-smart.png"));
    window.finishSession();
    return ok ? 0 : 1;
}
