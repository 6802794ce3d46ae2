#include "GeneratedLog.h"

#include "device/DiskRecord.h"
#include "health/EventLogRecord.h"

#include <QFile>

#include <cmath>

namespace GeneratedLog {

namespace {

DiskRecord disk(int index, int attributes)
{
    DiskRecord record;
    record.serial = serial(index);
    for (int a = 0; a < attributes; ++a) {
        SmartAttribute attribute;
        attribute.current = a % 3 == 0 ? 200 : a % 3 == 1 ? 100 : 253;
        record.attributes.append(attribute);
    }
    return record;
}

// The same small noise for the same moment and disk, whatever the run.
int noise(qint64 seconds, int disk)
{
    quint64 x = quint64(seconds) * 2654435761ULL + quint64(disk) * 40503ULL;
    x ^= x >> 13;
    x *= 0x5bd1e995ULL;
    return int((x >> 20) % 3) - 1;
}

void describe(DiskRecord &record, int index, const QDateTime &when, qint64 secondsIn, qint64 secondsTotal)
{
    const double hour = when.time().hour() + when.time().minute() / 60.0;
    record.temperature = 30 + 4 * index + int(std::lround(6 * std::sin((hour - 9) * M_PI / 12)))
        + noise(when.toSecsSinceEpoch(), index);
    record.healthState = 1;
    record.healthValue = 100;
    if (index == 1 && secondsIn * 100 > secondsTotal * 85) {
        record.healthState = 2;
        record.healthValue = 87;
    }
    if (index == 2 && when.date().dayOfYear() % 45 == 0 && when.time().hour() == 13) {
        record.healthState = 3;
        record.healthValue = 12;
        record.temperature += 20;
    }
}

} // namespace

QString serial(int disk)
{
    return QStringLiteral("KV%1SIM").arg(disk * 7919 + 10007, 8, 10, QLatin1Char('0'));
}

bool write(const QString &path, const Options &options, QString *error)
{
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly | QIODevice::Truncate)) {
        if (error)
            *error = file.errorString();
        return false;
    }
    QList<DiskRecord> disks;
    for (int d = 0; d < options.disks; ++d)
        disks.append(disk(d, options.attributes));
    const QDateTime first(options.from, QTime(0, 0));
    const QDateTime last(options.to, QTime(23, 59, 59));
    const qint64 total = qMax<qint64>(1, first.secsTo(last));
    QByteArray out;
    bool ok = true;
    QDate sessionDay;
    for (QDateTime when = first; when <= last && ok; when = when.addSecs(options.pollSeconds)) {
        if (when.date() != sessionDay) {
            // Every fifth day the session was cut off by a crash: no "Session finished".
            if (sessionDay.isValid() && sessionDay.day() % 5 != 0)
                out += EventLogRecord{when.addSecs(-1), EventLogRecord::sessionFinishedBody()}.toLine().toUtf8();
            sessionDay = when.date();
            out += EventLogRecord{when, EventLogRecord::sessionStartedBody()}.toLine().toUtf8();
        }
        const qint64 in = first.secsTo(when);
        for (int d = 0; d < disks.size(); ++d) {
            describe(disks[d], d, when, in, total);
            out += EventLogRecord{when, EventLogRecord::smartBody(d, disks.at(d))}.toLine().toUtf8();
        }
        if (out.size() > (4 << 20)) {
            ok = file.write(out) == out.size();
            out.clear();
        }
    }
    ok = ok && file.write(out) == out.size() && file.flush();
    if (!ok && error)
        *error = file.errorString();
    return ok;
}

} // namespace GeneratedLog
