#pragma once

#include "health/EventLine.h"
#include "health/ExternalTaskRunner.h"
#include "health/HealthEvaluation.h"
#include "health/TextExport.h"

#include <QDateTime>
#include <QMainWindow>
#include <QSystemTrayIcon>

#include <functional>
#include <memory>

class DiskInfoPage;
class DiskMonitor;
class DiskTree;
class DriveBackend;
class EventsLogPage;
class LicenceLayer;
class PlaceholderPage;
class QAction;
class QMenu;
class QSplitter;
class QTabWidget;
class QToolBar;
class QToolButton;
class QTreeWidgetItem;
class ScanDiskPages;
class SmartInfoPage;
class TrayController;
class smart_stat;
class view_devices;
struct DiskRecord;

/// The program's one window: the disk tree, the pages of the selected disk, the tool bar and
/// menus, and the tray. It draws what the monitoring service reports and passes the user's
/// commands to it; it never touches a disk itself.
class MainWindow : public QMainWindow
{
    Q_OBJECT
public:
    /// Builds the window over \a backend; discovery starts 10 ms after construction.
    MainWindow(std::shared_ptr<DriveBackend> backend, const LicenceLayer &licence, QWidget *parent = nullptr);
    ~MainWindow() override;

    /// The monitoring service the window draws.
    DiskMonitor *monitor() const { return m_monitor; }
    /// Records the end of the session; called once the event loop has returned.
    void finishSession();
    /// The tray side of the window.
    TrayController *tray() const { return m_tray; }

    /// Asks for the file of an export: parent, caption, proposed name and filter in; the chosen
    /// path out, empty when the user cancelled.
    using SaveFileChooser =
        std::function<QString(QWidget *parent, const QString &caption, const QString &name, const QString &filter)>;
    /// Replaces how the exports ask for their file (QFileDialog::getSaveFileName by default).
    void setSaveFileChooser(SaveFileChooser chooser);

signals:
    /// The window is about to close for good.
    void closeApp();
    /// The user asked for the other temperature unit.
    void needChangeTemp();

public slots:
    void setup_win();
    void on_treeWidget_currentItemChanged(QTreeWidgetItem *current, QTreeWidgetItem *previous);
    void show_temp_drive(int index);
    void trayUpdate();
    void trayRestore();
    void trayHide();
    void trayClose();
    void trayMes(const HealthPopUp &popUp);
    /// Opens the disk settings form for the selected disk.
    void show_Dev_Dlg();
    /// Opens the preferences; does nothing while discovery runs.
    void show_Pref_Dlg();
    void show_about_Dlg();
    /// Opens the user manual beside the executable in the desktop's viewer, or says why it cannot.
    void show_Help();
    void update_ALL();
    void iconActivated(QSystemTrayIcon::ActivationReason reason);
    void set_scan_On();
    void set_scan_Off();
    void InitSystem();
    void SMART_updateDisplay();
    void writeIntoLogFromScan(int disk, int kind, const QString &text);
    /// "Save Event log info": the Events Log lines into a text file the user picks.
    void saveLog();
    /// "Save SMART info": the SMART rows of every disk into a text file the user picks.
    void saveSMART();
    void registrationApp();
    void change_temp_C_F();
    /// Adds one line to the Events Log list and notes the time as the last check.
    void addEventLine(EventLineKind kind, const QString &text);

protected:
    void closeEvent(QCloseEvent *event) override;
    void changeEvent(QEvent *event) override;
    void contextMenuEvent(QContextMenuEvent *event) override;
    void resizeEvent(QResizeEvent *event) override;

private:
    void buildPages();
    void buildActions();
    void buildMenus();
    void connectMonitor();
    void retranslate();
    void applySettings();
    void applyStyle(int index);
    void get_devices_complette(const QList<DiskRecord> &disks, const QDateTime &when);
    void onEvaluated(const HealthEvaluation &result, const QList<DiskRecord> &disks, const QDateTime &when);
    void onDiskChanged(int index);
    void onVolumesRefreshed(const QDateTime &when);
    void showSelectedDisk();
    void updateMonitoringActions();
    void placeLookingPanel();
    QString chooseExportPath(TextExport::Kind kind);
    void showExportOutcome(const TextExport::Outcome &outcome);
    void detailLog(const QString &entry) const;

    DiskMonitor *m_monitor;
    const LicenceLayer &m_licence;
    DiskTree *m_tree = nullptr;
    QToolButton *m_unitButton = nullptr;
    QSplitter *m_splitter = nullptr;
    QTabWidget *m_tabs = nullptr;
    DiskInfoPage *m_infoPage = nullptr;
    SmartInfoPage *m_smartPage = nullptr;
    ScanDiskPages *m_scanPage = nullptr;
    EventsLogPage *m_eventsPage = nullptr;
    smart_stat *m_statsPage = nullptr;
    view_devices *m_looking = nullptr;
    TrayController *m_tray = nullptr;
    QMenu *m_trayMenu = nullptr;
    QMenu *m_fileMenu = nullptr;
    QMenu *m_tasksMenu = nullptr;
    QMenu *m_helpMenu = nullptr;
    QToolBar *m_toolBar = nullptr;
    QAction *m_refresh = nullptr;
    QAction *m_monitorOff = nullptr;
    QAction *m_monitorOn = nullptr;
    QAction *m_about = nullptr;
    QAction *m_help = nullptr;
    QAction *m_saveLog = nullptr;
    QAction *m_saveSmart = nullptr;
    QAction *m_preferences = nullptr;
    QAction *m_diskSettings = nullptr;
    QMenu *m_settingsMenu = nullptr;
    QAction *m_register = nullptr;
    QAction *m_show = nullptr;
    QAction *m_hide = nullptr;
    QAction *m_close = nullptr;
    ExternalTaskRunner m_tasks;
    SaveFileChooser m_chooseSaveFile;
    HealthState m_overall = HealthUnknown;
    QString m_traySummary;
    bool m_quitRequested = false;
    bool m_diskSettingsOpen = false; ///< a poll must not re-enable the action while its form is up
    bool m_sessionFinished = false;
};
