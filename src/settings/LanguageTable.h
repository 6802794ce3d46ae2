#pragma once

#include <QString>
#include <QStringList>

/// Entries of the language files, by line number (from 0). The English text is given with each.
namespace Lang {
enum Entry : int {
    LanguageName = 0,           ///< "English" (name of the file's own language)
    UnitCelsius = 1,            ///< "°C"; the unit for a display flag f is UnitCelsius + f
    UnitFahrenheit = 2,         ///< "°F"
    CelsiusName = 3,            ///< "Celsius"
    FahrenheitName = 4,         ///< "Fahrenheit"
    LanguageLabel = 5,          ///< "Language"
    LanguageLoadFailed = 6,     ///< "The selected language file is invalid or damaged."
    LanguageKept = 7,           ///< "The current language remains in use."
    UnitSeconds = 8,            ///< "seconds"
    UnitMinutes = 9,            ///< "minutes"
    UnitHours = 10,             ///< "hours"
    PreferencesTitle = 11,      ///< "Preferences"
    GeneralPage = 12,           ///< "General"
    NotificationsPage = 13,     ///< "Notifications"
    EmailPage = 14,             ///< "E-Mail"
    CheckSmartEvery = 15,       ///< "Check SMART attributes every"
    CheckSpaceEvery = 16,       ///< "Check Free Disk Space every"
    ShowTrayTemperature = 17,   ///< "Show temperature in the tray"
    ShowTemperatureIn = 18,     ///< "Show temperature in"
    DiskLabel = 19,             ///< "Disk"
    StyleLabel = 20,            ///< "Style"
    StartAtLogon = 21,          ///< "Start Korvane at logon"
    PopupNotifications = 22,    ///< "Popup notifications"
    EmailNotifications = 23,    ///< "E-Mail notifications"
    RunExternalTask = 24,       ///< "Run an external Task"
    OnWarning = 25,             ///< "On warning:"
    OnAlarm = 26,               ///< "On alarm:"
    TrayColours = 27,           ///< "Temperature colours in the tray"
    ColourNormal = 28,          ///< "Normal"
    ColourWarning = 29,         ///< "Warning"
    ColourCritical = 30,        ///< "Critical"
    Ok = 31,                    ///< "OK"
    Apply = 32,                 ///< "Apply"
    Cancel = 33,                ///< "Cancel"
    SmtpFrom = 34,              ///< "From:"
    SmtpTo = 35,                ///< "To:"
    SmtpServer = 36,            ///< "Server Name:"
    SmtpPort = 37,              ///< "Port:"
    SmtpUser = 38,              ///< "User Name"
    SmtpPassword = 39,          ///< "Password"
    SmtpAuth = 40,              ///< "My server requires Authentication"
    SmtpTest = 41,              ///< "Test"
    SmtpRelay = 42,             ///< "Get a free SMTP relay"
    Browse = 43,                ///< "Browse..."
    WarningTemperature = 44,    ///< "Warning temperature"
    CriticalTemperature = 45,   ///< "Critical temperature"
    LevelWarningLabel = 46,     ///< "warning"
    LevelCriticalLabel = 47,    ///< "critical"
    DiskInfoPage = 48,          ///< "Disk Info"
    SmartInfoPage = 49,         ///< "SMART Info"
    ScanDiskPage = 50,          ///< "Scan Disk"
    EventsLogPage = 51,         ///< "Events Log"
    StatisticsPage = 52,        ///< "Statistics"
    FileMenu = 53,              ///< "&File"
    TasksMenu = 54,             ///< "Tasks"
    HelpMenu = 55,              ///< "Help"
    SaveEventLog = 56,          ///< "Save Event log info"
    SaveSmartInfo = 57,         ///< "Save SMART info"
    MonitoringOff = 58,         ///< "Stop monitoring"
    MonitoringOn = 59,          ///< "Start monitoring"
    MonitoringGroup = 60,       ///< "Monitoring"
    SettingsMenu = 61,          ///< "Settings"
    Refresh = 62,               ///< "Refresh"
    About = 63,                 ///< "About"
    UserManual = 64,            ///< "User manual"
    Register = 65,              ///< "Register..."
    TrayShow = 66,              ///< "&Show"
    TrayHide = 67,              ///< "&hide"
    TrayClose = 68,             ///< "&close"
    DeviceColumn = 69,          ///< "Device"
    TemperatureColumn = 70,     ///< "Temperature"
    NotSupported = 71,          ///< "Not supported"
    NotMonitoring = 72,         ///< "Not monitoring"
    SmartNotSupported = 73,     ///< "SMART not supported"
    EverythingOk = 74,          ///< "Everything is OK"
    WorkTime = 75,              ///< "Work Time:"
    HealthStatus = 76,          ///< "Health Status:"
    VerifyingNumbers = 77,      ///< "Verifying numbers..."
    WhenNotify = 78,            ///< "When to notify"
    NotifyNever = 79,           ///< "Never"
    NotifyWhenBelow = 80,       ///< "When the value falls below" (lower value is worse)
    NotifyWhenAbove = 81,       ///< "When the value rises above" (higher value is worse)
    NotifyWhenChanged = 82,     ///< "Whenever the value changes"
    DiskSettingsTitle = 83,     ///< "Disk Settings"
    CheckThisDevice = 84,       ///< "Check this device"
    VendorSettings = 85,        ///< "Vendor settings"
    Title = 86,                 ///< "Korvane" (window, message box and e-mail caption; tray summary head)
    PowerOnCount = 87,          ///< "Power-on hours count (9)"
    InHours = 88,               ///< "in hours"
    InMinutes = 89,             ///< "in minutes"
    InSeconds = 90,             ///< "in seconds"
    InHalfMinutes = 91,         ///< "in units of 30 seconds"
    HdaTemperature = 92,        ///< "HDA temperature (194)"
    LoadUnloadContains = 93,    ///< "Load/Unload cylce count contains (193)" (the disk settings form's spelling)
    LevelBase = 94,             ///< "NOT CHECKED"; the name of health level n is LevelBase + n
    LevelOk = 95,               ///< "OK"
    LevelWarning = 96,          ///< "WARNING"
    LevelAlarm = 97,            ///< "ALARM"
    AttrIdColumn = 98,          ///< "ID"
    AttrNameColumn = 99,        ///< "Attribute"
    AttrValueColumn = 100,      ///< "Value"
    AttrWorstColumn = 101,      ///< "Worst"
    AttrThresholdColumn = 102,  ///< "Threshold"
    AttrRawColumn = 103,        ///< "Raw Value"
    AttrStatusColumn = 104,     ///< "Status"
    MailStatus = 105,           ///< "Health status:" (first word of the e-mail subject's bracket)
    Description = 106,          ///< "Description"
    HealthAttribute = 107,      ///< "Health attribute."
    HealthPerfAttribute = 108,  ///< "Health/Performance attribute."
    PerfAttribute = 109,        ///< "Performance attribute."
    InfoAttribute = 110,        ///< "Information attribute."
    VolumesHeading = 111,       ///< "Volumes"
    StartScan = 112,            ///< "Start scan"
    StopScan = 113,             ///< "Stop scan"
    ScanSettings = 114,         ///< "Scan settings"
    ScanComplete = 115,         ///< "Scan complete"
    DateColumn = 116,           ///< "Date"
    TimeColumn = 117,           ///< "Time"
    Period = 118,               ///< "Period"
    AllDisks = 119,             ///< "All disks"
    Show = 120,                 ///< "Show"
    TemperatureGraph = 121,     ///< "Temperature graph"
    WarningAlarmEvents = 122,   ///< "Warning and alarm events"
    LanguageEnglish = 123,      ///< "English"
    LanguageRussian = 124,      ///< "Russian"
    LanguageGerman = 125,       ///< "German"
    ExternalTasksPage = 126,    ///< "External tasks"
    AppearancePage = 127,       ///< "Appearance"
    TemperatureLimits = 128,    ///< "Temperature limits"
    TrayIconGroup = 129,        ///< "Tray icon"
    TemperatureRule = 130,      ///< "The warning temperature must lie between 30 and 80 °C, an..."
    Preview = 131,              ///< "Preview"
    MailServerGroup = 132,      ///< "Mail server"
    ExternalTaskHint = 133,     ///< "Started at every check while a disk stays at that level...."
    ChooseProgram = 134,        ///< "Choose a program"
    GermanSessionOnly = 135,    ///< "German stays in use until Korvane ends: Korvane.ini canno..."
    AutostartFolderFailed = 136, ///< "Korvane cannot start at logon: %1 cannot be created or op..."
    AutostartWriteFailed = 137, ///< "Korvane cannot start at logon: %1 cannot be written."
    AutostartRemoveFailed = 138, ///< "Korvane could not stop starting at logon: %1 does not exi..."
    SettingsNotSaved = 139,     ///< "The settings could not be saved to %1."
    FieldRefused = 140,         ///< ""%1" cannot be saved as it stands: Korvane.ini would read..."
    ReasonAscii = 141,          ///< "Use plain ASCII characters only."
    ReasonKeyText = 142,        ///< "Remove "%1" from it: Korvane.ini reads that as a setting..."
    ReasonPlaceholder = 143,    ///< "Remove "%1" from it: it is replaced when Korvane.ini is w..."
    DiskNotPresent = 144,       ///< "Disk %1 (not present)"
    ColourWhite = 145,          ///< "White"
    ColourBlack = 146,          ///< "Black"
    ColourRed = 147,            ///< "Red"
    ColourDarkRed = 148,        ///< "Dark red"
    ColourGreen = 149,          ///< "Green"
    ColourDarkGreen = 150,      ///< "Dark green"
    ColourBlue = 151,           ///< "Blue"
    ColourDarkBlue = 152,       ///< "Dark blue"
    ColourCyan = 153,           ///< "Cyan"
    ColourDarkCyan = 154,       ///< "Dark cyan"
    ColourMagenta = 155,        ///< "Magenta"
    ColourDarkMagenta = 156,    ///< "Dark magenta"
    ColourYellow = 157,         ///< "Yellow"
    ColourDarkYellow = 158,     ///< "Dark yellow"
    ColourGray = 159,           ///< "Gray"
    ColourDarkGray = 160,       ///< "Dark gray"
    HelpMissing = 161,          ///< "The user manual %1 is missing. Install Korvane again to g..."
    HelpNotOpened = 162,        ///< "No program could open the user manual %1. Install a PDF v..."
    TwoValues = 163,            ///< "two values"
    TemperatureOne = 164,       ///< "one"
    TemperatureTenths = 165,    ///< "10xCelsius"
    AttributeSettingsTitle = 166, ///< "Attribute Settings"
    MoreTools = 167,            ///< "More tools"
    EventsList = 168,           ///< "Events"
    HealthBar = 169,            ///< "Health"
    DisksTree = 170,            ///< "Disks"
    DiskInformation = 171,      ///< "Disk information"
    DiskState = 172,            ///< "Disk state"
    SmartAttributes = 173,      ///< "SMART attributes"
    AttributeDescription = 174, ///< "Attribute description"
    ScanPlaceholder = 175,      ///< "The surface scan of this disk will be here."
    StatsPlaceholder = 176,     ///< "Warning and alarm history and temperature graphs will be..."
    AboutVersion = 177,         ///< "Version %1"
    FreeEditionNote = 178,      ///< "(free edition)"
    AboutText = 179,            ///< "Watches the health of your hard disks: it reads their SMA..."
    AboutLicence = 180,         ///< "Free software under the MIT licence."
    SmtpSecurityLabel = 181,    ///< "Connection security:"
    SecurityNone = 182,         ///< "None"
    SecurityStartTls = 183,     ///< "STARTTLS"
    SecurityTls = 184,          ///< "TLS from the first byte (SSL)"
    SmtpTestButton = 185,       ///< "Send &Test Message"
    SmtpRelayButton = 186,      ///< "About SMTP &Relays"
    SmtpTranscript = 187,       ///< "Test transcript"
    ScanStarted = 188,          ///< "Scan Disk Started"
    BadSectorsBetween = 189,    ///< "Bad Sectors between %1 - %2"
    ScanCompleteTitle = 190,    ///< "Scan Disk Complete"
    ScanStoppedTitle = 191,     ///< "Scan Disk Stopped"
    TotalBlocksScanned = 192,   ///< "Total Blocks scanned:"
    TotalSectorsScanned = 193,  ///< "Total Sectors scanned:"
    TotalBadBlocks = 194,       ///< "Total Bad Blocks:"
    TimeElapsed = 195,          ///< "Time elapsed:"
    ElapsedH = 196,             ///< "%1 h."
    ElapsedM = 197,             ///< "%1 m."
    ElapsedS = 198,             ///< "%1 s."
    ElapsedSeconds = 199,       ///< "%1 sec."
    ScanErrorTitle = 200,       ///< "Scan Disk Error"
    DiskInUse = 201,            ///< "The disk is in use or"
    DiskLocked = 202,           ///< "locked by another process."
    ReadSpeed = 203,            ///< "Read Speed: %1 KB/s"
    Scanning = 204,             ///< "Scanning..."
    ScanLegend = 205,           ///< "Legend"
    LegendUnverified = 206,     ///< "Unverified block"
    LegendVerified = 207,       ///< "Verified block"
    LegendBad = 208,            ///< "Bad block"
    LegendCurrent = 209,        ///< "Block being verified"
    BadBlockCondition = 210,    ///< "Bad Block"
    CheckBlockSize = 211,       ///< "Check Block Size"
    CheckBlock512 = 212,        ///< "512 bytes (1 sector)"
    CheckBlock64K = 213,        ///< "64 Kb (128 sectors)"
    CheckBlock256K = 214,       ///< "256 Kb (512 sectors)"
    FromSector = 215,           ///< "From sector"
    ToSector = 216,             ///< "To sector"
    ColourByReadTime = 217,     ///< "Colour by read time"
    BlockTooltipHead = 218,     ///< "Block %1 Size 31457280 bytes (30 Mb)"
    SectorsFromTo = 219,        ///< "Sectors from %1 to %2"
    SlowestRead = 220,          ///< "Slowest read: %1 ms (%2)"
    BlockTitle = 221,           ///< "Block %1"
    BlockSizeLine = 222,        ///< "%1 Size 31457280 bytes (30 Mb)"
    BlockLabel = 223,           ///< "Block:"
    SectorsLabel = 224,         ///< "Sectors:"
    ConditionLabel = 225,       ///< "Condition:"
    BadSectorsGroup = 226,      ///< "Bad Sectors"
    AllDisksFilter = 227,       ///< "All Disks"
    CurrentDiskFilter = 228,    ///< "Current Disk"
    AllLevels = 229,            ///< "All levels"
    SerialColumn = 230,         ///< "Serial number"
    LevelColumn = 231,          ///< "Level"
    ReadingEventLog = 232,      ///< "Reading the event log..."
    HistorySummary = 233,       ///< "%1 warning and alarm records, %2 temperature samples"
    EventLogUnreadable = 234,   ///< "The event log cannot be read: %1"
    GraphSettingsTitle = 235,   ///< "Graph Settings"
    DrawTemperatureLimits = 236,///< "Draw the warning (%1) and critical (%2) temperature lines"
    DiskWithSerial = 237,       ///< "Disk %1 (%2)"
    GraphSettingsButton = 238,  ///< "Graph Settings..."
    EntryCount = 239            ///< lines in each bundled file
};
} // namespace Lang

/// The user-interface texts of the chosen language, one process-wide table. It is replaced only on
/// the GUI thread (at start-up and when the user picks another language); readers index it by Lang::Entry.
class LanguageTable
{
public:
    /// A language file shorter than this is refused: the line count is the whole validity check.
    static constexpr int MinimumLines = 107;

    /// Language indexes as the settings hold them.
    enum Language : int { English = 0, Russian = 1, German = 2 };

    /// How the start-up language selection ended.
    enum class StartupResult {
        Loaded,        ///< the requested language is in use
        LoadedDefault, ///< it was not usable; English is in use (tell the user, go on)
        Failed         ///< nothing could be loaded (tell the user, stop)
    };

    /// Resource path of the file for a language index: 1 Russian, 2 German, anything else English.
    static QString resourcePath(int languageIndex);
    /// Loads the file for languageIndex into the table; false (table untouched) when it is missing or too short.
    static bool loadLanguage(int languageIndex);
    /// Loads any UTF-8 language file into the table, with the same rule as loadLanguage().
    static bool loadFile(const QString &path);
    /// Start-up selection: languageIndex, else English.
    static StartupResult loadAtStartup(int languageIndex);
    /// The message to show for a start-up result; empty for Loaded.
    static QString startupMessage(StartupResult result);

    /// The current table.
    static const QStringList &entries();
    /// One entry, or an empty string when the table has no such line.
    static QString text(int entry);
};

/// The process-wide table (LanguageTable::entries()).
const QStringList &languageTable();
/// LanguageTable::loadLanguage().
bool loadLanguage(int languageIndex);
/// LanguageTable::text().
QString languageText(int entry);
