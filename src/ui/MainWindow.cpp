#include "MainWindow.h"

#include "IconCache.h"

#include "AboutDialog.h"
#include "Device_dlg.h"
#include "DiskInfoPage.h"
#include "DiskTree.h"
#include "EventsLogPage.h"
#include "PlaceholderPage.h"
#include "Prev_dlg.h"
#include "ScanDiskPages.h"
#include "SmartInfoPage.h"
#include "TrayController.h"
#include "smart_stat.h"
#include "disk_status.h"
#include "statusLine.h"
#include "TemperatureGauge.h"
#include "view_devices.h"

#include "device/AccessReport.h"
#include "device/SmartReport.h"
#include "health/DiskPanelPlan.h"
#include "health/TrayIconPlan.h"
#include "health/WindowTexts.h"
#include "monitor/DiskMonitor.h"
#include "settings/AppSettings.h"
#include "settings/DetailLog.h"
#include "settings/HelpManual.h"
#include "settings/LanguageTable.h"
#include "settings/LicenceLayer.h"
#include "settings/PreferencesApply.h"
#include "settings/SettingsStore.h"

#include <QApplication>
#include <QCloseEvent>
#include <QContextMenuEvent>
#include <QDesktopServices>
#include <QFileDialog>
#include <QMenu>
#include <QMenuBar>
#include <QMessageBox>
#include <QSplitter>
#include <QStyle>
#include <QStyleFactory>
#include <QTabWidget>
#include <QTimer>
#include <QToolBar>
#include <QToolButton>
#include <QVBoxLayout>

namespace {

QIcon image(const char *name)
{
    return IconCache::icon(WindowTexts::imagePath(QLatin1StringView(name)));
}

} // namespace

MainWindow::MainWindow(std::shared_ptr<DriveBackend> backend, const LicenceLayer &licence, QWidget *parent)
    : QMainWindow(parent), m_monitor(new DiskMonitor(std::move(backend), this)), m_licence(licence),
      m_chooseSaveFile([](QWidget *parent, const QString &caption, const QString &name, const QString &filter) {
          return QFileDialog::getSaveFileName(parent, caption, name, filter);
      })
{
    setWindowIcon(image("korvane.png"));
    setup_win();
    connectMonitor();
    connect(this, &MainWindow::needChangeTemp, this, &MainWindow::change_temp_C_F);
    connect(&SettingsStore::instance(), &SettingsStore::settingsChanged, this, &MainWindow::applySettings);
    connect(&SettingsStore::instance(), &SettingsStore::languageChanged, this, &MainWindow::retranslate);
    m_monitor->setTrace([this](const QString &entry) { detailLog(entry); });
    retranslate();
    applySettings();
    detailLog(QStringLiteral("Before initSystem"));
    QTimer::singleShot(10, this, &MainWindow::InitSystem);
}

MainWindow::~MainWindow()
{
    finishSession();
}

void MainWindow::setup_win()
{
    buildPages();
    buildActions();
    buildMenus();
    m_tray = new TrayController(m_trayMenu, this);
    connect(m_tray, &TrayController::activated, this, &MainWindow::iconActivated);
}

void MainWindow::buildPages()
{
    m_tree = new DiskTree(this);
    m_unitButton = new QToolButton(this);
    m_unitButton->setAutoRaise(true);
    connect(m_unitButton, &QToolButton::clicked, this, &MainWindow::needChangeTemp);
    auto *treeBox = new QWidget(this);
    auto *treeLayout = new QVBoxLayout(treeBox);
    treeLayout->setContentsMargins(0, 0, 0, 0);
    treeLayout->addWidget(m_tree, 1);
    treeLayout->addWidget(m_unitButton, 0, Qt::AlignRight);

    m_infoPage = new DiskInfoPage(this);
    m_smartPage = new SmartInfoPage(this);
    m_scanPage = new ScanDiskPages(this);
    connect(m_scanPage, &ScanDiskPages::intoLogFromScan, this, &MainWindow::writeIntoLogFromScan);
    m_eventsPage = new EventsLogPage(this);
    m_statsPage = new smart_stat(this);
    m_tabs = new QTabWidget(this);
    m_tabs->addTab(m_infoPage, QString());
    m_tabs->addTab(m_smartPage, QString());
    m_tabs->addTab(m_scanPage, QString());
    m_tabs->addTab(m_eventsPage, QString());
    m_tabs->addTab(m_statsPage, QString());

    m_splitter = new QSplitter(Qt::Horizontal, this);
    m_splitter->addWidget(treeBox);
    m_splitter->addWidget(m_tabs);
    m_splitter->setStretchFactor(1, 1);
    m_splitter->setChildrenCollapsible(false);
    setCentralWidget(m_splitter);

    m_looking = new view_devices(this);
    m_looking->hide();
    connect(m_tree, &QTreeWidget::currentItemChanged, this, &MainWindow::on_treeWidget_currentItemChanged);
}

void MainWindow::buildActions()
{
    m_refresh = new QAction(image("nav_refresh_blue.png"), QString(), this);
    m_refresh->setShortcut(QKeySequence::Refresh);
    connect(m_refresh, &QAction::triggered, this, &MainWindow::update_ALL);
    m_monitorOff = new QAction(image("media_stop_red.png"), QString(), this);
    connect(m_monitorOff, &QAction::triggered, this, &MainWindow::set_scan_Off);
    m_monitorOn = new QAction(image("media_play_green.png"), QString(), this);
    connect(m_monitorOn, &QAction::triggered, this, &MainWindow::set_scan_On);
    m_about = new QAction(image("about_app.png"), QString(), this);
    connect(m_about, &QAction::triggered, this, &MainWindow::show_about_Dlg);
    m_help = new QAction(QString(), this);
    m_help->setShortcut(QKeySequence::HelpContents);
    connect(m_help, &QAction::triggered, this, &MainWindow::show_Help);
    m_saveLog = new QAction(image("log_save.png"), QString(), this);
    connect(m_saveLog, &QAction::triggered, this, &MainWindow::saveLog);
    m_saveSmart = new QAction(image("smart_save.png"), QString(), this);
    connect(m_saveSmart, &QAction::triggered, this, &MainWindow::saveSMART);
    m_preferences = new QAction(image("diagnostic_exec.png"), QString(), this);
    // Desktops without a convention of their own get the common Ctrl+, .
    if (QKeySequence::keyBindings(QKeySequence::Preferences).isEmpty())
        m_preferences->setShortcut(QKeySequence(Qt::CTRL | Qt::Key_Comma));
    else
        m_preferences->setShortcut(QKeySequence::Preferences);
    connect(m_preferences, &QAction::triggered, this, &MainWindow::show_Pref_Dlg);
    m_diskSettings = new QAction(image("paste.png"), QString(), this);
    connect(m_diskSettings, &QAction::triggered, this, &MainWindow::show_Dev_Dlg);
    m_register = new QAction(QString(), this);
    connect(m_register, &QAction::triggered, this, &MainWindow::registrationApp);
    m_show = new QAction(image("tray_icon.png"), QString(), this);
    connect(m_show, &QAction::triggered, this, &MainWindow::trayRestore);
    m_hide = new QAction(image("window_warning.png"), QString(), this);
    connect(m_hide, &QAction::triggered, this, &MainWindow::trayHide);
    m_close = new QAction(image("close.png"), QString(), this);
    m_close->setShortcut(QKeySequence::Quit);
    connect(m_close, &QAction::triggered, this, &MainWindow::trayClose);
    m_show->setEnabled(false);
    m_monitorOff->setEnabled(false);
    m_monitorOn->setEnabled(false);
    m_refresh->setEnabled(false);
}

void MainWindow::buildMenus()
{
    m_fileMenu = menuBar()->addMenu(QString());
    m_fileMenu->addAction(m_saveLog);
    m_fileMenu->addAction(m_saveSmart);
    m_fileMenu->addSeparator();
    m_fileMenu->addAction(m_hide);
    m_fileMenu->addAction(m_close);
    m_tasksMenu = menuBar()->addMenu(QString());
    m_tasksMenu->addAction(m_refresh);
    m_tasksMenu->addSeparator();
    m_tasksMenu->addAction(m_monitorOff);
    m_tasksMenu->addAction(m_monitorOn);
    // Text only: a menu bar shows an icon instead of the title, and a lone picture among the
    // menus' names reads as a button.
    m_settingsMenu = menuBar()->addMenu(QString());
    m_settingsMenu->addAction(m_preferences);
    m_settingsMenu->addAction(m_diskSettings);
    m_helpMenu = menuBar()->addMenu(QString());
    m_helpMenu->addAction(m_help);
    m_helpMenu->addAction(m_about);
    m_helpMenu->addAction(m_register);

    m_toolBar = addToolBar(QString());
    m_toolBar->setObjectName(QStringLiteral("mainToolBar"));
    m_toolBar->setMovable(false);
    m_toolBar->setIconSize(QSize(24, 24));
    m_toolBar->addAction(m_refresh);
    m_toolBar->addSeparator();
    m_toolBar->addAction(m_monitorOff);
    m_toolBar->addAction(m_monitorOn);
    m_toolBar->addSeparator();
    m_toolBar->addAction(m_saveLog);
    m_toolBar->addAction(m_saveSmart);
    m_toolBar->addSeparator();
    m_toolBar->addAction(m_preferences);
    m_toolBar->addAction(m_about);

    // Many panels open this menu on any click, so it carries every tray action.
    m_trayMenu = new QMenu(this);
    m_trayMenu->addAction(m_show);
    m_trayMenu->addAction(m_hide);
    m_trayMenu->addSeparator();
    m_trayMenu->addAction(m_refresh);
    m_trayMenu->addAction(m_preferences);
    m_trayMenu->addSeparator();
    m_trayMenu->addAction(m_close);
}

void MainWindow::connectMonitor()
{
    connect(m_monitor, &DiskMonitor::sessionStarted, this, [this](const QDateTime &when) {
        m_eventsPage->addLine(WindowTexts::sessionStartedIcon(), WindowTexts::sessionStartedLine(when));
    });
    connect(m_monitor, &DiskMonitor::discoveryFinished, this, &MainWindow::get_devices_complette);
    connect(m_monitor, &DiskMonitor::evaluated, this, &MainWindow::onEvaluated);
    connect(m_monitor, &DiskMonitor::diskChanged, this, &MainWindow::onDiskChanged);
    connect(m_monitor, &DiskMonitor::volumesRefreshed, this,
            [this](const QList<DiskRecord> &, const QDateTime &when) { onVolumesRefreshed(when); });
    connect(m_monitor, &DiskMonitor::notice, this,
            [this](const EventLine &line) { addEventLine(line.kind, line.text); });
    connect(m_monitor, &DiskMonitor::mailFailed, this,
            [this](const EventLine &line) { addEventLine(line.kind, line.text); });
}

void MainWindow::retranslate()
{
    m_tabs->setTabText(0, languageText(Lang::DiskInfoPage));
    m_tabs->setTabText(1, languageText(Lang::SmartInfoPage));
    m_tabs->setTabText(2, languageText(Lang::ScanDiskPage));
    m_tabs->setTabText(3, languageText(Lang::EventsLogPage));
    m_tabs->setTabText(4, languageText(Lang::StatisticsPage));
    m_fileMenu->setTitle(languageText(Lang::FileMenu));
    m_tasksMenu->setTitle(languageText(Lang::TasksMenu));
    m_helpMenu->setTitle(languageText(Lang::HelpMenu));
    m_toolBar->setWindowTitle(languageText(Lang::TasksMenu));
    m_refresh->setText(languageText(Lang::Refresh));
    m_monitorOff->setText(languageText(Lang::MonitoringOff));
    m_monitorOn->setText(languageText(Lang::MonitoringOn));
    m_about->setText(languageText(Lang::About));
    m_help->setText(languageText(Lang::UserManual));
    m_saveLog->setText(languageText(Lang::SaveEventLog));
    m_saveSmart->setText(languageText(Lang::SaveSmartInfo));
    m_preferences->setText(languageText(Lang::PreferencesTitle));
    m_diskSettings->setText(languageText(Lang::DiskSettingsTitle));
    m_settingsMenu->setTitle(languageText(Lang::SettingsMenu));
    m_register->setText(languageText(Lang::Register));
    m_show->setText(languageText(Lang::TrayShow));
    m_hide->setText(languageText(Lang::TrayHide));
    m_close->setText(languageText(Lang::TrayClose));
    m_smartPage->retranslate();
    m_infoPage->retranslate();
    m_eventsPage->retranslate();
    m_scanPage->retranslate();
    m_statsPage->retranslate();
    m_tree->retranslate(appSettings());
    // The overflow button Qt adds for a narrow window has no name of its own for screen readers.
    if (auto *more = m_toolBar->findChild<QToolButton *>(QStringLiteral("qt_toolbar_ext_button")))
        more->setAccessibleName(languageText(Lang::MoreTools));
}

void MainWindow::applySettings()
{
    const AppSettings &settings = appSettings();
    // The button offers the other unit: it reads the unit a click switches to.
    m_unitButton->setText(languageText(settings.temp_celsius == 1 ? Lang::UnitCelsius : Lang::UnitFahrenheit));
    m_unitButton->setToolTip(QStringLiteral("%1 %2").arg(
        languageText(Lang::ShowTemperatureIn),
        languageText(settings.temp_celsius == 1 ? Lang::CelsiusName : Lang::FahrenheitName)));
    m_unitButton->setAccessibleName(m_unitButton->toolTip());
    applyStyle(settings.StyleType);
    m_infoPage->statusPanel()->gauge()->setLimits(settings.warn_temp, settings.crit_temp);
    m_tree->retranslate(settings);
    SMART_updateDisplay();
    trayUpdate();
}

void MainWindow::applyStyle(int index)
{
    const QStringList keys = QStyleFactory::keys();
    if (index < 0 || index >= keys.size())
        return;
    // Setting the same style again would rebuild every widget's look for nothing.
    if (QApplication::style()->name().compare(keys.at(index), Qt::CaseInsensitive) != 0)
        QApplication::setStyle(keys.at(index));
}

void MainWindow::InitSystem()
{
    if (appSettings().showMainWindow) {
        placeLookingPanel();
        m_looking->show();
        m_looking->raise();
    }
    m_monitor->start();
    updateMonitoringActions();
}

void MainWindow::get_devices_complette(const QList<DiskRecord> &disks, const QDateTime &when)
{
    m_infoPage->statusHeading()->setText(WindowTexts::diskStatusHeading(when));
    m_infoPage->volumesHeading()->setText(WindowTexts::volumesHeading(when));
    m_tree->rebuild(disks, appSettings());
    m_scanPage->setDisks(disks, m_monitor->sharedBackend());
    m_looking->hide();
    m_show->setEnabled(isHidden());
    m_refresh->setEnabled(true);
    const int treeWidth = m_tree->fitColumns();
    m_splitter->setSizes({treeWidth, qMax(0, width() - treeWidth)});
    if (disks.isEmpty()) {
        m_tabs->setTabEnabled(2, false);
        m_infoPage->showNoDisks(AccessReport::lines(m_monitor->backend(), QStringLiteral("Korvane")));
    } else {
        m_tree->setCurrentItem(m_tree->topLevelItem(0));
        // Disks that could not be read beside those shown: name them and say how to grant
        // access. Lines go on top, so they are added last first to read downwards.
        const QStringList access = AccessReport::lines(m_monitor->backend(), QStringLiteral("Korvane"));
        for (auto line = access.crbegin(); line != access.crend(); ++line)
            addEventLine(EventLineKind::Information, *line);
    }
    updateMonitoringActions();
}

void MainWindow::onEvaluated(const HealthEvaluation &result, const QList<DiskRecord> &, const QDateTime &when)
{
    for (const EventLine &line : result.eventLines)
        addEventLine(line.kind, line.text);
    if (result.popUp)
        trayMes(*result.popUp);
    if (const auto failure = m_tasks.run(result.overallLevel, result.externalTask))
        addEventLine(failure->kind, failure->text);
    m_overall = result.overallLevel;
    m_traySummary = result.traySummary;
    m_infoPage->statusHeading()->setText(WindowTexts::diskStatusHeading(when));
    m_infoPage->statusHeading()->setLevel(m_overall);
    SMART_updateDisplay();
    trayUpdate();
}

void MainWindow::onDiskChanged(int index)
{
    if (index == m_tree->currentDisk())
        showSelectedDisk();
    SMART_updateDisplay();
    updateMonitoringActions();
}

void MainWindow::onVolumesRefreshed(const QDateTime &when)
{
    m_infoPage->volumesHeading()->setText(WindowTexts::volumesHeading(when));
    const int index = m_tree->currentDisk();
    if (index >= 0 && index < m_monitor->disks().size())
        m_infoPage->showVolumes(m_monitor->disks().at(index));
}

void MainWindow::SMART_updateDisplay()
{
    const QList<DiskRecord> &disks = m_monitor->disks();
    if (m_tree->topLevelItemCount() == 0 || disks.size() != m_tree->topLevelItemCount())
        return;
    QList<DiskPanelPlan> plans;
    for (int i = 0; i < disks.size(); ++i) {
        plans.append(DiskPanelPlan::forDisk(disks.at(i), appSettings()));
        m_tree->applyPlan(i, plans.last());
    }
    const int index = m_tree->currentDisk();
    if (index < 0)
        return;
    const DiskRecord &disk = disks.at(index);
    const DiskPanelPlan &plan = plans.at(index);
    m_infoPage->statusPanel()->showDisk(disk, plan);
    if (plan.kind == DiskPanelPlan::Kind::Smart)
        m_smartPage->showDisk(disk);
    else
        m_smartPage->clear();
}

void MainWindow::on_treeWidget_currentItemChanged(QTreeWidgetItem *, QTreeWidgetItem *)
{
    showSelectedDisk();
    SMART_updateDisplay();
    updateMonitoringActions();
}

void MainWindow::showSelectedDisk()
{
    const int index = m_tree->currentDisk();
    m_statsPage->setCurrentDisk(index);
    if (index >= 0 && index < m_monitor->disks().size())
        m_infoPage->showDisk(m_monitor->disks().at(index));
    m_scanPage->showDisk(index);
}

void MainWindow::show_temp_drive(int index)
{
    const QList<DiskRecord> &disks = m_monitor->disks();
    const auto shows = &TrayIconPlan::showsTemperature;
    for (int i = 0; i < disks.size() && i < m_tree->topLevelItemCount(); ++i) {
        if ((index < 0 || i == index) && shows(disks.at(i)))
            m_tree->applyPlan(i, DiskPanelPlan::forDisk(disks.at(i), appSettings()));
    }
    const int gaugeDisk = index < 0 ? m_tree->currentDisk() : index;
    if (gaugeDisk >= 0 && gaugeDisk < disks.size() && shows(disks.at(gaugeDisk)))
        m_infoPage->statusPanel()->showGauge(DiskPanelPlan::forDisk(disks.at(gaugeDisk), appSettings()));
}

void MainWindow::trayUpdate()
{
    m_tray->apply(TrayIconPlan::decide(m_monitor->disks(), appSettings(), m_overall, m_traySummary));
}

void MainWindow::trayRestore()
{
    showNormal();
    raise();
    activateWindow();
    m_show->setEnabled(false);
}

void MainWindow::trayHide()
{
    // Without a tray a hidden window could never be found again: minimise instead.
    if (!m_tray->isTrayAvailable()) {
        showMinimized();
        return;
    }
    hide();
    m_show->setEnabled(true);
}

void MainWindow::trayClose()
{
    m_quitRequested = true;
    close();
}

void MainWindow::trayMes(const HealthPopUp &popUp)
{
    m_tray->popUp(popUp.title, popUp.text, popUp.level);
}

void MainWindow::iconActivated(QSystemTrayIcon::ActivationReason reason)
{
    if (reason != QSystemTrayIcon::Trigger && reason != QSystemTrayIcon::DoubleClick)
        return;
    if (isVisible() && !isMinimized())
        trayHide();
    else
        trayRestore();
}

void MainWindow::update_ALL()
{
    m_monitor->update_ALL();
}

void MainWindow::set_scan_On()
{
    m_monitor->setMonitored(m_tree->currentDisk(), true);
}

void MainWindow::set_scan_Off()
{
    m_monitor->setMonitored(m_tree->currentDisk(), false);
}

void MainWindow::updateMonitoringActions()
{
    const int index = m_tree->currentDisk();
    const bool known = !m_monitor->isDiscovering() && index >= 0 && index < m_monitor->disks().size();
    const bool monitored = known && m_monitor->disks().at(index).monitored;
    m_monitorOff->setEnabled(known && monitored);
    m_monitorOn->setEnabled(known && !monitored);
    m_diskSettings->setEnabled(known && !m_diskSettingsOpen);
    m_preferences->setEnabled(!m_monitor->isDiscovering());
}

void MainWindow::show_Dev_Dlg()
{
    m_diskSettingsOpen = true;
    m_diskSettings->setEnabled(false);
    Device_dlg dialog(this);
    dialog.twoValuesLabel()->setText(
        QCoreApplication::translate("Device_dlgClass", "qwe\nglhgjhg jyjhklyg jhgujgujg\nErjhlk 67575"));
    dialog.setDevice(m_tree->currentDisk());
    // Apply or Cancel alike: nothing of the form is read back.
    dialog.exec();
    m_diskSettingsOpen = false;
    updateMonitoringActions();
}

void MainWindow::show_Pref_Dlg()
{
    // The disk list is not settled while discovery runs, and the settings it remembers with it.
    if (m_monitor->isDiscovering())
        return;
    Prev_dlg dialog(appSettings(), m_monitor->disks(),
                    [this](const AppSettings &wanted) { return PreferencesApply::apply(wanted, m_monitor->disks()); },
                    this);
    dialog.exec();
}

void MainWindow::show_Help()
{
    const HelpManual::Decision help = HelpManual::decide(QCoreApplication::applicationDirPath());
    QString problem = help.message;
    if (problem.isEmpty() && !QDesktopServices::openUrl(help.url))
        problem = HelpManual::notOpenedMessage(help.path);
    // Said here, or the user presses F1 and nothing at all happens.
    if (!problem.isEmpty())
        QMessageBox(QMessageBox::Warning, languageText(Lang::Title), problem, QMessageBox::Ok, this).exec();
}

void MainWindow::saveLog()
{
    const QString path = chooseExportPath(TextExport::Kind::EventLog);
    if (!path.isEmpty())
        showExportOutcome(TextExport::save(TextExport::Kind::EventLog, path,
                                           TextExport::eventsReport(m_eventsPage->lines())));
}

void MainWindow::saveSMART()
{
    const QString path = chooseExportPath(TextExport::Kind::SmartInfo);
    if (!path.isEmpty())
        showExportOutcome(TextExport::save(TextExport::Kind::SmartInfo, path, SmartReport::text(m_monitor->disks())));
}

void MainWindow::setSaveFileChooser(SaveFileChooser chooser)
{
    m_chooseSaveFile = std::move(chooser);
}

QString MainWindow::chooseExportPath(TextExport::Kind kind)
{
    const TextExport::FileChoice choice = TextExport::fileChoice(kind);
    return m_chooseSaveFile(this, choice.caption, choice.proposedName, choice.filter);
}

void MainWindow::showExportOutcome(const TextExport::Outcome &outcome)
{
    QMessageBox box(outcome.saved ? QMessageBox::Information : QMessageBox::Critical, outcome.title, outcome.text,
                    QMessageBox::Ok, this);
    box.exec();
}

void MainWindow::show_about_Dlg()
{
    AboutDialog(m_licence, this).exec();
}

void MainWindow::registrationApp()
{
    QMessageBox box(QMessageBox::Information, languageText(Lang::Title), m_licence.registrationText(),
                    QMessageBox::Ok, this);
    box.setTextFormat(Qt::RichText);
    box.exec();
}

void MainWindow::change_temp_C_F()
{
    AppSettings settings = appSettings();
    settings.temp_celsius = settings.temp_celsius == 0 ? 1 : 0;
    SettingsStore::instance().apply(settings);
}

void MainWindow::writeIntoLogFromScan(int disk, int kind, const QString &text)
{
    if (disk < 0 || disk >= m_monitor->disks().size())
        return;
    addEventLine(EventLineKind(kind), WindowTexts::diskLine(m_monitor->disks().at(disk).model, text));
    if (isHidden())
        trayRestore();
}

void MainWindow::addEventLine(EventLineKind kind, const QString &text)
{
    const QDateTime now = QDateTime::currentDateTime();
    m_infoPage->statusHeading()->setText(WindowTexts::diskStatusHeading(now));
    m_eventsPage->addLine(WindowTexts::eventIcon(kind), WindowTexts::eventListLine(now, text));
}

void MainWindow::finishSession()
{
    if (m_sessionFinished)
        return;
    m_sessionFinished = true;
    m_monitor->finish();
}

void MainWindow::closeEvent(QCloseEvent *event)
{
    if (!m_quitRequested && !appSettings().winPEMode && m_tray->isTrayAvailable()) {
        event->ignore();
        trayHide();
        return;
    }
    emit closeApp();
    m_scanPage->closeAll();
    QString error;
    if (!m_monitor->isDiscovering() && !SettingsStore::instance().save(m_monitor->disks(), &error))
        qWarning("Korvane: the settings were not saved: %s", qPrintable(error));
    event->accept();
}

void MainWindow::changeEvent(QEvent *event)
{
    QMainWindow::changeEvent(event);
    if (event->type() == QEvent::WindowStateChange && isMinimized() && !appSettings().winPEMode
        && m_tray->isTrayAvailable())
        QTimer::singleShot(0, this, &MainWindow::trayHide);
}

void MainWindow::contextMenuEvent(QContextMenuEvent *event)
{
    QMenu menu(this);
    menu.addAction(m_refresh);
    menu.addSeparator();
    menu.addAction(m_monitorOff);
    menu.addAction(m_monitorOn);
    menu.addSeparator();
    menu.addAction(m_diskSettings);
    menu.exec(event->globalPos());
}

void MainWindow::resizeEvent(QResizeEvent *event)
{
    QMainWindow::resizeEvent(event);
    placeLookingPanel();
}

void MainWindow::placeLookingPanel()
{
    m_looking->move((width() - m_looking->width()) / 2, (height() - m_looking->height()) / 2);
}

void MainWindow::detailLog(const QString &entry) const
{
    if (appSettings().detailLogEnabled)
        writeDetailLog(false, entry);
}
