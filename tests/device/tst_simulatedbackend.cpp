#include "TestEnv.h"
#include "TestFiles.h"

#include "device/AtaCommandIssuer.h"
#include "device/BackendFactory.h"
#include "device/IdentifyDecoder.h"
#include "device/SmartDecoder.h"
#include "device/simulated/SimulatedBackend.h"
#include "device/simulated/SmartDump.h"

#include <QDir>
#include <QElapsedTimer>
#include <QTemporaryDir>
#include <QtTest>

#include <fcntl.h>
#include <future>
#include <numeric>
#include <sys/stat.h>
#include <unistd.h>

namespace {

const AtaRegisters kIdentify = AtaCommandIssuer::identifyDevice();
const AtaRegisters kReadData = AtaCommandIssuer::smartReadData();
const AtaRegisters kThresholds = AtaCommandIssuer::smartReadThresholds();
const AtaRegisters kStatus = AtaCommandIssuer::smartReturnStatus();

struct Answer
{
    bool accepted = false;
    AtaExchange exchange;
};

Answer run(SimulatedBackend &backend, DiskHandle handle, const AtaRegisters &registers, int path = 0)
{
    Answer a;
    a.exchange.registers = registers;
    a.exchange.dataIn = registers.features != kStatus.features;
    a.exchange.data.fill(0);
    a.accepted = backend.ataCommand(handle, path, 0, a.exchange);
    return a;
}

bool reportsHealthy(SimulatedBackend &backend, DiskHandle handle)
{
    const AtaRegisters r = run(backend, handle, kStatus).exchange.registers;
    return r.cylinderLow == 0x4F && r.cylinderHigh == 0xC2;
}

bool sumsToZero(const Sector &s)
{
    return std::accumulate(s.begin(), s.end(), 0u) % 256 == 0;
}

// Byte offset of the slot that holds attribute \a id in a SMART data sector.
int entryOf(const Sector &data, int id)
{
    for (int at = 2; at < 362; at += 12)
        if (data[at] == id)
            return at;
    return -1;
}

quint64 rawOf(const Sector &data, int id)
{
    return quint64(SmartDecoder::decodeRaw(data.data() + entryOf(data, id)));
}

QString serialOf(const Sector &identify)
{
    return IdentifyDecoder::decodeString(identify, IdentifyDecoder::kSerialOffset, IdentifyDecoder::kSerialLength);
}

// A small, valid disk; \a extra is spliced into the top-level object.
QByteArray disk(const QByteArray &serial, const QByteArray &extra = {})
{
    return "{\"size\": 1000204886016, \"identity\": {\"model\": \"Tervo TD1000 SATA\", \"serial\": \"" + serial
           + "\", \"firmware\": \"TD01\"}" + (extra.isEmpty() ? "" : ", " + extra) + "}";
}

} // namespace

class TestSimulatedBackend : public QObject
{
    Q_OBJECT
    std::vector<std::unique_ptr<QTemporaryDir>> m_dirs;
    QStringList m_errors;

    /// Writes \a files (name, content) into a fresh folder and loads it, then the paths in \a more;
    /// what failed to load is in m_errors.
    std::unique_ptr<SimulatedBackend> loadFolder(const QList<QPair<QString, QByteArray>> &files,
                                                 const QStringList &more = {})
    {
        m_dirs.push_back(std::make_unique<QTemporaryDir>());
        for (const auto &[name, bytes] : files)
            if (!TestFiles::write(m_dirs.back()->filePath(name), bytes))
                qFatal("cannot write %s", qPrintable(name));
        m_errors.clear();
        return SimulatedBackend::load(QStringList{m_dirs.back()->path()} + more, &m_errors);
    }
    std::unique_ptr<SimulatedBackend> loadJson(const QByteArray &json) { return loadFolder({{"disk.json", json}}); }

private slots:
    // The dumps' sectors are read end to end elsewhere; what only the backend
    // decides is the saved health verdict and the size from the 48-bit count.
    void sharedDumpsAnswerAsSaved()
    {
        const QString dir = TestEnv::smartDumpDir();
        if (dir.isEmpty())
            QSKIP("shared SMART dumps not present");
        QStringList errors;
        auto backend = SimulatedBackend::load({dir}, &errors);
        QVERIFY2(errors.isEmpty(), qPrintable(errors.join('\n'))); // README and FORMAT.md are not disks
        const QStringList dumps = QDir(dir).entryList({QStringLiteral("*--*")}, QDir::Files, QDir::Name);
        QCOMPARE(backend->diskCount(), dumps.size());

        for (int i = 0; i < dumps.size(); ++i) {
            const DiskHandle h = backend->openDisk(backend->diskPath(i));
            // Only the drive that saved a failing status reports one; the
            // Seagate's old-age attribute at its threshold does not count.
            QCOMPARE(reportsHealthy(*backend, h), dumps[i] != QLatin1String("Maxtor_96147H8--BAC51KJ0--2"));
            std::uint64_t length = 0;
            QVERIFY(backend->diskLength(h, length));
            if (dumps[i] == QLatin1String("SAMSUNG_HD501LJ--CR100-12"))
                QCOMPARE(length, quint64(976773168) * 512);
        }
    }

    void commandAnswers_data()
    {
        QTest::addColumn<int>("path");
        QTest::newRow("ATA pass-through") << 0;
        QTest::newRow("SMART driver") << 1;
        QTest::newRow("IDE pass-through") << 2;
    }

    void commandAnswers()
    {
        QFETCH(int, path);
        const bool driver = path == 1;
        auto backend = loadJson(disk("C1", R"("smart": {"attributes": [
        {"id": 1, "flags": 15, "current": 200, "worst": 190, "threshold": 51, "raw": 0},
        {"id": 194, "flags": 34, "current": 112, "raw": 38}]})"));
        const DiskHandle h = backend->openDisk("sim://0");

        const Answer id = run(*backend, h, kIdentify, path);
        QVERIFY(id.accepted);
        QCOMPARE(id.exchange.bytesReturned, 512u);
        // The SMART driver gives no registers back for data commands.
        QCOMPARE(id.exchange.registersReturned, !driver);
        if (!driver)
            QCOMPARE(int(id.exchange.registers.command), 0x50);
        QCOMPARE(int(id.exchange.data[510]), 0xA5);
        QCOMPARE(quint64(sectorWord(id.exchange.data, 100)) | quint64(sectorWord(id.exchange.data, 101)) << 16,
                 quint64(1000204886016) / 512);

        const Sector data = run(*backend, h, kReadData, path).exchange.data;
        QCOMPARE(QByteArray(reinterpret_cast<const char *>(data.data() + 2), 5).toHex(), QByteArray("010f00c8be"));
        QCOMPARE(rawOf(data, 194), quint64(38));
        const Sector limits = run(*backend, h, kThresholds, path).exchange.data;
        QCOMPARE(int(limits[2]), 1);
        QCOMPARE(int(limits[3]), 51);
        QVERIFY(sumsToZero(id.exchange.data) && sumsToZero(data) && sumsToZero(limits));

        const Answer status = run(*backend, h, kStatus, path);
        QVERIFY(status.accepted && status.exchange.registersReturned);
        QCOMPARE(int(status.exchange.registers.cylinderLow), 0x4F);
        QCOMPARE(int(status.exchange.registers.cylinderHigh), 0xC2);

        // IDENTIFY PACKET DEVICE is aborted by an ATA disk; a data command asked
        // for without a data phase is rejected by the interface.
        const Answer aborted = run(*backend, h, AtaCommandIssuer::identifyPacketDevice(), path);
        QVERIFY(aborted.accepted);
        if (driver)
            QVERIFY(aborted.exchange.driverError != 0);
        else
            QCOMPARE(aborted.exchange.registers.command & 0x01, 1);
        AtaExchange noData;
        noData.registers = kIdentify;
        QVERIFY(!backend->ataCommand(h, path, 0, noData));
    }

    void pathsAndSmartSupport()
    {
        auto late = loadJson(disk("P2", R"("behaviour": {"firstPath": 2})"));
        DiskHandle h = late->openDisk("sim://0");
        for (int path = 0; path <= 3; ++path)
            QCOMPARE(run(*late, h, kIdentify, path).accepted, path == 2);

        auto noSmart = loadJson(R"({"size": 1000204886016, "identity": {"model": "Old", "smartSupported": false},
                                "smart": {"attributes": [{"id": 9}]}})");
        h = noSmart->openDisk("sim://0");
        QCOMPARE(IdentifyDecoder::smartSupported(run(*noSmart, h, kIdentify).exchange.data), 0);
        for (const AtaRegisters &command : {kReadData, kThresholds, kStatus})
            QCOMPARE(run(*noSmart, h, command, 0).exchange.registers.command & 0x01, 1);
    }

    void valuesChangeOverPolls()
    {
        auto backend = loadJson(disk("V1", R"("smart": {"attributes": [
        {"id": 5, "flags": 51, "current": {"start": 100, "step": -10, "min": 20}, "threshold": 50, "raw": {"start": 0, "step": 8, "every": 2}},
        {"id": 194, "flags": 34, "current": 60, "raw": [30, 40, 50]},
        {"id": 190, "flags": 34, "raw": {"values": [1, 2], "repeat": true}},
        {"id": 4, "flags": 50, "current": 10, "threshold": 20}]})"));
        const DiskHandle h = backend->openDisk("sim://0");

        QVERIFY(reportsHealthy(*backend, h)); // an old-age attribute below its threshold does not trip it
        for (int poll = 0; poll < 7; ++poll) {
            // Neither IDENTIFY nor the thresholds count as a poll.
            run(*backend, h, kIdentify);
            run(*backend, h, kThresholds);
            const Sector d = run(*backend, h, kReadData).exchange.data;
            QVERIFY(sumsToZero(d));
            const int current = 100 - 10 * poll;
            QCOMPARE(int(d[entryOf(d, 5) + 3]), current);
            QCOMPARE(int(d[entryOf(d, 5) + 4]), current);
            QCOMPARE(rawOf(d, 5), quint64(8 * (poll / 2)));
            QCOMPARE(rawOf(d, 194), quint64(std::min(30 + 10 * poll, 50)));
            QCOMPARE(rawOf(d, 190), quint64(1 + poll % 2));
            // RETURN STATUS judges the latest poll: 50 is at the threshold.
            QCOMPARE(reportsHealthy(*backend, h), current > 50);
        }
    }

    void descriptionOverDump()
    {
        // A dump of our own: the sectors a described disk answers, saved.
        auto source = loadJson(disk("D0", R"("smart": {"attributes": [
        {"id": 9, "flags": 50, "current": 97, "worst": 97, "raw": 2500},
        {"id": 194, "flags": 34, "current": 35, "worst": 60, "raw": 35}]})"));
        const DiskHandle s = source->openDisk("sim://0");
        SmartDump dump;
        dump.identify = run(*source, s, kIdentify).exchange.data;
        dump.smartData = run(*source, s, kReadData).exchange.data;
        // Leave a gap in the table, as some drives do: 194 moves from slot 1 to slot 3.
        Sector &table = *dump.smartData;
        std::copy_n(table.begin() + 14, 12, table.begin() + 38);
        std::fill_n(table.begin() + 14, 12, 0);
        table[511] = 0;
        table[511] = std::uint8_t(-std::accumulate(table.begin(), table.end(), 0u));
        dump.thresholds = run(*source, s, kThresholds).exchange.data;
        dump.healthy = true;

        // The dump the description starts from is not a disk of its own.
        auto backend = loadFolder({{"base.dump", dump.serialize()},
                                   {"over.json", R"({"dump": "base.dump", "size": 4096000, "identity": {"serial": "OVR-1"},
        "smart": {"attributes": [{"id": 194, "raw": {"start": 40, "step": 1}}, {"id": 12, "current": 99, "raw": 7}]}})"}});
        QVERIFY2(m_errors.isEmpty(), qPrintable(m_errors.join('\n')));
        QCOMPARE(backend->diskCount(), 1);
        const DiskHandle h = backend->openDisk("sim://0");
        std::uint64_t length = 0;
        QVERIFY(backend->diskLength(h, length));
        QCOMPARE(length, quint64(4096000));

        const Sector id = run(*backend, h, kIdentify).exchange.data;
        QCOMPARE(serialOf(id), QStringLiteral("OVR-1"));
        QCOMPARE(IdentifyDecoder::decodeString(id, IdentifyDecoder::kModelOffset, 40), QStringLiteral("Tervo TD1000 SATA"));
        QVERIFY(sumsToZero(id));

        for (int poll = 0; poll < 2; ++poll) {
            const Sector d = run(*backend, h, kReadData).exchange.data;
            QVERIFY(sumsToZero(d));
            QCOMPARE(entryOf(d, 194), 2 + 3 * 12);
            QCOMPARE(rawOf(d, 194), quint64(40 + poll));
            QCOMPARE(int(d[entryOf(d, 194) + 4]), 60); // worst kept as saved: only raw moves
            QCOMPARE(rawOf(d, 9), quint64(2500));
            QCOMPARE(entryOf(d, 12), 2 + 4 * 12); // after the last used slot: the gap stays
            QCOMPARE(int(d[entryOf(d, 12) + 3]), 99);
        }
    }

    void loadErrors()
    {
        const QByteArray identify = QByteArray("IDFY\0\0\x02\0", 8) + QByteArray(512, '\0');
        auto backend = loadFolder({{"a-good.json", disk("G1")},
                                   {"b-syntax.json", "{\n  \"size\": 512,\n  \"identity\": {\"model\" \"X\"}\n}"},
                                   {"c-field.json", disk("F1", R"("smart": {"attributes": [{"id": 5, "current": 300}]})")},
                                   {"d-unknown.json", disk("U1", R"("behavior": {"openFails": true})")},
                                   {"e-nosize.json", R"({"identity": {"model": "X"}})"},
                                   {"f-cut.dump", QByteArray("IDFY\0\0\x02\0", 8) + QByteArray(100, 'x')},
                                   {"g-good.json", disk("G2")},
                                   {"h-short.dump", identify + QByteArray("SMDT\0\0\0\x64", 8) + QByteArray(100, '\0')},
                                   {"i-twice.dump", identify + identify},
                                   {"j-big.dump", identify + QByteArray(5000, '\0')},
                                   {"k-big.json", disk("B1").leftJustified(1048586, ' ')},
                                   {"l-garbled.dump", identify + QByteArray("\x01SM\n\0\0\x02\0", 8)},
                                   {"README", "Notes about these disks.\n"},
                                   {"notes.txt", "more notes\n"}},
                                  {QStringLiteral("/nonexistent/missing.json"), QStringLiteral("/dev/zero")});
        QCOMPARE(backend->diskCount(), 2);
        // Each message names the file and what is wrong in its own words: a section by its name, the
        // lengths in question, a file's own size.
        const QStringList expected = {
            "b-syntax.json: line 3, column",
            "c-field.json: smart.attributes[0].current: expected a whole number from 0 to 255, found 300",
            "d-unknown.json: behavior: unknown field",
            "e-nosize.json: size: missing",
            "f-cut.dump: section \"IDFY\" declares 512 bytes, but only 100 are left in the file",
            "h-short.dump: section \"SMDT\" is 100 bytes long; it must be 512",
            "i-twice.dump: section \"IDFY\" appears twice",
            "j-big.dump: is 5520 bytes long, too large for a SMART dump (at most 4095 bytes)",
            "k-big.json: is 1048586 bytes long, too large for a disk description (at most 1 MiB)",
            "l-garbled.dump: section \"\\x01SM\\x0a\" declares 512 bytes, but only 0 are left in the file",
            "missing.json: no such file or folder",
            "/dev/zero: is a character device, not a regular file",
        };
        QCOMPARE(m_errors.size(), expected.size());
        for (int i = 0; i < expected.size(); ++i)
            QVERIFY2(m_errors[i].contains(expected[i]), qPrintable(m_errors[i]));
    }

    // A FIFO named as a disk, or as the dump a description starts from, would block the open.
    void fifoIsRefused()
    {
        QTemporaryDir dir;
        const QString fifo = dir.filePath(QStringLiteral("pipe.dump"));
        QCOMPARE(::mkfifo(QFile::encodeName(fifo).constData(), 0600), 0);
        const QString description = dir.filePath(QStringLiteral("over.json"));
        QVERIFY(TestFiles::write(description, R"({"dump": "pipe.dump"})"));

        QStringList errors;
        auto loading = std::async(std::launch::async, [&] { return SimulatedBackend::load({fifo, description}, &errors); });
        int blocked = 0;
        while (loading.wait_for(std::chrono::seconds(5)) != std::future_status::ready) {
            ::close(::open(QFile::encodeName(fifo).constData(), O_WRONLY | O_NONBLOCK)); // frees a blocked open
            ++blocked;
        }
        QCOMPARE(loading.get()->diskCount(), 0);
        QCOMPARE(blocked, 0);
        QCOMPARE(errors.size(), 2);
        QVERIFY2(errors[0].endsWith(QLatin1String("pipe.dump: is a FIFO (named pipe), not a regular file")), qPrintable(errors[0]));
        QVERIFY2(errors[1].contains(QLatin1String("pipe.dump: is a FIFO (named pipe), not a regular file")), qPrintable(errors[1]));
    }

    void fileNameBytes_data()
    {
        QTest::addColumn<QByteArray>("name");
        QTest::addColumn<bool>("loads");
        QTest::newRow("UTF-8") << QByteArray("caf\xC3\xA9.json") << true;
        QTest::newRow("Latin-1") << QByteArray("caf\xE9.json") << false;
    }

    // A file name is bytes, and KORVANE_SIMULATE carries them as they are. File names are read as
    // UTF-8 whatever the locale: such a name loads through the environment, load() and its folder
    // alike; one that is not UTF-8 cannot be opened, and the message says so rather than "missing".
    void fileNameBytes()
    {
        QFETCH(QByteArray, name);
        QFETCH(bool, loads);
        QTemporaryDir dir;
        const QByteArray path = QFile::encodeName(dir.path()) + '/' + name;
        const int fd = ::open(path.constData(), O_WRONLY | O_CREAT | O_EXCL, 0600); // a name Qt could not create
        QVERIFY(fd >= 0);
        const auto remove = qScopeGuard([&] { ::unlink(path.constData()); }); // nor remove
        const QByteArray json = disk("N1");
        QCOMPARE(::write(fd, json.constData(), size_t(json.size())), ssize_t(json.size()));
        ::close(fd);

        const QByteArray saved = qgetenv("KORVANE_SIMULATE");
        qputenv("KORVANE_SIMULATE", path);
        QStringList environmentErrors, loadErrors, folderErrors;
        const std::unique_ptr<DriveBackend> viaEnvironment = createDriveBackend({}, &environmentErrors);
        if (saved.isNull())
            qunsetenv("KORVANE_SIMULATE");
        else
            qputenv("KORVANE_SIMULATE", saved);
        const std::unique_ptr<DriveBackend> viaLoad = SimulatedBackend::load({QFile::decodeName(path)}, &loadErrors);
        const std::unique_ptr<DriveBackend> viaFolder = SimulatedBackend::load({dir.path()}, &folderErrors);

        for (const auto &[backend, errors] : {std::pair(viaEnvironment.get(), environmentErrors),
                                              std::pair(viaLoad.get(), loadErrors), std::pair(viaFolder.get(), folderErrors)}) {
            QCOMPARE(backend->openDisk("sim://0") != kNoHandle, loads);
            QCOMPARE(errors.size(), loads ? 0 : 1);
            if (!loads)
                QVERIFY2(errors[0].contains(QLatin1String("caf")) && errors[0].contains(QLatin1String("not valid UTF-8")),
                         qPrintable(errors[0]));
        }
    }

    void folderOrderAndNumbers()
    {
        auto backend = loadFolder({{"b.json", disk("B")}, {"a.json", disk("A")}, {"c.json", disk("C", "\"deviceNumber\": 0")},
                                   {"d.json", disk("D", "\"deviceNumber\": 7")}, {"e.json", disk("E", "\"deviceNumber\": 7")}});
        QCOMPARE(m_errors.size(), 1);
        QVERIFY2(m_errors[0].contains(QLatin1String("e.json: deviceNumber 7 is already taken by")), qPrintable(m_errors[0]));

        QStringList seen;
        for (int probe = 0; probe < 9; ++probe) {
            const DiskHandle h = backend->openDisk(backend->diskPath(probe));
            std::int32_t number = -1;
            if (h == kNoHandle || !backend->deviceNumber(h, number)) {
                seen << QStringLiteral("-");
                continue;
            }
            seen << QStringLiteral("%1=%2").arg(number).arg(serialOf(run(*backend, h, kIdentify).exchange.data));
            backend->closeDisk(h);
        }
        QCOMPARE(seen.join(' '), QStringLiteral("0=C 1=A 2=B - - - - 7=D -"));
        QCOMPARE(backend->openDisk("sim://"), kNoHandle);
        QCOMPARE(backend->openDisk("/dev/sda"), kNoHandle);
    }

    void volumes()
    {
        auto backend = loadFolder({{"1.json", disk("F", R"("volumes": [
        {"label": "Data", "fileSystem": "NTFS", "serial": "1A2B-3C4D", "root": "D:\\", "total": 600000000000, "free": 123456789504},
        {"label": "Recovery", "serial": 3735928559, "total": 1000000512, "free": 512}])")},
                                   {"2.json", disk("R", R"("removable": true, "volumes": [{"root": "E:\\", "total": 4096, "free": 0}])")}});
        QVERIFY2(m_errors.isEmpty(), qPrintable(m_errors.join('\n')));
        // Names, fixedness and roots show through the demo disks.
        const std::vector<std::string> names = backend->volumeNames();
        QCOMPARE(names.size(), std::size_t(3));
        QVERIFY(!backend->isFixedVolume(names[2]));

        // The clusters reported must give the byte counts back exactly.
        for (const auto &[name, total, free] : {std::tuple(names[0], 600000000000ull, 123456789504ull),
                                                 std::tuple(names[1], 1000000512ull, 512ull)}) {
            VolumeSpace space;
            QVERIFY(backend->volumeSpace(name, space));
            const quint64 cluster = space.sectorsPerCluster * space.bytesPerSector;
            QCOMPARE(cluster * space.totalClusters, total);
            QCOMPARE(cluster * space.freeClusters, free);
        }
        // A removable disk says so in its descriptor, and that it is on USB.
        std::uint8_t descriptor[64] = {};
        QVERIFY(backend->deviceDescriptor(backend->openDisk("sim://1"), descriptor, 64) > 30);
        QCOMPARE(std::pair(int(descriptor[10]), int(descriptor[28])), std::pair(1, 7));
        VolumeInformation info;
        QVERIFY(backend->volumeInformation(names[0], info));
        QCOMPARE(info.serialNumber, 0x1A2B3C4Du);
        QVERIFY(backend->volumeInformation(names[1], info));
        QCOMPARE(info.fileSystem, std::string("NTFS"));
        QCOMPARE(info.serialNumber, 0xDEADBEEFu);
    }

    void hangIsInterruptible()
    {
        auto backend = loadFolder({{"1.json", disk("H", R"("behaviour": {"hang": {"seconds": 60}})")}, {"2.json", disk("OK")},
                                   {"3.json", disk("SLOW", R"("behaviour": {"hang": {"seconds": 0.3, "polls": [0]}})")}});
        const auto pollLater = [&backend](DiskHandle h) {
            return std::async(std::launch::async, [&backend, h] { return run(*backend, h, kReadData).accepted; });
        };

        // A hanging disk holds up neither another disk nor the caller that gives up on it.
        QElapsedTimer timer;
        timer.start();
        const DiskHandle hung = backend->openDisk("sim://0");
        auto answered = pollLater(hung);
        QVERIFY(run(*backend, backend->openDisk("sim://1"), kReadData).accepted);
        QTest::qWait(100);
        backend->closeDisk(hung);
        QVERIFY(!answered.get());
        QVERIFY(timer.elapsed() < 5000);

        // A short hang runs out and answers; the next poll does not hang.
        const DiskHandle slow = backend->openDisk("sim://2");
        timer.restart();
        QVERIFY(run(*backend, slow, kReadData).accepted);
        QVERIFY(timer.elapsed() >= 290);
        timer.restart();
        QVERIFY(run(*backend, slow, kReadData).accepted);
        QVERIFY(timer.elapsed() < 250);

        // cancelWaits ends a hang in progress and every later one.
        const DiskHandle again = backend->openDisk("sim://0");
        timer.restart();
        answered = pollLater(again);
        QTest::qWait(100);
        backend->cancelWaits();
        QVERIFY(!answered.get());
        QVERIFY(!run(*backend, again, kReadData).accepted);
        QVERIFY(timer.elapsed() < 5000);
    }

    void surfaceReads()
    {
        auto backend = loadJson(R"({"size": 1048576, "surface": {"badSectors": [[100, 103], 2000], "readLatencyMs": 20}})");
        const DiskHandle h = backend->openForRead("sim://0", false);
        QVERIFY(h != kNoHandle);
        std::vector<std::uint8_t> buffer(65536, 0xEE);
        QElapsedTimer timer;
        timer.start();
        QCOMPARE(backend->readAt(h, 0, buffer.data(), 100 * 512), 100 * 512);
        QVERIFY(timer.elapsed() >= 19);
        QCOMPARE(int(buffer[0]), 0);
        QCOMPARE(backend->readAt(h, 99 * 512, buffer.data(), 1024), -1);
        QCOMPARE(backend->readAt(h, 103 * 512, buffer.data(), 512), -1);
        QCOMPARE(backend->readAt(h, 104 * 512, buffer.data(), 65536), 65536);
        QCOMPARE(backend->readAt(h, 1999 * 512 + 511, buffer.data(), 2), -1);
        // At the end of the disk a read comes back short, then empty.
        QCOMPARE(backend->readAt(h, 1048576 - 512, buffer.data(), 4096), 512);
        QCOMPARE(backend->readAt(h, 1048576, buffer.data(), 512), 0);
        backend->closeDisk(h);
        QCOMPARE(backend->readAt(h, 0, buffer.data(), 512), -1);

        auto locked = loadJson(disk("L", R"("behaviour": {"openFails": true})"));
        QCOMPARE(locked->openForRead("sim://0", true), kNoHandle);
        // The disk that refuses is named, as a real backend names a disk it may not open.
        QCOMPARE(locked->accessProblems(),
                 std::vector<std::string>{"sim://0: cannot be opened for reading and writing (simulated)"});
        QVERIFY(loadJson(disk("G"))->accessProblems().empty());
        auto odd = loadJson(disk("Q", R"("behaviour": {"failingQueries": ["geometry", "descriptor"]})"));
        const DiskHandle q = odd->openDisk("sim://0");
        DiskGeometry g;
        std::uint64_t length = 0;
        QVERIFY(!odd->geometry(q, g) && odd->diskLength(q, length));
        QCOMPARE(odd->deviceDescriptor(q, buffer.data(), 4096), -1);
    }

    // A weak spot reads slowly; a disk that drops out fails every read after, and every open.
    void surfaceSlowAndGone()
    {
        auto backend = loadJson(R"({"size": 1048576, "surface": {"disappearsAt": 1000,
            "slowSectors": [{"first": 200, "last": 203, "latencyMs": 60}]}})");
        const DiskHandle h = backend->openForRead("sim://0", false);
        const DiskHandle other = backend->openForRead("sim://0", false);
        std::vector<std::uint8_t> buffer(4096);
        QElapsedTimer timer;
        timer.start();
        QCOMPARE(backend->readAt(h, 0, buffer.data(), 4096), 4096);
        QVERIFY(timer.elapsed() < 50);
        timer.restart();
        QCOMPARE(backend->readAt(h, 196 * 512, buffer.data(), 4096), 4096); // touches sector 200
        QVERIFY(timer.elapsed() >= 59);
        QCOMPARE(backend->readAt(h, 999 * 512, buffer.data(), 1024), -1);
        QCOMPARE(backend->readAt(other, 0, buffer.data(), 512), -1);
        QCOMPARE(backend->openForRead("sim://0", false), kNoHandle);

        loadJson(R"({"size": 1048576, "surface": {"slowSectors": [{"first": 5}]}})");
        QCOMPARE(m_errors.size(), 1);
        QVERIFY2(m_errors.at(0).contains(QLatin1String("surface.slowSectors[0]: needs first, last and latencyMs")),
                 qPrintable(m_errors.at(0)));
    }
};

QTEST_GUILESS_MAIN(TestSimulatedBackend)
#include "tst_simulatedbackend.moc"
