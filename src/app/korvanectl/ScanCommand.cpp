#include "ScanCommand.h"

#include "ConsoleOutput.h"
#include "CtlBackend.h"
#include "ScanProgress.h"

#include "device/BackendFactory.h"
#include "monitor/ATA_Smart.h"
#include "monitor/SignalWatcher.h"
#include "scan/BlockMap.h"
#include "scan/ScanGeometry.h"
#include "scan/ScanJson.h"
#include "scan/ScanTexts.h"
#include "scan/scan_tread.h"
#include "settings/LanguageTable.h"

#include <QCoreApplication>
#include <QDateTime>
#include <QFileInfo>
#include <QJsonDocument>
#include <QTextStream>
#include <QTimer>

#ifdef Q_OS_WIN
#include <io.h>
#else
#include <unistd.h>
#endif

namespace ScanCommand {

namespace {

// A terminal gets the progress bar; a pipe or a file, plain lines.
bool stdoutIsTerminal()
{
#ifdef Q_OS_WIN
    return _isatty(1) != 0;
#else
    return isatty(STDOUT_FILENO) == 1;
#endif
}

/// The disk to scan: where to read it and how large it is.
struct Target
{
    std::shared_ptr<DriveBackend> backend;
    QString path;
    qint64 sizeBytes = 0;
};

// A block device or image file named by its path, read through the system's own backend.
std::optional<Target> fileTarget(const QString &path, QString *error)
{
    QStringList errors;
    std::shared_ptr<DriveBackend> backend = createSystemBackend(&errors);
    if (!backend) {
        *error = errors.join(QLatin1Char(' '));
        return std::nullopt;
    }
    Target target{backend, path, 0};
    const QFileInfo info(path);
    if (info.isFile()) {
        target.sizeBytes = info.size();
        return target;
    }
    const DiskHandle handle = backend->openForRead(QFile::encodeName(path).toStdString(), false);
    std::uint64_t bytes = 0;
    const bool sized = handle != kNoHandle && backend->diskLength(handle, bytes);
    if (handle != kNoHandle)
        backend->closeDisk(handle);
    if (!sized) {
        *error = handle == kNoHandle ? QStringLiteral("%1 cannot be opened for reading").arg(path)
                                     : QStringLiteral("the size of %1 cannot be read").arg(path);
        return std::nullopt;
    }
    target.sizeBytes = qint64(bytes);
    return target;
}

// The disk of the discovery list that \a disk names: index, serial or device path.
int findDisk(const QList<DiskRecord> &disks, const QString &disk)
{
    bool isIndex = false;
    const int index = disk.toInt(&isIndex);
    if (isIndex)
        return index >= 0 && index < disks.size() ? index : -1;
    for (int i = 0; i < disks.size(); ++i) {
        if (disks.at(i).serial.trimmed() == disk.trimmed() || disks.at(i).devicePath == disk)
            return i;
    }
    return -1;
}

// Discovery, on its worker, while the event loop runs; then the disk the options name.
std::optional<Target> listedTarget(const CtlOptions &options, SignalWatcher &stopWatcher, QString *error)
{
    bool filesRead = true;
    QList<DiskRecord> disks;
    const std::shared_ptr<DriveBackend> backend = CtlBackend::open(options.simulate, &filesRead);
    ATA_Smart smart(backend, disks);
    QObject::connect(&smart, &ATA_Smart::finishedGetDevices, qApp, &QCoreApplication::quit);
    QObject::connect(&stopWatcher, &SignalWatcher::stopRequested, qApp, &QCoreApplication::quit);
    QTimer::singleShot(0, &smart, &ATA_Smart::getDevice_Info);
    QCoreApplication::exec();
    QObject::disconnect(&stopWatcher, nullptr, qApp, nullptr);
    if (smart.isDiscovering()) {
        *error = QStringLiteral("stopped before the disks were found");
        return std::nullopt;
    }
    const int index = findDisk(disks, options.disk);
    if (index < 0) {
        QStringList names;
        for (int i = 0; i < disks.size(); ++i)
            names << QStringLiteral("%1: %2 %3").arg(i).arg(disks.at(i).serial.trimmed(), disks.at(i).devicePath);
        *error = QStringLiteral("no disk \"%1\" in the disk list (%2), and no such file")
                     .arg(options.disk, names.isEmpty() ? QStringLiteral("no disks found") : names.join(QStringLiteral(", ")));
        return std::nullopt;
    }
    return Target{backend, disks.at(index).devicePath, qint64(disks.at(index).capacityBytes)};
}

// The range to scan within the target; the reason when the options ask for sectors it does not have.
std::optional<ScanJson::Scope> scopeOf(const CtlOptions &options, const Target &target, QString *error)
{
    const qint64 lastSector = target.sizeBytes / ScanGeometry::kSectorBytes - 1;
    if (lastSector < 0) {
        *error = QStringLiteral("%1 has no whole sector to scan").arg(target.path);
        return std::nullopt;
    }
    ScanJson::Scope scope{target.path, qMax<qint64>(0, options.fromSector),
                          options.toSector >= 0 ? options.toSector : lastSector, options.blockSize};
    if (scope.lastSector > lastSector || scope.firstSector > scope.lastSector) {
        *error = QStringLiteral("%1 has sectors 0 to %2; the range %3 to %4 is not within them")
                     .arg(target.path).arg(lastSector).arg(scope.firstSector).arg(scope.lastSector);
        return std::nullopt;
    }
    return scope;
}

// Takes the worker's reports into \a map and, unless it is null, onto \a progress; quits the
// event loop when the scan is over.
void follow(scan_tread &worker, BlockMap &map, ScanProgress *progress)
{
    QObject::connect(&worker, &scan_tread::scanedSector, qApp, [&map, progress](qint64 first, qint64 last, int) {
        map.addBadRange(first, last);
        if (progress)
            progress->printLine(ScanTexts::badSectors(first, last));
    });
    QObject::connect(&worker, &scan_tread::scanedBlock, qApp, [&map](qint64 block) { map.setCurrentBlock(block); });
    QObject::connect(&worker, &scan_tread::blockReadTime, qApp,
                     [&map](qint64 block, qint64 micros) { map.setReadTime(block, micros); });
    QObject::connect(&worker, &scan_tread::updateProgress, qApp, [progress](int percent) {
        if (progress)
            progress->setPercent(percent);
    });
    QObject::connect(&worker, &scan_tread::scanComplette, qApp, &QCoreApplication::quit);
}

int exitCode(const ScanSummary &summary, const BlockMap &map)
{
    if (summary.stopped)
        return 130;
    if (summary.openFailed)
        return 2;
    return map.badRanges().isEmpty() ? 0 : 1;
}

} // namespace

int run(const CtlOptions &options)
{
    SignalWatcher stopWatcher;
    // Scripts read the texts: always the English ones.
    loadLanguage(LanguageTable::English);
    QTextStream err(stderr);
    QString error;
    const bool isFile = QFileInfo::exists(options.disk);
    const auto target = isFile ? fileTarget(options.disk, &error) : listedTarget(options, stopWatcher, &error);
    const auto scope = target ? scopeOf(options, *target, &error) : std::nullopt;
    if (!scope) {
        err << "korvanectl: " << error << '\n';
        return 2;
    }

    scan_tread worker(target->backend);
    worker.setDevicePath(scope->device);
    worker.setBlockSize(scope->blockSize);
    worker.setFirstSector(scope->firstSector);
    worker.setLastSector(scope->lastSector);
    BlockMap map;
    map.setDiskBytes(target->sizeBytes);
    map.setFirstSector(scope->firstSector);
    map.reset();

    ConsoleOutput out;
    ScanProgress progress(out, stdoutIsTerminal(), scope->firstSector, scope->lastSector);
    follow(worker, map, options.json ? nullptr : &progress);
    // Like the stop button: the chunk in hand is finished, then the result is reported.
    QObject::connect(&stopWatcher, &SignalWatcher::stopRequested, &worker, &scan_tread::stop);
    QObject::connect(&out, &ConsoleOutput::closed, &worker, &scan_tread::stop);

    const QDateTime start = QDateTime::currentDateTime();
    worker.start();
    QCoreApplication::exec();
    worker.wait();

    const ScanSummary summary = worker.summary(ScanTexts::elapsedSeconds(start, QDateTime::currentDateTime()));
    if (options.json) {
        out.write(QJsonDocument(ScanJson::result(*scope, summary, map)).toJson(QJsonDocument::Indented));
    } else {
        progress.finish();
        out.writeLine(ScanTexts::result(summary));
    }
    return exitCode(summary, map);
}

} // namespace ScanCommand
