#pragma once

#include "DiskSettings.h"

#include "device/DiskRecord.h"

#include <QList>
#include <QString>
#include <QStringList>
#include <QtGlobal>

/// How the e-mail client talks to its server; the numbers are those of the settings file.
enum SmtpSecurity : int {
    SmtpPlain = 0,    ///< plain SMTP, nothing encrypted
    SmtpStartTls = 1, ///< plain greeting and EHLO, then STARTTLS and the rest encrypted
    SmtpTls = 2,      ///< encrypted from the first byte (usually port 465)
};

/// The user settings, one process-wide instance (appSettings()). Fields that are saved carry the
/// spelling of their key in the settings file; run-time fields are set at start-up and never saved.
/// Written only on the GUI thread; read anywhere.
struct AppSettings
{
    // Saved keys, in the order the file lists them.
    int poll_time = 5;             ///< SMART check interval, a count of poll_period units
    int poll_period = 1;           ///< unit of poll_time: 0 seconds, 1 minutes, 2 hours
    int time_check_space = 10;     ///< free-space check interval, a count of period_check_space units
    int period_check_space = 1;    ///< unit of time_check_space, coded like poll_period
    bool show_temp = false;        ///< draw a disk temperature into the tray icon
    int temp_celsius = 1;          ///< display unit: 0 Celsius, non-zero Fahrenheit (the key reads the other way round)
    int disk_temp_show = 0;        ///< index of the disk whose temperature the tray shows
    int StyleType = 1;             ///< index into the toolkit's list of widget styles
    int LanguageType = 0;          ///< user-interface language (see LanguageTable)
    int color_N = 4;               ///< tray temperature colour index, normal state (green)
    int color_W = 12;              ///< tray temperature colour index, warning state (yellow)
    int color_C = 2;               ///< tray temperature colour index, critical state (red)
    QString SMTP_from;             ///< sender address
    QString SMTP_to;               ///< recipient address
    QString SMTP_server;           ///< SMTP host name
    int SMTP_port = 2525;
    QString SMTP_user;
    QString SMTP_pass;             ///< kept in clear text, hence the owner-only file mode
    bool SMTP_auth = false;        ///< log in with AUTH LOGIN
    bool pop_notif_enable = true;  ///< tray pop-ups on warning and alarm
    bool eml_notif_enable = false; ///< e-mail when the overall level changes
    bool startup = false;          ///< start with the user's session
    int warn_temp = 55;            ///< warning temperature, degrees Celsius
    int crit_temp = 70;            ///< critical temperature, degrees Celsius
    QString extWarnTask;           ///< command started on every evaluation at the warning level
    QString extCritTask;           ///< command started on every evaluation at the alarm level
    int SMTP_security = 0;         ///< connection to the SMTP server, a SmtpSecurity value

    // Run-time values, never saved.
    bool showMainWindow = true;    ///< false when started with "hide"
    bool detailLogEnabled = false; ///< true when started with "-detlog"
    bool winPEMode = false;        ///< running from a pre-installation environment
    bool is64BitBuild = sizeof(void *) == 8;
    QString executableDirectory;   ///< folder of the executable (at a hidden start, the one autostart names), ending with a separator

    /// Index of "WindowsVista" (exact case) in styleKeys, else of \a nativeStyle (any case), else 1.
    static int defaultStyleIndex(const QStringList &styleKeys, const QString &nativeStyle = QString());
    /// Puts every saved key back to its default; run-time values stay. styleKeys is the toolkit's
    /// style list, nativeStyle the style the desktop chose for the program.
    void setDefaults(const QStringList &styleKeys, const QString &nativeStyle = QString());
    /// True when sender, recipient and server are all set; port and login are not checked.
    bool isSmtpConfigured() const;
    /// A Celsius value in the display unit: as is when temp_celsius is 0, else c * 9 / 5 + 32 (truncated).
    int displayTemperature(int celsius) const;
    /// Milliseconds for a count of interval units (0 seconds, 1 minutes, 2 hours; other units count as
    /// minutes), at most the longest interval a timer can count (INT_MAX ms).
    static qint64 intervalMs(int count, int unit);
    /// The SMART check interval in milliseconds.
    qint64 smartIntervalMs() const { return intervalMs(poll_time, poll_period); }
    /// The free-space check interval in milliseconds.
    qint64 spaceCheckIntervalMs() const { return intervalMs(time_check_space, period_check_space); }
};

/// The process-wide settings.
AppSettings &appSettings();
/// The per-disk entries read by the last loadSettings(), in file order (duplicates kept).
QList<DiskSettings> &diskSettingsList();

/// Resets the process-wide settings to their defaults (see AppSettings::setDefaults).
void setDefaults(const QStringList &styleKeys, const QString &nativeStyle = QString());
/// Reads the settings file (SettingsStore) into appSettings() and diskSettingsList(); false when there was no readable file.
bool loadSettings();
/// Writes appSettings() and one line per disk of disks to the settings file; false when it could not be written.
bool saveSettings(const QList<DiskRecord> &disks);
/// Copies the remembered entry for disks[diskIndex] (by serial) onto it; out-of-range indexes are ignored.
void applyDiskSettings(QList<DiskRecord> &disks, int diskIndex);
