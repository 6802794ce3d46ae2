#include "CtlOptions.h"

#include "device/UserPath.h"

#include <limits>
#include <tuple>
#include <utility>

namespace {

// The poll timer counts milliseconds in an int; a longer interval would wrap
// and the timer would never fire.
constexpr int kMaxIntervalSeconds = std::numeric_limits<int>::max() / 1000;

const QStringList kCommands = {QStringLiteral("info"), QStringLiteral("monitor"), QStringLiteral("scan"),
                               QStringLiteral("history")};
const QStringList kFormats = {QStringLiteral("text"), QStringLiteral("json"), QStringLiteral("smartinfo")};

bool takesValue(const QString &option)
{
    return option == QLatin1String("--simulate") || option == QLatin1String("--interval")
        || option == QLatin1String("--home") || option == QLatin1String("--format")
        || option == QLatin1String("--output") || option == QLatin1String("--from")
        || option == QLatin1String("--to") || option == QLatin1String("--block-size")
        || option == QLatin1String("--disk");
}

bool isPath(const QString &option)
{
    return option == QLatin1String("--simulate") || option == QLatin1String("--home")
        || option == QLatin1String("--output");
}

} // namespace

QString CtlOptions::usage()
{
    return QStringLiteral(
        "usage: korvanectl COMMAND [OPTIONS]\n"
        "\n"
        "commands:\n"
        "  info        find the disks, read their SMART data once and report them\n"
        "  monitor     watch the disks: evaluate their health at every poll, print\n"
        "              each event and append to the event log, until interrupted\n"
        "  scan DISK   read-verify the surface of DISK (an index or serial from the\n"
        "              disk list, a device path, or any block device or image file)\n"
        "              and report every range that cannot be read; never writes.\n"
        "              Exit: 0 no bad range, 1 bad ranges found, 2 not scanned,\n"
        "              130 stopped (Ctrl+C)\n"
        "  history     print the warning and alarm records and the temperature\n"
        "              samples of the event log (the whole file, or --from/--to)\n"
        "\n"
        "options:\n"
        "  --json            print JSON instead of text (monitor: one object per poll;\n"
        "                    scan: one object at the end)\n"
        "  --format FORMAT   info: text, json, or smartinfo (the \"Save SMART info\"\n"
        "                    report of the desktop program)\n"
        "  --output FILE     info: write the report to FILE (whole or not at all)\n"
        "  --once            monitor: evaluate once and exit\n"
        "  --interval SECONDS  monitor: poll interval (default: from the settings)\n"
        "  --from SECTOR     scan: first sector (default 0)\n"
        "  --to SECTOR       scan: last sector (default the disk's last)\n"
        "  --block-size BYTES  scan: largest single read: 512, 65536 (default) or 262144\n"
        "  --home DIR        monitor, history: folder of Korvane.ini and KV_f.log\n"
        "                    (default: as the desktop program, or KORVANE_HOME)\n"
        "  --from DATE       history: first day, as yyyy-MM-dd\n"
        "  --to DATE         history: last day, as yyyy-MM-dd\n"
        "  --disk N|SERIAL   history: the rows of one disk, by index or serial\n"
        "  --simulate PATH   use simulated disks from a file or folder (repeatable);\n"
        "                    KORVANE_SIMULATE=path[:path...] does the same\n"
        "  -h, --help        show this text\n"
        "  --version         show the version\n");
}

namespace {

// One argument with its value, if it takes one.
struct Argument
{
    QString name;
    QString value;
};

// Reads the argument at \a i (and its value, moving \a i past it); nothing, with the reason in
// \a error, when the value is missing, unwanted or names no file.
std::optional<Argument> readArgument(const QList<QByteArray> &arguments, int &i, QString *error)
{
    QByteArray raw = arguments.at(i);
    QByteArray rawValue;
    const bool inlineValue = raw.startsWith("--") && raw.contains('=');
    if (inlineValue) {
        rawValue = raw.mid(raw.indexOf('=') + 1);
        raw = raw.left(raw.indexOf('='));
    }
    Argument argument{QString::fromLocal8Bit(raw), QString()};
    if (takesValue(argument.name) && !inlineValue) {
        if (i + 1 >= arguments.size()) {
            *error = QStringLiteral("%1 needs a value").arg(argument.name);
            return std::nullopt;
        }
        rawValue = arguments.at(++i);
    } else if (inlineValue && !takesValue(argument.name)) {
        *error = QStringLiteral("%1 takes no value").arg(argument.name);
        return std::nullopt;
    }
    argument.value = QString::fromLocal8Bit(rawValue);
    // A path in another encoding than UTF-8 still names the user's file.
    if (!rawValue.isEmpty() && isPath(argument.name)) {
        QString why;
        argument.value = UserPath::fromLocalBytes(rawValue, argument.name == QLatin1String("--home"), &why);
        if (argument.value.isEmpty()) {
            *error = QStringLiteral("%1 %2").arg(argument.name, why);
            return std::nullopt;
        }
    }
    return argument;
}

// What the arguments said that only the command tells how to read, or that must be told apart
// from what the command fills in by itself.
struct Given
{
    QString format; ///< as --format gave it
    QString from;   ///< --from as typed: a sector for scan, a day for history
    QString to;     ///< --to as typed
    bool disk = false; ///< --disk was given
};

// --from and --to of history: days.
QString readDays(CtlOptions &options, const Given &given)
{
    for (const auto &[text, day, name] : {std::tuple{given.from, &options.from, "--from"},
                                          std::tuple{given.to, &options.to, "--to"}}) {
        if (text.isNull())
            continue;
        *day = QDate::fromString(text, QStringLiteral("yyyy-MM-dd"));
        if (!day->isValid())
            return QStringLiteral("%1 needs a date as yyyy-MM-dd; got \"%2\"").arg(QLatin1String(name), text);
    }
    if (options.from.isValid() && options.to.isValid() && options.from > options.to)
        return QStringLiteral("--from %1 is after --to %2")
            .arg(options.from.toString(Qt::ISODate), options.to.toString(Qt::ISODate));
    return QString();
}

// --from and --to of scan: sectors.
QString readSectors(CtlOptions &options, const Given &given)
{
    for (const auto &[text, sector, name] : {std::tuple{given.from, &options.fromSector, "--from"},
                                             std::tuple{given.to, &options.toSector, "--to"}}) {
        if (text.isNull())
            continue;
        bool ok = false;
        *sector = text.toLongLong(&ok);
        if (!ok || *sector < 0)
            return QStringLiteral("%1 needs a sector number from 0 on; got \"%2\"").arg(QLatin1String(name), text);
    }
    return QString();
}

// Records an option that takes a value; the reason when the value will not do.
QString takeValue(CtlOptions &options, Given &given, const Argument &a)
{
    if (a.name == QLatin1String("--format")) {
        if (!kFormats.contains(a.value))
            return QStringLiteral("--format is one of %1; got \"%2\"").arg(kFormats.join(QStringLiteral(", ")), a.value);
        given.format = a.value;
    } else if (a.name == QLatin1String("--interval")) {
        bool ok = false;
        options.intervalSeconds = a.value.toInt(&ok);
        if (!ok || options.intervalSeconds < 1 || options.intervalSeconds > kMaxIntervalSeconds)
            return QStringLiteral("--interval needs a whole number of seconds from 1 to %1; got \"%2\"")
                .arg(kMaxIntervalSeconds)
                .arg(a.value);
    } else if (a.name == QLatin1String("--from") || a.name == QLatin1String("--to")) {
        (a.name == QLatin1String("--from") ? given.from : given.to) = a.value;
    } else if (a.name == QLatin1String("--block-size")) {
        bool ok = false;
        const uint bytes = a.value.toUInt(&ok);
        if (!ok || (bytes != 512 && bytes != 65536 && bytes != 262144))
            return QStringLiteral("--block-size is 512, 65536 or 262144; got \"%1\"").arg(a.value);
        options.blockSize = bytes;
    } else if (a.value.isEmpty()) {
        // An empty folder would quietly fall back to the default one, and so on.
        const char *what = a.name == QLatin1String("--home") ? "a folder" : a.name == QLatin1String("--output") ? "a file" : "a path";
        return QStringLiteral("%1 needs %2").arg(a.name, QLatin1String(what));
    } else if (a.name == QLatin1String("--home")) {
        options.home = a.value;
    } else if (a.name == QLatin1String("--output")) {
        options.output = a.value;
    } else if (a.name == QLatin1String("--disk")) {
        options.disk = a.value;
        given.disk = true;
    } else {
        options.simulate << a.value;
    }
    return QString();
}

// Records one argument; the reason when it does not belong.
QString take(CtlOptions &options, Given &given, const Argument &a)
{
    if (takesValue(a.name))
        return takeValue(options, given, a);
    if (a.name == QLatin1String("--json"))
        options.json = true;
    else if (a.name == QLatin1String("--once"))
        options.once = true;
    else if (a.name.startsWith(QLatin1Char('-')))
        return QStringLiteral("unknown option %1").arg(a.name);
    else if (!options.command.isEmpty())
        return QStringLiteral("unexpected argument \"%1\"").arg(a.name);
    else if (!kCommands.contains(a.name))
        return QStringLiteral("unknown command \"%1\"").arg(a.name);
    else
        options.command = a.name;
    return QString();
}

// The scan's own options, and its disk.
QString checkScan(const CtlOptions &options)
{
    const std::pair<bool, const char *> scanOnly[] = {{options.blockSize != 65536, "--block-size"}};
    const bool scan = options.command == QLatin1String("scan");
    for (const auto &[isGiven, name] : scanOnly) {
        if (isGiven && !scan)
            return QStringLiteral("%1 is an option of scan, not of %2").arg(QLatin1String(name), options.command);
    }
    if (scan && options.disk.isEmpty())
        return QStringLiteral("scan needs a DISK: an index or serial from the disk list, a device path, or a file");
    if (scan && options.fromSector >= 0 && options.toSector >= 0 && options.fromSector > options.toSector)
        return QStringLiteral("--from %1 lies after --to %2").arg(options.fromSector).arg(options.toSector);
    return QString();
}

// Options given to a command that does not read them would be dropped without a word.
QString checkCombination(CtlOptions &options, const Given &given)
{
    const QString &format = given.format;
    if (options.command.isEmpty())
        return QStringLiteral("no command given");
    if (options.json && !format.isEmpty() && format != QLatin1String("json"))
        return QStringLiteral("--json and --format %1 ask for two formats").arg(format);
    options.format = options.json ? QStringLiteral("json") : format.isEmpty() ? QStringLiteral("text") : format;
    const std::pair<bool, const char *> infoOnly[] = {{!format.isEmpty(), "--format"},
                                                      {!options.output.isEmpty(), "--output"}};
    const std::pair<bool, const char *> monitorOnly[] = {{options.once, "--once"},
                                                         {options.intervalSeconds > 0, "--interval"}};
    const std::pair<bool, const char *> historyOnly[] = {{given.disk, "--disk"}};
    for (const auto &[isGiven, name] : infoOnly) {
        if (isGiven && options.command != QLatin1String("info"))
            return QStringLiteral("%1 is an option of info, not of %2").arg(QLatin1String(name), options.command);
    }
    for (const auto &[isGiven, name] : monitorOnly) {
        if (isGiven && options.command != QLatin1String("monitor"))
            return QStringLiteral("%1 is an option of monitor, not of %2").arg(QLatin1String(name), options.command);
    }
    for (const auto &[isGiven, name] : historyOnly) {
        if (isGiven && options.command != QLatin1String("history"))
            return QStringLiteral("%1 is an option of history, not of %2").arg(QLatin1String(name), options.command);
    }
    if (!options.home.isEmpty() && options.command != QLatin1String("monitor")
        && options.command != QLatin1String("history"))
        return QStringLiteral("--home is an option of monitor and history, not of %1").arg(options.command);
    const bool history = options.command == QLatin1String("history");
    if (history || options.command == QLatin1String("scan")) {
        if (const QString error = history ? readDays(options, given) : readSectors(options, given); !error.isEmpty())
            return error;
    } else if (!given.from.isNull() || !given.to.isNull()) {
        return QStringLiteral("%1 is an option of scan and history, not of %2")
            .arg(QLatin1String(given.from.isNull() ? "--to" : "--from"), options.command);
    }
    return checkScan(options);
}

} // namespace

std::optional<CtlOptions> CtlOptions::parse(const QList<QByteArray> &arguments, QString *error)
{
    CtlOptions options;
    Given given;
    for (int i = 0; i < arguments.size(); ++i) {
        const std::optional<Argument> argument = readArgument(arguments, i, error);
        if (!argument)
            return std::nullopt;
        // Help and version stand on their own, whatever else is there.
        if (argument->name == QLatin1String("-h") || argument->name == QLatin1String("--help")
            || argument->name == QLatin1String("--version")) {
            options.command = argument->name == QLatin1String("--version") ? QStringLiteral("version") : QStringLiteral("help");
            return options;
        }
        // The disk of a scan may be a file's path: named whatever its encoding.
        if (options.command == QLatin1String("scan") && options.disk.isEmpty() && !argument->name.startsWith(QLatin1Char('-'))) {
            const QString path = UserPath::fromLocalBytes(arguments.at(i), false, nullptr);
            options.disk = path.isEmpty() ? argument->name : path;
            continue;
        }
        *error = take(options, given, *argument);
        if (!error->isEmpty())
            return std::nullopt;
    }
    *error = checkCombination(options, given);
    if (!error->isEmpty())
        return std::nullopt;
    return options;
}
