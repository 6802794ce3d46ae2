#include "KorvaneImages.h"
#include "TestEnv.h"
#include "TestFiles.h"
#include "device/SmartReport.h"
#include "WindowOnDisks.h"
#include "device/simulated/SimulatedBackend.h"
#include "health/SmartTableModel.h"
#include "health/SmtpClient.h"
#include "health/TemperatureDigits.h"
#include "health/TrayIconPlan.h"
#include "monitor/ATA_Smart.h"
#include "monitor/DiskMonitor.h"
#include "settings/AppSettings.h"
#include "settings/FreeEdition.h"
#include "settings/LanguageTable.h"
#include "settings/SettingsStore.h"
#include "ui/Device_dlg.h"
#include "ui/DiskInfoPage.h"
#include "ui/DiskTree.h"
#include "ui/EventsLogPage.h"
#include "ui/MainWindow.h"
#include "ui/SmartInfoPage.h"
#include "ui/TrayController.h"
#include "ui/TrayIconPainter.h"

#include <QAction>
#include <QApplication>
#include <QDesktopServices>
#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QLabel>
#include <QListWidget>
#include <QMenu>
#include <QMessageBox>
#include <QPushButton>
#include <QRegularExpression>
#include <QScopeGuard>
#include <QSignalSpy>
#include <QStyleFactory>
#include <QTabWidget>
#include <QTcpServer>
#include <QTemporaryDir>
#include <QTest>
#include <QTimer>

#include <csignal>
#include <functional>
#include <memory>
#include <optional>

#include <sys/resource.h>

namespace {

// The labels of a widget's subtree, as the user reads them.
QStringList labelTexts(const QWidget *root)
{
    QStringList texts;
    for (const QLabel *label : root->findChildren<QLabel *>())
        if (label->isVisibleTo(root->window()))
            texts << label->text();
    return texts;
}

// The set of painted pixels of an image, as "x,y" texts.
QSet<QString> paintedPixels(const QImage &image)
{
    QSet<QString> pixels;
    for (int y = 0; y < image.height(); ++y)
        for (int x = 0; x < image.width(); ++x)
            if (qAlpha(image.pixel(x, y)) != 0)
                pixels << QStringLiteral("%1,%2").arg(x).arg(y);
    return pixels;
}

// Runs \a action; every modal window it opens is handed to \a answer, which must close it.
void answeringModals(const std::function<void()> &action, const std::function<void(QWidget *)> &answer)
{
    QTimer poll;
    QObject::connect(&poll, &QTimer::timeout, [&] {
        if (QWidget *modal = QApplication::activeModalWidget())
            answer(modal);
    });
    poll.start(10);
    action();
}

// Message boxes as answeringBoxes() notes them.
using Boxes = QList<QStringList>;

// One such box.
QStringList box(QMessageBox::Icon icon, const QString &text)
{
    return {QString::number(icon), QStringLiteral("Korvane"), text};
}

} // namespace

/// Stands in for the desktop's viewer: keeps the URLs it is asked to open.
class UrlCatcher : public QObject
{
    Q_OBJECT
public:
    QList<QUrl> urls;
public slots:
    void open(const QUrl &url) { urls << url; }
};

class TestMainWindow : public QObject
{
    Q_OBJECT

    std::unique_ptr<QTemporaryDir> m_home;
    FreeEdition m_licence;
    std::unique_ptr<MainWindow> m_window;

    MainWindow &openOn(const QStringList &paths)
    {
        m_window = windowOnDisks(paths, m_licence);
        return *m_window;
    }
    // The exports of the window write into \a folder under the proposed name, or to \a path when
    // given (empty: the user cancels).
    static void answerSaveDialog(MainWindow &window, const QString &folder, std::optional<QString> path = {})
    {
        window.setSaveFileChooser([folder, path](QWidget *, const QString &, const QString &name, const QString &) {
            return path ? *path : QDir(folder).filePath(name);
        });
    }

private slots:
    void initTestCase()
    {
        initKorvaneImages();
        QVERIFY(LanguageTable::loadLanguage(LanguageTable::English));
    }
    void init()
    {
        m_home = std::make_unique<QTemporaryDir>();
        QString error;
        QVERIFY2(SettingsStore::instance().setHomeFolder(m_home->path(), &error), qPrintable(error));
        setDefaults(QStyleFactory::keys());
    }
    void cleanup()
    {
        m_window.reset();
        ATA_Smart::setWatchdogIntervalForTests(0);
    }

    void showsTheDemoDisks()
    {
        MainWindow &window = openOn({TestEnv::demoDir()});
        QVERIFY(nextEvaluation(window));
        const QList<DiskRecord> &disks = window.monitor()->disks();
        auto *tree = window.findChild<DiskTree *>();
        QCOMPARE(tree->topLevelItemCount(), disks.size());
        for (int i = 0; i < disks.size(); ++i)
            QCOMPARE(tree->topLevelItem(i)->text(0), disks.at(i).model);
        QCOMPARE(tree->currentDisk(), 0);

        // The first disk's SMART rows fill the table, its status panel says it is healthy.
        auto *smart = window.findChild<SmartInfoPage *>();
        QCOMPARE(smart->model()->rowCount(), disks.at(0).attributes.size());
        QVERIFY(labelTexts(window.findChild<DiskInfoPage *>()).contains(QStringLiteral("<B>Health Status: OK")));

        // The list starts with the session and carries the archive disk's warning, newest on top.
        const QStringList lines = window.findChild<EventsLogPage *>()->lines();
        QVERIFY(lines.last().endsWith(QStringLiteral(" Session started")));
        QVERIFY(std::any_of(lines.begin(), lines.end(),
                            [](const QString &line) { return line.contains(QStringLiteral("HX2000-5K4")); }));
        // A lasting warning adds lines on every poll: lines of one kind share one icon, or each
        // would keep pixmaps of its own for as long as the program runs.
        QListWidget *list = window.findChild<EventsLogPage *>()->list();
        QCOMPARE(list->item(0)->icon().cacheKey(), list->item(1)->icon().cacheKey());
        const qint64 warningIcon = list->item(0)->icon().cacheKey();
        window.update_ALL();
        QVERIFY(nextEvaluation(window));
        QCOMPARE(list->item(0)->icon().cacheKey(), warningIcon);

        // A scan line names its disk; one for a disk that is not there is dropped.
        window.writeIntoLogFromScan(1, 3, QStringLiteral("Bad Sectors between 10 - 20"));
        const QString top = window.findChild<EventsLogPage *>()->lines().first();
        QVERIFY2(top.endsWith(QStringLiteral(" Norrik NV500 SSD Bad Sectors between 10 - 20")), qPrintable(top));
        window.writeIntoLogFromScan(99, 3, QStringLiteral("ignored"));
        QCOMPARE(window.findChild<EventsLogPage *>()->lines().first(), top);

        // The current disk switched off: no verdict in the panel and no rows in the table.
        window.set_scan_Off();
        QVERIFY(labelTexts(window.findChild<DiskInfoPage *>()).contains(QStringLiteral("<B>Not Monitoring")));
        QCOMPARE(smart->model()->rowCount(), 0);
        window.set_scan_On();
        QVERIFY(window.monitor()->disks().at(0).monitored);

        // Selecting the disk without SMART empties the table and says why.
        const int noSmart = int(std::find_if(disks.begin(), disks.end(), [](const DiskRecord &d) {
                                    return d.attributes.isEmpty() && d.monitored;
                                }) - disks.begin());
        QVERIFY(noSmart < disks.size());
        tree->setCurrentItem(tree->topLevelItem(noSmart));
        QCOMPARE(smart->model()->rowCount(), 0);
        QVERIFY(labelTexts(window.findChild<DiskInfoPage *>()).contains(QStringLiteral("<B>SMART not supported")));
    }

    // The monitor mails the first evaluation; a mail that cannot go out is a line of the Events Log.
    void aFailedMailIsLogged()
    {
        QTcpServer probe;
        QVERIFY(probe.listen(QHostAddress::LocalHost));
        AppSettings &s = appSettings();
        s.eml_notif_enable = true;
        s.SMTP_from = QStringLiteral("kv@example.org");
        s.SMTP_to = QStringLiteral("admin@example.org");
        s.SMTP_server = QStringLiteral("127.0.0.1");
        s.SMTP_port = probe.serverPort();
        probe.close();

        MainWindow &window = openOn({TestEnv::demoDir()});
        QVERIFY(nextEvaluation(window));
        QTRY_VERIFY_WITH_TIMEOUT(!window.monitor()->mailClient().isSending(), 20000);
        QCOMPARE(window.findChild<EventsLogPage *>()->lines().filter(QStringLiteral("SMTP error")).size(), 1);
    }

    void withoutDisksSaysSoAndDisablesTheScanPage()
    {
        QTemporaryDir empty;
        MainWindow &window = openOn({empty.path()});
        QVERIFY(nextEvaluation(window));
        QCOMPARE(window.findChild<DiskTree *>()->topLevelItemCount(), 0);
        QVERIFY(!window.findChild<QTabWidget *>()->isTabEnabled(2));
        QVERIFY(labelTexts(window.findChild<DiskInfoPage *>()).contains(QStringLiteral("<B>No Disks")));
        // Nothing to switch, but the refresh still runs the (empty) cycle, at once.
        QSignalSpy evaluated(window.monitor(), &DiskMonitor::evaluated);
        window.set_scan_Off();
        window.update_ALL();
        QCOMPARE(evaluated.size(), 1);
    }

    void staysResponsiveWhileADiskHangs()
    {
        ATA_Smart::setWatchdogIntervalForTests(1500);
        MainWindow &window = openOn({TestEnv::demoDir() + QStringLiteral("/extra/hanging-disk.json"),
                                     TestEnv::demoDir() + QStringLiteral("/01-halvard-system.json")});
        // A 20 ms heartbeat on the window's thread: it must never stall while the disk hangs.
        QElapsedTimer clock;
        clock.start();
        qint64 last = 0;
        qint64 longestGap = 0;
        QTimer heartbeat;
        connect(&heartbeat, &QTimer::timeout, this, [&] {
            longestGap = std::max(longestGap, clock.elapsed() - last);
            last = clock.elapsed();
        });
        heartbeat.start(20);
        QVERIFY(nextEvaluation(window));
        QVERIFY2(longestGap < 1000, qPrintable(QStringLiteral("the window stalled for %1 ms").arg(longestGap)));
        // The healthy disk is shown; the hung one is named in the Events Log.
        QCOMPARE(window.findChild<DiskTree *>()->topLevelItemCount(), 2);
        const QStringList lines = window.findChild<EventsLogPage *>()->lines();
        QVERIFY(std::any_of(lines.begin(), lines.end(),
                            [](const QString &line) { return line.contains(QStringLiteral("HX320-7K1")); }));
    }

    void closingWithoutTraySavesAndEndsTheSession()
    {
        MainWindow &window = openOn({TestEnv::demoDir()});
        QVERIFY(nextEvaluation(window));
        QSignalSpy closing(&window, &MainWindow::closeApp);
        // Offscreen there is no tray: the close button must quit, not hide the window for ever.
        QVERIFY(window.close());
        QCOMPARE(closing.count(), 1);
        QVERIFY(QFile::exists(SettingsStore::instance().settingsFilePath()));
        window.finishSession();
        QFile log(SettingsStore::instance().eventLogPath());
        QVERIFY(log.open(QIODevice::ReadOnly));
        const QList<QByteArray> records = log.readAll().trimmed().split('\n');
        QVERIFY(records.first().endsWith("INFO]![Session started"));
        QVERIFY(records.last().endsWith("INFO]![Session finished"));
    }

    void unreadableDisksAreNamedBesideTheOthers()
    {
        QTemporaryDir dir;
        const QString locked = dir.filePath(QStringLiteral("locked.json"));
        QVERIFY(TestFiles::write(locked, R"({"size": 1000204886016, "identity": {"model": "Locked One", "serial": "L1"},
                                         "behaviour": {"openFails": true}})"));
        MainWindow &window = openOn({TestEnv::demoDir() + QStringLiteral("/01-halvard-system.json"), locked});
        QVERIFY(nextEvaluation(window));
        QCOMPARE(window.findChild<DiskTree *>()->topLevelItemCount(), 1);
        // The readable disk is shown; the Events Log names the other and says what to do, in that order.
        const QStringList lines = window.findChild<EventsLogPage *>()->lines();
        const auto named = std::find_if(lines.begin(), lines.end(), [](const QString &line) {
            return line.endsWith(QStringLiteral(": cannot be opened for reading and writing (simulated)"));
        });
        QVERIFY2(named != lines.end(), qPrintable(lines.join(QLatin1Char('\n'))));
        QVERIFY(named + 1 != lines.end() && (named + 1)->contains(QStringLiteral("\"openFails\"")));
    }

    void trayDigitsLandOnTheirPixels()
    {
        // Every stroke covers exactly its pixels: no smoothing, no half-pixel shift.
        for (const QString &text : QStringList{"45", "-5", "131", "7"}) {
            QSet<QString> expected;
            for (const QLine &stroke : TemperatureDigits::strokes(text)) {
                const int dx = stroke.dx() == 0 ? 0 : (stroke.dx() > 0 ? 1 : -1);
                const int dy = stroke.dy() == 0 ? 0 : (stroke.dy() > 0 ? 1 : -1);
                for (QPoint p = stroke.p1();; p += QPoint(dx, dy)) {
                    if (p.x() >= 0 && p.x() < 16 && p.y() >= 0 && p.y() < 16)
                        expected << QStringLiteral("%1,%2").arg(p.x()).arg(p.y());
                    if (p == stroke.p2())
                        break;
                }
            }
            const QImage icon = TrayIconPainter::temperature(text, Qt::red).toImage();
            QCOMPARE(icon.size(), QSize(16, 16));
            QCOMPARE(paintedPixels(icon), expected);
        }

        // The panel gets a new icon only when the picture changes, not on every poll.
        QMenu menu;
        TrayController tray(&menu);
        TrayIconPlan plan;
        plan.empty = false;
        plan.temperatureMode = true;
        plan.digits = QStringLiteral("41");
        plan.colour = Qt::green;
        tray.apply(plan);
        const qint64 drawn = tray.icon().cacheKey();
        tray.apply(plan);
        QCOMPARE(tray.icon().cacheKey(), drawn);
        plan.colour = Qt::yellow;
        tray.apply(plan);
        QVERIFY(tray.icon().cacheKey() != drawn);
        QCOMPARE(tray.icon().pixmap(16, 16).toImage().pixelColor(13, 0), QColor(Qt::yellow)); // top bar of the 1
    }

    void exportsWriteTheListAndEveryDisk()
    {
        MainWindow &window = openOn({TestEnv::demoDir()});
        QVERIFY(nextEvaluation(window));
        QTemporaryDir dir;
        QStringList asked;
        window.setSaveFileChooser([&](QWidget *parent, const QString &caption, const QString &name,
                                      const QString &filter) {
            asked << QString::number(parent == &window) << caption << name << filter;
            return dir.filePath(name);
        });

        QByteArray events;
        for (const QString &line : window.findChild<EventsLogPage *>()->lines())
            events += line.toLocal8Bit() + "\r\n";
        const QString eventsPath = dir.filePath(QStringLiteral("Events.txt"));
        QCOMPARE(answeringBoxes([&] { window.saveLog(); }),
                 Boxes{box(QMessageBox::Information, QStringLiteral("Event log info file was saved like\n") + eventsPath)});
        QCOMPARE(TestFiles::read(eventsPath), events);

        const QString smartPath = dir.filePath(QStringLiteral("SMARTinfo.txt"));
        QCOMPARE(answeringBoxes([&] { window.saveSMART(); }),
                 Boxes{box(QMessageBox::Information, QStringLiteral("SMART info file was saved like\n") + smartPath)});
        // Every disk in list order, also the one without SMART.
        QCOMPARE(TestFiles::read(smartPath), SmartReport::text(window.monitor()->disks()));

        QCOMPARE(asked, (QStringList{"1", "Save File", "Events.txt", "Event log info (*.txt)",
                                     "1", "Save File", "SMARTinfo.txt", "SMART info (*.txt)"}));
    }

    // On no disks and an empty list: a cancelled dialog writes and says nothing; a file is replaced
    // whole by the empty report or, where it cannot be, stays as it was, and the box says which.
    void exportsOfNothing_data()
    {
        QTest::addColumn<bool>("smart");
        QTest::addColumn<QString>("name"); // empty: the dialog is cancelled
        QTest::addColumn<bool>("limited"); // writes past 4 bytes fail
        QTest::addColumn<bool>("saved");
        QTest::newRow("SMART, cancelled") << true << "" << false << false;
        QTest::newRow("events, cancelled") << false << "" << false << false;
        QTest::newRow("SMART over an older file") << true << "SMARTinfo.txt" << false << true;
        QTest::newRow("events over an older file") << false << "Events.txt" << false << true;
        QTest::newRow("SMART into a missing folder") << true << "missing/SMARTinfo.txt" << false << false;
        QTest::newRow("events over a file, past the size limit") << false << "Events.txt" << true << false;
    }
    void exportsOfNothing()
    {
        QFETCH(bool, smart);
        QFETCH(QString, name);
        QFETCH(bool, limited);
        QFETCH(bool, saved);
        QTemporaryDir empty;
        MainWindow &window = openOn({empty.path()});
        QVERIFY(nextEvaluation(window));
        if (!limited) // else the session's line is there to write
            window.findChild<EventsLogPage *>()->list()->clear();
        QTemporaryDir dir;
        const QString path = name.isEmpty() ? QString() : dir.filePath(name);
        answerSaveDialog(window, dir.path(), path);
        TestFiles::write(path, "older\r\n"); // not where the folder is missing
        const QByteArray older = TestFiles::read(path);
        const QStringList files = QDir(dir.path()).entryList(QDir::NoDotAndDotDot | QDir::AllEntries);

        // Past the limit a write stops short instead of killing the process: the older file must
        // stay whole, not be replaced by the first bytes of the report.
        ::signal(SIGXFSZ, SIG_IGN);
        struct rlimit unlimited {};
        QCOMPARE(::getrlimit(RLIMIT_FSIZE, &unlimited), 0);
        struct rlimit tight = unlimited;
        tight.rlim_cur = limited ? 4 : unlimited.rlim_cur;
        QCOMPARE(::setrlimit(RLIMIT_FSIZE, &tight), 0);
        const Boxes said = answeringBoxes([&] { smart ? window.saveSMART() : window.saveLog(); });
        QCOMPARE(::setrlimit(RLIMIT_FSIZE, &unlimited), 0);

        const QString what = smart ? QStringLiteral("SMART info") : QStringLiteral("Event log info");
        if (path.isEmpty())
            QCOMPARE(said, Boxes());
        else if (saved)
            QCOMPARE(said, Boxes{box(QMessageBox::Information, what + " file was saved like\n" + path)});
        else
            QCOMPARE(said, Boxes{box(QMessageBox::Critical, "Unable to create " + what + " file\n" + path)});
        QCOMPARE(TestFiles::read(path), saved ? QByteArray() : older);
        QCOMPARE(QDir(dir.path()).entryList(QDir::NoDotAndDotDot | QDir::AllEntries), files);
    }

    void diskSettingsActionRestsWhileItsFormIsOpen()
    {
        MainWindow &window = openOn({TestEnv::demoDir()});
        QVERIFY(nextEvaluation(window));
        QAction *action = nullptr;
        for (QAction *candidate : window.findChildren<QAction *>())
            if (candidate->text() == QLatin1String("Disk Settings"))
                action = candidate;
        QVERIFY(action && action->isEnabled());

        QStringList seen;
        answeringModals([&] { action->trigger(); }, [&](QWidget *modal) {
            auto *form = qobject_cast<Device_dlg *>(modal);
            if (!form)
                return;
            seen << QString::number(form->parentWidget() == &window) << QString::number(action->isEnabled())
                 << form->twoValuesLabel()->text();
            form->findChild<QPushButton *>(QStringLiteral("pushButton"))->click();
        });
        QCOMPARE(seen, (QStringList{"1", "0", "qwe\nglhgjhg jyjhklyg jhgujgujg\nErjhlk 67575"}));
        QVERIFY(action->isEnabled());
        QVERIFY(window.findChildren<Device_dlg *>().isEmpty());
    }

    void helpOpensTheManualOrSaysWhy_data()
    {
        QTest::addColumn<bool>("present");
        QTest::addColumn<bool>("viewer");
        QTest::addColumn<int>("message"); // Lang entry, or -1 for none
        QTest::newRow("present") << true << true << -1;
        QTest::newRow("missing") << false << true << int(Lang::HelpMissing);
        QTest::newRow("no viewer") << true << false << int(Lang::HelpNotOpened);
    }

    void helpOpensTheManualOrSaysWhy()
    {
        QFETCH(bool, present);
        QFETCH(bool, viewer);
        QFETCH(int, message);
        // The offscreen platform opens nothing; another one might start a real viewer.
        if (!viewer && QGuiApplication::platformName() != QLatin1String("offscreen"))
            QSKIP("only the offscreen platform is known to have no viewer");

        // Help looks beside the running program: here, beside this test.
        const QString manual = QCoreApplication::applicationDirPath() + QStringLiteral("/Korvane.pdf");
        QFile::remove(manual);
        const auto removeManual = qScopeGuard([&] { QFile::remove(manual); });
        if (present)
            QVERIFY(QFile(manual).open(QIODevice::WriteOnly));
        UrlCatcher catcher;
        if (viewer)
            QDesktopServices::setUrlHandler(QStringLiteral("file"), &catcher, "open");
        const auto removeHandler = qScopeGuard([] { QDesktopServices::unsetUrlHandler(QStringLiteral("file")); });
        if (!viewer)
            QTest::ignoreMessage(QtWarningMsg, QRegularExpression(QStringLiteral("does not support .*openDocument")));

        QTemporaryDir empty;
        MainWindow &window = openOn({empty.path()});
        const Boxes shown = answeringBoxes([&] { window.show_Help(); });

        if (message < 0) {
            QCOMPARE(shown, Boxes());
            QCOMPARE(catcher.urls, QList<QUrl>{QUrl::fromLocalFile(manual)});
            return;
        }
        QCOMPARE(shown, Boxes{box(QMessageBox::Warning, languageText(message).arg(QDir::toNativeSeparators(manual)))});
        QVERIFY(catcher.urls.isEmpty());
    }
};

QTEST_MAIN(TestMainWindow)
#include "tst_mainwindow.moc"
