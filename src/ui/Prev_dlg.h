#pragma once

#include "device/DiskRecord.h"
#include "health/SmtpParams.h"
#include "settings/AppSettings.h"
#include "settings/PreferencesApply.h"

#include <QDialog>
#include <QList>

#include <functional>
#include <utility>

class QAbstractButton;
class QCheckBox;
class QComboBox;
class QDialogButtonBox;
class QGroupBox;
class QGridLayout;
class QLabel;
class QLineEdit;
class QListWidget;
class QPushButton;
class QSpinBox;
class QStackedWidget;
class SmtpTestPanel;
class TrayColourPreview;

/// The preferences: every setting of Korvane.ini a user sets, on five pages (monitoring,
/// temperature, notifications, external tasks, appearance). "Apply" and "OK" hand the values to
/// an applier, which refuses what cannot be saved and says what went wrong; the dialog shows
/// that and, on success, the values as they are now in force.
class Prev_dlg : public QDialog
{
    Q_OBJECT
public:
    /// Puts the values in force and saves them (PreferencesApply::apply in the program).
    using Applier = std::function<PreferencesOutcome(const AppSettings &wanted)>;

    /// The dialog over \a current, offering \a disks for the tray temperature.
    Prev_dlg(const AppSettings &current, const QList<DiskRecord> &disks, Applier applier, QWidget *parent = nullptr);

    /// The settings as the fields hold them now (run-time values taken from the current ones).
    AppSettings values() const;
    /// Shows page \a index (0 monitoring .. 4 appearance).
    void showPage(int index);
    /// Number of pages.
    int pageCount() const;

public slots:
    /// Hands the values to the applier; true when they are in force.
    bool applyValues();

private:
    QWidget *buildMonitoringPage();
    QWidget *buildTemperaturePage();
    QWidget *buildTrayGroup();
    QWidget *buildNotificationsPage();
    QWidget *buildTasksPage();
    QWidget *buildAppearancePage();
    void addPage(QWidget *page, const char *icon, int title);
    QLabel *label(int entry, QWidget *buddy);
    void bindText(QWidget *widget, int entry);
    void bindItems(QComboBox *combo, const QList<int> &entries);
    void retranslate();
    void load(const AppSettings &settings);
    void updateTemperatureHints();
    void updateEnabling();
    void chooseProgram(QLineEdit *field);
    SmtpParams smtpParams() const;
    void waitForTest(bool waiting);
    void showOutcome(const PreferencesOutcome &outcome);

    AppSettings m_current;
    QList<DiskRecord> m_disks;
    Applier m_applier;
    QList<std::pair<QWidget *, int>> m_texts;
    QList<std::pair<QComboBox *, QList<int>>> m_items;
    QList<std::pair<QPushButton *, int>> m_browseButtons; ///< with the caption of their row
    QListWidget *m_pageList = nullptr;
    QStackedWidget *m_pages = nullptr;
    QDialogButtonBox *m_buttons = nullptr;
    QSpinBox *m_pollTime = nullptr;
    QComboBox *m_pollPeriod = nullptr;
    QSpinBox *m_spaceTime = nullptr;
    QComboBox *m_spacePeriod = nullptr;
    QCheckBox *m_startup = nullptr;
    QSpinBox *m_warnTemp = nullptr;
    QSpinBox *m_critTemp = nullptr;
    QLabel *m_warnOther = nullptr;
    QLabel *m_critOther = nullptr;
    QLabel *m_rule = nullptr;
    QComboBox *m_unit = nullptr;
    QCheckBox *m_showTemp = nullptr;
    QComboBox *m_trayDisk = nullptr;
    QComboBox *m_colours[3] = {};
    TrayColourPreview *m_preview = nullptr;
    QCheckBox *m_popups = nullptr;
    QCheckBox *m_mail = nullptr;
    QGroupBox *m_mailServer = nullptr;
    QLineEdit *m_from = nullptr;
    QLineEdit *m_to = nullptr;
    QLineEdit *m_server = nullptr;
    QSpinBox *m_port = nullptr;
    QComboBox *m_security = nullptr;
    QCheckBox *m_auth = nullptr;
    QLineEdit *m_user = nullptr;
    QLineEdit *m_pass = nullptr;
    SmtpTestPanel *m_smtpTest = nullptr;
    QLineEdit *m_warnTask = nullptr;
    QLineEdit *m_critTask = nullptr;
    QComboBox *m_style = nullptr;
    QComboBox *m_language = nullptr;
    QLabel *m_languageNote = nullptr;
};
