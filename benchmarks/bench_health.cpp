// Runs the health evaluation over a large simulated machine and reports the time per
// evaluation and the resident memory before and after. Resident memory must not grow
// with the number of evaluations: the evaluator keeps only the previous level.
//
//   bench_health [evaluations] [--with-records]
//
// --with-records also builds the event log records and snapshots each time (no file is
// written).

#include "device/DiskRecord.h"
#include "health/EventLogWriter.h"
#include "health/HealthEvaluator.h"
#include "settings/AppSettings.h"
#include "settings/LanguageTable.h"

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QFile>

#include <algorithm>
#include <cstdio>

namespace {

constexpr int kDisks = 26;
constexpr int kAttributes = 30;
// Growth above this after the warm-up counts as a leak rather than allocator noise.
constexpr qint64 kAllowedGrowthKiB = 1024;

qint64 residentKiB()
{
    QFile status(QStringLiteral("/proc/self/status"));
    if (!status.open(QIODevice::ReadOnly))
        return -1;
    for (const QByteArray &line : status.readAll().split('\n')) {
        if (line.startsWith("VmRSS:"))
            return line.mid(6).trimmed().split(' ').value(0).toLongLong();
    }
    return -1;
}

QList<DiskRecord> simulatedDisks()
{
    QList<DiskRecord> disks;
    for (int d = 0; d < kDisks; ++d) {
        DiskRecord disk;
        disk.model = QStringLiteral("SIM DISK %1").arg(d);
        disk.serial = QStringLiteral("SIM%1").arg(d, 6, 10, QLatin1Char('0'));
        disk.smartState = 1;
        disk.hasTemperature = true;
        for (int a = 0; a < kAttributes; ++a) {
            SmartAttribute attr;
            attr.id = a == 0 ? 194 : a == 1 ? 9 : quint32(a + 1);
            attr.name = QStringLiteral("Attribute_%1").arg(attr.id);
            attr.current = 100;
            attr.threshold = a % 3 == 0 ? 0 : 30;
            attr.raw = a == 0 ? 35 : 1000 + a;
            attr.performance = a % 7 == 6 ? 1 : 0;
            disk.attributes.append(attr);
        }
        disks.append(disk);
    }
    return disks;
}

// Moves the values a little each poll so that levels, texts and alerts keep changing.
void advance(QList<DiskRecord> &disks, int poll)
{
    for (int d = 0; d < disks.size(); ++d) {
        QList<SmartAttribute> &attrs = disks[d].attributes;
        attrs[0].raw = 30 + (poll + d) % 45;
        attrs[1].raw += 1;
        const int k = 2 + (poll + d) % (kAttributes - 2);
        attrs[k].current = quint32((poll * 7 + d * 13) % 254);
    }
}

} // namespace

int main(int argc, char **argv)
{
    QCoreApplication app(argc, argv);
    const QStringList args = app.arguments().mid(1);
    const bool withRecords = args.contains(QStringLiteral("--with-records"));
    int evaluations = 100000;
    for (const QString &a : args) {
        bool ok = false;
        const int n = a.toInt(&ok);
        if (ok && n > 0)
            evaluations = n;
    }

    QStringList lang;
    for (int i = 0; i < Lang::EntryCount; ++i)
        lang.append(QString());
    lang[Lang::UnitCelsius] = QStringLiteral("°C");
    lang[Lang::UnitFahrenheit] = QStringLiteral("°F");
    lang[Lang::Title] = QStringLiteral("Korvane");

    AppSettings settings;
    settings.eml_notif_enable = true;
    settings.SMTP_from = QStringLiteral("a@example.org");
    settings.SMTP_to = QStringLiteral("b@example.org");
    settings.SMTP_server = QStringLiteral("smtp.example.org");
    settings.extWarnTask = QStringLiteral("/usr/bin/true");
    settings.extCritTask = QStringLiteral("/usr/bin/true");

    QList<DiskRecord> disks = simulatedDisks();
    HealthEvaluator evaluator;
    EventLogWriter records; // no path: records are built, nothing is written
    const qint64 rssStart = residentKiB();

    // Warm-up: the first evaluations size the strings and lists that are reused later.
    const int warmUp = std::min(1000, evaluations);
    qint64 checksum = 0;
    for (int i = 0; i < warmUp; ++i) {
        advance(disks, i);
        checksum += evaluator.checkHealthStatus(disks, settings, lang).eventLines.size();
        if (withRecords)
            checksum += records.compareValues(disks).size();
    }
    const qint64 rssWarm = residentKiB();

    QElapsedTimer timer;
    timer.start();
    for (int i = 0; i < evaluations; ++i) {
        advance(disks, warmUp + i);
        const HealthEvaluation r = evaluator.checkHealthStatus(disks, settings, lang);
        checksum += r.eventLines.size() + r.traySummary.size();
        if (withRecords)
            checksum += records.compareValues(disks).size();
    }
    const qint64 elapsedNs = timer.nsecsElapsed();
    const qint64 rssEnd = residentKiB();

    std::printf("bench_health: %d evaluations of %d disks x %d attributes%s\n", evaluations, kDisks, kAttributes,
                withRecords ? " with event log records" : "");
    std::printf("  time per evaluation: %.2f us (total %.2f s)\n", elapsedNs / 1000.0 / evaluations, elapsedNs / 1e9);
    std::printf("  resident memory: start %lld KiB, after warm-up %lld KiB, end %lld KiB (growth %lld KiB)\n",
                rssStart, rssWarm, rssEnd, rssEnd - rssWarm);
    std::printf("  checksum %lld\n", checksum);
    if (rssWarm < 0 || rssEnd < 0) {
        std::printf("  resident memory unknown (no /proc/self/status)\n");
        return 0;
    }
    if (rssEnd - rssWarm > kAllowedGrowthKiB) {
        std::printf("  FAIL: memory grew by more than %lld KiB\n", kAllowedGrowthKiB);
        return 1;
    }
    std::printf("  memory flat\n");
    return 0;
}
