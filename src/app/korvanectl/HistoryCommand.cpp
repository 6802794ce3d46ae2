#include "HistoryCommand.h"

#include "ConsoleOutput.h"

#include "settings/SettingsStore.h"
#include "stats/LogHistory.h"
#include "stats/LogScanner.h"

#include <QDateTime>
#include <QFileInfo>
#include <QTextStream>

#include <atomic>

namespace HistoryCommand {

namespace {

// Years a stamp's four digits can give: "the whole file" is every record with a date.
const QDate kEarliest(-999, 1, 1);
const QDate kLatest(9999, 12, 31);

// Which rows the user asked for: a disk by its index or by its serial.
struct DiskChoice
{
    QString text;
    bool isIndex = false;
    int index = -1;

    bool matches(const QString &disk, const QString &serial) const
    {
        return text.isEmpty() || serial == text || (isIndex && disk.toInt() == index && !disk.trimmed().isEmpty());
    }
};

QString jsonString(const QString &text)
{
    QString out;
    out.reserve(text.size() + 2);
    out += QLatin1Char('"');
    for (const QChar c : text) {
        if (c == QLatin1Char('"') || c == QLatin1Char('\\'))
            out += QLatin1Char('\\');
        if (c.unicode() < 0x20)
            out += QStringLiteral("\\u%1").arg(c.unicode(), 4, 16, QLatin1Char('0'));
        else
            out += c;
    }
    out += QLatin1Char('"');
    return out;
}

QString jsonRow(const QStringList &fields)
{
    QStringList quoted;
    for (const QString &field : fields)
        quoted << jsonString(field);
    return QLatin1Char('[') + quoted.join(QLatin1Char(',')) + QLatin1Char(']');
}

// A stamp as people read it; a damaged one as the file has it.
QString readableStamp(const QString &stamp)
{
    const QDateTime when = LogHistory::stampTime(stamp);
    return when.isValid() ? when.toString(QStringLiteral("yyyy-MM-dd hh:mm:ss")) : stamp;
}

QString eventLine(const QStringList &f)
{
    const int level = f.value(4).toInt();
    const QString levelText = level == 3 ? QStringLiteral("ALARM") : level == 2 ? QStringLiteral("WARNING") : f.value(4);
    return QStringLiteral("%1  disk %2  %3  %4  health %5  %6 \u00b0C")
        .arg(readableStamp(f.value(0)), f.value(2), f.value(3), levelText, f.value(5),
             f.value(6).split(QStringLiteral("~;")).value(0).trimmed());
}

QString temperatureLine(const QStringList &row)
{
    return QStringLiteral("%1  disk %2  %3  %4 \u00b0C").arg(readableStamp(row.value(0)), row.value(1), row.value(3),
                                                             row.value(2).trimmed());
}

// Prints the rows chosen, a megabyte at a time; false once nobody reads the output.
bool print(const LogHistory &history, const DiskChoice &disk, bool json)
{
    ConsoleOutput out;
    QString text;
    const auto flush = [&](bool always) {
        if (!always && text.size() < (1 << 20))
            return true;
        const bool ok = out.write(text.toUtf8());
        text.clear();
        return ok;
    };
    // One section: the rows of the disk asked among the \a count that \a row gives.
    const auto section = [&](qsizetype count, const auto &row, int diskField, const auto &line) {
        bool first = true;
        for (qsizetype i = 0; i < count; ++i) {
            const QStringList fields = row(i);
            if (!disk.matches(fields.value(diskField), fields.value(3)))
                continue;
            text += json ? (first ? QString() : QStringLiteral(",")) + QStringLiteral("\n  ") + jsonRow(fields)
                         : line(fields) + QLatin1Char('\n');
            first = false;
            if (!flush(false))
                return false;
        }
        return true;
    };
    text += json ? QStringLiteral("{\"events\": [") : QStringLiteral("Warning and alarm records:\n");
    if (!section(history.eventCount(), [&](qsizetype i) { return history.eventFields(i); }, 2, eventLine))
        return false;
    text += json ? QStringLiteral("\n], \"temperatures\": [") : QStringLiteral("Temperature samples:\n");
    if (!section(history.temperatureCount(), [&](qsizetype i) { return history.temperatureRow(i); }, 1, temperatureLine))
        return false;
    if (json)
        text += QStringLiteral("\n]}\n");
    return flush(true);
}

} // namespace

int run(const CtlOptions &options)
{
    QTextStream err(stderr);
    SettingsStore &store = SettingsStore::instance();
    QString error;
    // Reading history makes no folder: a home that is not there holds no log.
    if (!options.home.isEmpty() && !QFileInfo(options.home).isDir()) {
        err << "korvanectl: --home " << options.home << " is not a folder\n";
        return 2;
    }
    const bool home = options.home.isEmpty() ? store.useHomeFromEnvironment(&error) : store.setHomeFolder(options.home, &error);
    if (!home) {
        err << "korvanectl: " << error << '\n';
        return 2;
    }
    LogScanner scanner(store.eventLogPath(), options.from.isValid() ? options.from : kEarliest,
                       options.to.isValid() ? options.to : kLatest);
    LogHistory history;
    const std::atomic<bool> stop{false};
    if (!scanner.run(stop, [&history](LogBatch &&batch) { history.append(batch); })) {
        err << "korvanectl: cannot read the event log " << scanner.error() << '\n';
        return 1;
    }
    bool isIndex = false;
    const int index = options.disk.toInt(&isIndex);
    print(history, {options.disk, isIndex, index}, options.json);
    return 0;
}

} // namespace HistoryCommand
