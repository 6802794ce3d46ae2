// The surface scan against dd on an image file that is already in the page cache: both read
// the whole file in 64 KiB pieces, and the scan must reach at least 0.95 of dd's throughput
// (best of five runs each, alternating, in one invocation). Also reports the scan's CPU time
// per GB, its resident memory, and what the one-millisecond pause per 30 MB map block costs:
// the scan's own throttle, which dd does not have. dd copies every piece into its buffer; the
// scan on Linux only has the kernel check each piece (spliced to /dev/null), which is what
// leaves it room for the pauses.
//
//   bench_scan [IMAGE]     default: a 2 GB file made in a temporary folder and removed after
//
// Exit: 0 the ratio is met, 1 it is not, 2 the file or dd could not be used.

#include "device/BackendFactory.h"
#include "scan/scan_tread.h"

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QFile>
#include <QProcess>
#include <QThread>
#include <QTemporaryDir>

#include <sys/resource.h>

#include <algorithm>
#include <cstdio>

namespace {

constexpr qint64 kImageBytes = 2LL * 1024 * 1024 * 1024;
constexpr double kRequiredRatio = 0.95;
constexpr int kRounds = 5;

qint64 statusKiB(const char *field)
{
    QFile status(QStringLiteral("/proc/self/status"));
    if (!status.open(QIODevice::ReadOnly))
        return -1;
    for (const QByteArray &line : status.readAll().split('\n')) {
        if (line.startsWith(field))
            return line.mid(int(qstrlen(field))).trimmed().split(' ').value(0).toLongLong();
    }
    return -1;
}

double cpuSeconds()
{
    rusage usage{};
    getrusage(RUSAGE_SELF, &usage);
    return double(usage.ru_utime.tv_sec + usage.ru_stime.tv_sec) + double(usage.ru_utime.tv_usec + usage.ru_stime.tv_usec) / 1e6;
}

// A file of non-zero bytes, so no layer can take a shortcut over holes.
bool makeImage(const QString &path)
{
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly))
        return false;
    QByteArray chunk(1 << 20, '\0');
    for (int i = 0; i < chunk.size(); ++i)
        chunk[i] = char((i * 131 + 7) & 0xff);
    for (qint64 written = 0; written < kImageBytes; written += chunk.size()) {
        if (file.write(chunk) != chunk.size())
            return false;
    }
    return file.flush();
}

// Seconds dd takes to read the file in 64 KiB pieces; -1 when it fails.
double ddSeconds(const QString &path)
{
    QElapsedTimer clock;
    clock.start();
    const int code = QProcess::execute(QStringLiteral("dd"), {QStringLiteral("if=") + path, QStringLiteral("of=/dev/null"),
                                                              QStringLiteral("bs=64K"), QStringLiteral("status=none")});
    return code == 0 ? double(clock.nsecsElapsed()) / 1e9 : -1;
}

struct ScanRun
{
    double seconds = -1;
    double cpu = 0;
    qint64 sectors = 0;
    qint64 bad = 0;
};

ScanRun scanSeconds(const std::shared_ptr<DriveBackend> &backend, const QString &path, qint64 bytes)
{
    scan_tread worker(backend);
    worker.setDevicePath(path);
    worker.setBlockSize(65536);
    worker.setFirstSector(0);
    worker.setLastSector(bytes / 512 - 1);
    qint64 bad = 0;
    QObject::connect(&worker, &scan_tread::scanedSector, &worker, [&bad](qint64, qint64, int) { ++bad; }, Qt::DirectConnection);
    const double cpuBefore = cpuSeconds();
    QElapsedTimer clock;
    clock.start();
    worker.start();
    worker.wait();
    ScanRun run{double(clock.nsecsElapsed()) / 1e9, cpuSeconds() - cpuBefore, worker.sectorsScanned(), bad};
    return worker.openFailed() ? ScanRun{} : run;
}

// What one pause of the scan (QThread::msleep(1)) really takes here, in seconds.
double pauseSeconds()
{
    constexpr int kPauses = 200;
    QElapsedTimer clock;
    clock.start();
    for (int i = 0; i < kPauses; ++i)
        QThread::msleep(1);
    return double(clock.nsecsElapsed()) / 1e9 / kPauses;
}

} // namespace

int main(int argc, char *argv[])
{
    QCoreApplication app(argc, argv);
    QTemporaryDir dir(QStringLiteral("/var/tmp/bench_scan-XXXXXX"));
    QString image = app.arguments().value(1);
    if (image.isEmpty()) {
        image = dir.filePath(QStringLiteral("image.bin"));
        std::printf("making a 2 GB image in %s\n", qPrintable(image));
        if (!makeImage(image))
            return 2;
    }
    const qint64 bytes = QFile(image).size();
    QStringList errors;
    std::shared_ptr<DriveBackend> backend = createSystemBackend(&errors);
    if (!backend || ddSeconds(image) < 0) // the first dd also brings the file into the page cache
        return 2;
    const qint64 rssBefore = statusKiB("VmRSS:");

    double bestDd = 1e9;
    ScanRun best;
    for (int round = 0; round < kRounds; ++round) {
        const double dd = ddSeconds(image);
        const ScanRun scan = scanSeconds(backend, image, bytes);
        if (dd < 0 || scan.seconds < 0 || scan.bad != 0 || scan.sectors != bytes / 512)
            return 2;
        std::printf("round %d: dd %.3f s, scan %.3f s (%.3f s CPU)\n", round + 1, dd, scan.seconds, scan.cpu);
        bestDd = std::min(bestDd, dd);
        if (best.seconds < 0 || scan.seconds < best.seconds)
            best = scan;
    }
    const double gb = double(bytes) / 1e9;
    const double ratio = (gb / best.seconds) / (gb / bestDd);
    std::printf("dd:   %.0f MB/s\nscan: %.0f MB/s\nratio: %.3f (required %.2f)\n", bytes / bestDd / 1e6,
                bytes / best.seconds / 1e6, ratio, kRequiredRatio);
    const double pauses = double((bytes + 31457279) / 31457280) * pauseSeconds();
    std::printf("the scan's pauses: about %.3f s; without them the scan reads at %.0f MB/s, ratio %.3f\n", pauses,
                bytes / (best.seconds - pauses) / 1e6, bestDd / (best.seconds - pauses));
    std::printf("scan CPU: %.3f s per GB\nresident memory: %lld KiB before the scans, %lld KiB after, %lld KiB at most\n",
                best.cpu / gb, rssBefore, statusKiB("VmRSS:"), statusKiB("VmHWM:"));
    return ratio >= kRequiredRatio ? 0 : 1;
}
