#include "SettingsFile.h"

#include "device/LocalFile.h"
#include "device/TextLine.h"

#include <QDir>
#include <QFile>
#include <QSaveFile>

#include <limits>

#ifdef Q_OS_UNIX
#include <sys/stat.h>
#endif

namespace {

constexpr int AnyInt = std::numeric_limits<int>::max();
// Far more than any settings file needs; what lies beyond it is not read.
constexpr qsizetype kMaxFileSize = 1024 * 1024;

// One key of the file. Exactly one of the three fields is set; an integer is stored only inside
// [min, max], a bool only when the number is 0 or 1, a string only when it is not empty.
struct KeyRule
{
    const char *key;
    int AppSettings::*intField = nullptr;
    bool AppSettings::*boolField = nullptr;
    QString AppSettings::*textField = nullptr;
    int min = 0;
    int max = 0;
};

// The order matters: each key is cut out of the line before the next one is looked for, so a value
// holding a later key's text is read again by that key. The password is looked for twice.
const KeyRule keyRules[] = {
    {.key = "poll_time=", .intField = &AppSettings::poll_time, .min = 1, .max = AnyInt},
    {.key = "poll_period=", .intField = &AppSettings::poll_period, .min = 0, .max = 2},
    {.key = "time_check_space=", .intField = &AppSettings::time_check_space, .min = 1, .max = AnyInt},
    {.key = "period_check_space=", .intField = &AppSettings::period_check_space, .min = 0, .max = 2},
    {.key = "show_temp=", .boolField = &AppSettings::show_temp},
    {.key = "temp_celsius=", .intField = &AppSettings::temp_celsius, .min = 0, .max = 1},
    {.key = "disk_temp_show=", .intField = &AppSettings::disk_temp_show, .min = 0, .max = AnyInt},
    {.key = "StyleType=", .intField = &AppSettings::StyleType, .min = 0, .max = 9},
    {.key = "LanguageType=", .intField = &AppSettings::LanguageType, .min = 0, .max = 1},
    {.key = "startup=", .boolField = &AppSettings::startup},
    {.key = "color_N=", .intField = &AppSettings::color_N, .min = 0, .max = 16},
    {.key = "color_W=", .intField = &AppSettings::color_W, .min = 0, .max = 16},
    {.key = "color_C=", .intField = &AppSettings::color_C, .min = 0, .max = 16},
    // The temperature pair is checked as a pair once the whole file is read.
    {.key = "warn_temp=", .intField = &AppSettings::warn_temp, .min = std::numeric_limits<int>::min(), .max = AnyInt},
    {.key = "crit_temp=", .intField = &AppSettings::crit_temp, .min = std::numeric_limits<int>::min(), .max = AnyInt},
    {.key = "extWarnTask=", .textField = &AppSettings::extWarnTask},
    {.key = "extCritTask=", .textField = &AppSettings::extCritTask},
    {.key = "SMTP_pass=", .textField = &AppSettings::SMTP_pass},
    {.key = "SMTP_port=", .intField = &AppSettings::SMTP_port, .min = 1, .max = 49999},
    {.key = "SMTP_auth=", .boolField = &AppSettings::SMTP_auth},
    {.key = "pop_notif_enable=", .boolField = &AppSettings::pop_notif_enable},
    {.key = "eml_notif_enable=", .boolField = &AppSettings::eml_notif_enable},
    {.key = "SMTP_from=", .textField = &AppSettings::SMTP_from},
    {.key = "SMTP_to=", .textField = &AppSettings::SMTP_to},
    {.key = "SMTP_server=", .textField = &AppSettings::SMTP_server},
    {.key = "SMTP_user=", .textField = &AppSettings::SMTP_user},
    {.key = "SMTP_pass=", .textField = &AppSettings::SMTP_pass},
    // Added after the first release, hence last: a file without it reads as before.
    {.key = "SMTP_security=", .intField = &AppSettings::SMTP_security, .min = 0, .max = 2},
};

void store(const KeyRule &rule, const QString &value, AppSettings &settings)
{
    if (rule.textField) {
        if (!value.isEmpty())
            settings.*rule.textField = value;
        return;
    }
    const int number = value.toInt(); // not a number reads as 0
    if (rule.boolField) {
        if (number == 0 || number == 1)
            settings.*rule.boolField = number == 1;
    } else if (number >= rule.min && number <= rule.max) {
        settings.*rule.intField = number;
    }
}

// A line of the form disk[serial]=(monitored,unit). The brackets are stripped wherever they are,
// so a serial holding one of them does not survive a round trip; that is accepted.
void parseDiskLine(QString line, QList<DiskSettings> &diskSettings)
{
    if (!line.contains(QLatin1String("disk[")) || !line.contains(QLatin1String("]=("))
        || !line.contains(QLatin1Char(')')))
        return;
    line.remove(QLatin1String("disk["));
    line.remove(QLatin1Char(']'));
    line.remove(QLatin1Char('('));
    line.remove(QLatin1Char(')'));
    if (line.isEmpty())
        return;

    const qsizetype equals = line.indexOf(QLatin1Char('='));
    const QString serial = line.left(equals);
    const QString value = line.mid(equals + 1);
    if (serial.isEmpty() || value.isEmpty())
        return;

    const QStringList parts = value.split(QLatin1Char(','));
    DiskSettings entry;
    entry.serial = serial;
    if (parts.at(0).toInt() == 0)
        entry.monitored = false;
    if (parts.size() > 1 && parts.at(1).toInt() > 0)
        entry.attr9Unit = parts.at(1).toInt();
    diskSettings.append(entry);
}

void parseLine(QString line, AppSettings &settings, QList<DiskSettings> &diskSettings)
{
    line.remove(QLatin1Char('\r'));
    for (const KeyRule &rule : keyRules) {
        const QString key = QString::fromLatin1(rule.key);
        const qsizetype at = line.indexOf(key);
        if (at < 0)
            continue;
        // The key may sit anywhere in the line: the value is what follows it once every copy of
        // the key is cut out, and later keys see the shortened line.
        line.remove(key);
        store(rule, line.mid(at), settings);
    }
    parseDiskLine(line, diskSettings);
}

// A serial as its disk line holds it. The serial comes from the disk: a line break would start a
// line of its own, and since keys match anywhere in a line, a serial holding "extCritTask=" would
// set that key from inside its disk line. Every key ends in "=", and a serial's "=" would end the
// serial on reload anyway, so both become spaces.
QString serialInFile(const QString &serial)
{
    return TextLine::oneLine(serial).replace(QLatin1Char('='), QLatin1Char(' '));
}

// A pair that cannot work (warning not below critical, or either outside what a disk survives)
// falls back to the default pair rather than keeping half of it.
void checkTemperaturePair(AppSettings &settings)
{
    const int warn = settings.warn_temp;
    const int crit = settings.crit_temp;
    if (warn < 30 || warn > 80 || crit > 100 || crit <= warn || crit < 31) {
        settings.warn_temp = 55;
        settings.crit_temp = 70;
    }
}

} // namespace

void SettingsFile::parse(const QByteArray &content, AppSettings &settings, QList<DiskSettings> &diskSettings)
{
    diskSettings.clear();
    // Read back as Latin-1 whatever code page wrote it, so every byte maps to one character; as
    // with any 8-bit string, a NUL byte ends the line's text.
    for (const QByteArray &line : content.split('\n'))
        parseLine(QString::fromLatin1(line.left(qsizetype(qstrnlen(line.constData(), size_t(line.size()))))),
                  settings, diskSettings);
    checkTemperaturePair(settings);
}

bool SettingsFile::load(const QString &path, AppSettings &settings, QList<DiskSettings> &diskSettings,
                        QString *error)
{
    diskSettings.clear();
    const auto tell = [error](const QString &text) {
        if (error)
            *error = text;
    };
    tell(QString());
    const QString name = QDir::toNativeSeparators(path);
    // A FIFO would block the open and a device such as /dev/zero never ends.
    if (const QString what = LocalFile::notRegular(path); !what.isEmpty()) {
        tell(QStringLiteral("The settings file %1 was not read: it is %2").arg(name, what));
        return false;
    }
    QFile file(path);
    const auto cannotRead = [&] { return QStringLiteral("Cannot read the settings file %1: %2").arg(name, file.errorString()); };
    if (!file.open(QIODevice::ReadOnly)) {
        if (file.exists()) // a missing file just means the defaults
            tell(cannotRead());
        return false;
    }
    QByteArray content = file.read(kMaxFileSize + 1);
    if (file.error() != QFileDevice::NoError) {
        tell(cannotRead());
        return false;
    }
    if (content.size() > kMaxFileSize) {
        // The line the limit cuts through is dropped too: half a value is a wrong value.
        content.truncate(content.lastIndexOf('\n', kMaxFileSize - 1) + 1);
        tell(QStringLiteral("The settings file %1 is %2 bytes long; only its first 1 MB (%3 bytes) was read")
                 .arg(name)
                 .arg(file.size())
                 .arg(kMaxFileSize));
    }
    parse(content, settings, diskSettings);
    return true;
}

QByteArray SettingsFile::render(const AppSettings &s, const QList<DiskRecord> &disks)
{
    // Filled one value at a time on purpose: a value holding "%N" is substituted like the template.
    const QString text =
        QStringLiteral("poll_time=%1\r\npoll_period=%2\r\ntime_check_space=%3\r\nperiod_check_space=%4\r\n"
                       "show_temp=%5\r\ntemp_celsius=%6\r\ndisk_temp_show=%7\r\nStyleType=%8\r\n"
                       "LanguageType=%9\r\ncolor_N=%10\r\ncolor_W=%11\r\ncolor_C=%12\r\nSMTP_from=%13\r\n"
                       "SMTP_to=%14\r\nSMTP_server=%15\r\nSMTP_port=%16\r\nSMTP_user=%17\r\nSMTP_pass=%18\r\n"
                       "SMTP_auth=%19\r\npop_notif_enable=%20\r\neml_notif_enable=%21\r\nstartup=%22\r\n"
                       "warn_temp=%23\r\ncrit_temp=%24\r\nextWarnTask=%25\r\nextCritTask=%26\r\n")
            .arg(s.poll_time)
            .arg(s.poll_period)
            .arg(s.time_check_space)
            .arg(s.period_check_space)
            .arg(int(s.show_temp))
            .arg(s.temp_celsius)
            .arg(s.disk_temp_show)
            .arg(s.StyleType)
            .arg(s.LanguageType)
            .arg(s.color_N)
            .arg(s.color_W)
            .arg(s.color_C)
            .arg(s.SMTP_from)
            .arg(s.SMTP_to)
            .arg(s.SMTP_server)
            .arg(s.SMTP_port)
            .arg(s.SMTP_user)
            .arg(s.SMTP_pass)
            .arg(int(s.SMTP_auth))
            .arg(int(s.pop_notif_enable))
            .arg(int(s.eml_notif_enable))
            .arg(int(s.startup))
            .arg(s.warn_temp)
            .arg(s.crit_temp)
            .arg(s.extWarnTask)
            .arg(s.extCritTask);
    QByteArray content = text.toLocal8Bit();
    // Outside the template, so that a "%N" left in the last value is not filled with it.
    content += "SMTP_security=" + QByteArray::number(s.SMTP_security) + "\r\n";

    // Only the disks present now are remembered; entries of absent disks are dropped.
    for (const DiskRecord &disk : disks)
        content += QStringLiteral("disk[%1]=(%2,%3)\r\n")
                       .arg(serialInFile(disk.serial), QString::number(int(disk.monitored)),
                            QString::number(disk.powerOnUnit))
                       .toLocal8Bit();
    return content;
}

bool SettingsFile::save(const QString &path, const AppSettings &settings, const QList<DiskRecord> &disks)
{
    // Always a new file renamed over the old one, never a rewrite in place: a crash or a full disk
    // during the write must leave the old settings whole.
    QSaveFile file(path);
    if (!file.open(QIODevice::WriteOnly))
        return false;
#ifdef Q_OS_UNIX
    // The file holds the SMTP password in clear text.
    ::fchmod(file.handle(), S_IRUSR | S_IWUSR);
#endif
    const QByteArray content = render(settings, disks);
    if (file.write(content) != content.size()) {
        file.cancelWriting();
        file.commit();
        return false;
    }
    return file.commit();
}

QList<QPair<QString, QString>> SettingsFile::fieldValues(const AppSettings &settings)
{
    // The password is looked for twice by the loader; it is listed once.
    QList<QPair<QString, QString>> values;
    QStringList seen;
    for (const KeyRule &rule : keyRules) {
        QString key = QString::fromLatin1(rule.key);
        key.chop(1);
        if (seen.contains(key))
            continue;
        seen << key;
        QString value;
        if (rule.textField)
            value = settings.*rule.textField;
        else if (rule.boolField)
            value = QString::number(int(settings.*rule.boolField));
        else
            value = QString::number(settings.*rule.intField);
        values.append({key, value});
    }
    return values;
}

QStringList SettingsFile::keyTexts()
{
    QStringList keys;
    for (const auto &field : fieldValues(AppSettings()))
        keys << field.first + QLatin1Char('=');
    return keys << QStringLiteral("disk[");
}

void SettingsFile::applyDiskSettings(const QList<DiskSettings> &diskSettings, DiskRecord &disk)
{
    // Entries hold serials as render() wrote them.
    const QString serial = serialInFile(disk.serial);
    for (const DiskSettings &entry : diskSettings) {
        if (entry.serial != serial)
            continue;
        disk.monitored = entry.monitored;
        // Never give a unit to a disk whose attribute 9 has none.
        if (entry.attr9Unit >= 1 && disk.powerOnUnit >= 1)
            disk.powerOnUnit = entry.attr9Unit;
        return;
    }
}
