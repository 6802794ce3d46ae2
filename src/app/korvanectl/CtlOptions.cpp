#include "CtlOptions.h"

#include "device/UserPath.h"

#include <limits>
#include <utility>

namespace {

// The poll timer counts milliseconds in an int; a longer interval would wrap
// and the timer would never fire.
constexpr int kMaxIntervalSeconds = std::numeric_limits<int>::max() / 1000;

const QStringList kCommands = {QStringLiteral("info"), QStringLiteral("monitor")};
const QStringList kFormats = {QStringLiteral("text"), QStringLiteral("json"), QStringLiteral("smartinfo")};

bool takesValue(const QString &option)
{
    return option == QLatin1String("--simulate") || option == QLatin1String("--interval")
        || option == QLatin1String("--home") || option == QLatin1String("--format")
        || option == QLatin1String("--output");
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
        "\n"
        "options:\n"
        "  --json            print JSON instead of text (monitor: one object per poll)\n"
        "  --format FORMAT   info: text, json, or smartinfo (the \"Save SMART info\"\n"
        "                    report of the desktop program)\n"
        "  --output FILE     info: write the report to FILE (whole or not at all)\n"
        "  --once            monitor: evaluate once and exit\n"
        "  --interval SECONDS  monitor: poll interval (default: from the settings)\n"
        "  --home DIR        monitor: folder of Korvane.ini and KV_f.log\n"
        "                    (default: as the desktop program, or KORVANE_HOME)\n"
        "  --simulate PATH   use simulated disks from a file or folder (repeatable);\n"
        "                    KORVANE_SIMULATE=path[:path...] does the same\n"
        "  -h, --help        show this text\n"
        "  --version         show the version\n");
}

std::optional<CtlOptions> CtlOptions::parse(const QList<QByteArray> &arguments, QString *error)
{
    CtlOptions options;
    QString format; // as --format gave it
    auto fail = [error](const QString &why) -> std::optional<CtlOptions> {
        *error = why;
        return std::nullopt;
    };

    for (int i = 0; i < arguments.size(); ++i) {
        QByteArray raw = arguments.at(i);
        QByteArray rawValue;
        bool hasInlineValue = false;
        if (raw.startsWith("--") && raw.contains('=')) {
            const qsizetype equals = raw.indexOf('=');
            rawValue = raw.mid(equals + 1);
            raw = raw.left(equals);
            hasInlineValue = true;
        }
        const QString arg = QString::fromLocal8Bit(raw);
        if (takesValue(arg) && !hasInlineValue) {
            if (i + 1 >= arguments.size())
                return fail(QStringLiteral("%1 needs a value").arg(arg));
            rawValue = arguments.at(++i);
        } else if (hasInlineValue && !takesValue(arg)) {
            return fail(QStringLiteral("%1 takes no value").arg(arg));
        }
        QString value = QString::fromLocal8Bit(rawValue);
        // A path in another encoding than UTF-8 still names the user's file.
        if (!rawValue.isEmpty() && isPath(arg)) {
            QString why;
            value = UserPath::fromLocalBytes(rawValue, arg == QLatin1String("--home"), &why);
            if (value.isEmpty())
                return fail(QStringLiteral("%1 %2").arg(arg, why));
        }

        if (arg == QLatin1String("--json")) {
            options.json = true;
        } else if (arg == QLatin1String("--format")) {
            if (!kFormats.contains(value))
                return fail(QStringLiteral("--format is one of %1; got \"%2\"").arg(kFormats.join(QStringLiteral(", ")), value));
            format = value;
        } else if (arg == QLatin1String("--output")) {
            if (value.isEmpty())
                return fail(QStringLiteral("--output needs a file"));
            options.output = value;
        } else if (arg == QLatin1String("--simulate")) {
            if (value.isEmpty())
                return fail(QStringLiteral("--simulate needs a path"));
            options.simulate << value;
        } else if (arg == QLatin1String("--once")) {
            options.once = true;
        } else if (arg == QLatin1String("--interval")) {
            bool ok = false;
            options.intervalSeconds = value.toInt(&ok);
            if (!ok || options.intervalSeconds < 1 || options.intervalSeconds > kMaxIntervalSeconds)
                return fail(QStringLiteral("--interval needs a whole number of seconds from 1 to %1; got \"%2\"")
                                .arg(kMaxIntervalSeconds)
                                .arg(value));
        } else if (arg == QLatin1String("--home")) {
            // An empty folder would quietly fall back to the default one.
            if (value.isEmpty())
                return fail(QStringLiteral("--home needs a folder"));
            options.home = value;
        } else if (arg == QLatin1String("-h") || arg == QLatin1String("--help")) {
            options.command = QStringLiteral("help");
            return options;
        } else if (arg == QLatin1String("--version")) {
            options.command = QStringLiteral("version");
            return options;
        } else if (arg.startsWith(QLatin1Char('-'))) {
            return fail(QStringLiteral("unknown option %1").arg(arg));
        } else if (options.command.isEmpty()) {
            if (!kCommands.contains(arg))
                return fail(QStringLiteral("unknown command \"%1\"").arg(arg));
            options.command = arg;
        } else {
            return fail(QStringLiteral("unexpected argument \"%1\"").arg(arg));
        }
    }
    if (options.command.isEmpty())
        return fail(QStringLiteral("no command given"));
    if (options.json && !format.isEmpty() && format != QLatin1String("json"))
        return fail(QStringLiteral("--json and --format %1 ask for two formats").arg(format));
    options.format = options.json ? QStringLiteral("json") : format.isEmpty() ? QStringLiteral("text") : format;
    if (options.command != QLatin1String("info")) {
        for (const auto &[given, name] : {std::pair{!format.isEmpty(), "--format"},
                                          std::pair{!options.output.isEmpty(), "--output"}}) {
            if (given)
                return fail(QStringLiteral("%1 is an option of info, not of %2").arg(QLatin1String(name), options.command));
        }
    }
    // Options that only the monitor reads would otherwise be dropped without a word.
    if (options.command != QLatin1String("monitor")) {
        for (const auto &[given, name] : {std::pair{options.once, "--once"},
                                          std::pair{options.intervalSeconds > 0, "--interval"},
                                          std::pair{!options.home.isEmpty(), "--home"}}) {
            if (given)
                return fail(QStringLiteral("%1 is an option of monitor, not of %2").arg(QLatin1String(name), options.command));
        }
    }
    return options;
}
