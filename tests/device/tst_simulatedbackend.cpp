#include "TestEnv.h"

#include "device/simulated/SimulatedBackend.h"
#include "device/simulated/SmartDump.h"

#include <QDir>
#include <QElapsedTimer>
#include <QTemporaryDir>
#include <QtTest>

#include <numeric>
#include <thread>

namespace {

AtaRegisters smartRegisters(std::uint8_t feature)
{
    AtaRegisters r;
    r.features = feature;
    r.sectorCount = 1;
    r.sectorNumber = 1;
    r.cylinderLow = 0x4F;
    r.cylinderHigh = 0xC2;
    r.command = 0xB0;
    return r;
}

AtaRegisters identifyRegisters()
{
    AtaRegisters r;
    r.sectorCount = 1;
    r.command = 0xEC;
    return r;
}

struct Answer
{
    bool accepted = false;
    AtaExchange exchange;
};

Answer run(SimulatedBackend &backend, DiskHandle handle, AtaRegisters registers, int path = 0)
{
    Answer a;
    a.exchange.registers = registers;
    a.exchange.dataIn = !(registers.command == 0xB0 && registers.features == 0xDA);
    a.exchange.data.fill(0);
    a.accepted = backend.ataCommand(handle, path, 0, a.exchange);
    return a;
}

Sector smartData(SimulatedBackend &backend, DiskHandle handle)
{
    return run(backend, handle, smartRegisters(0xD0)).exchange.data;
}

bool reportsHealthy(SimulatedBackend &backend, DiskHandle handle)
{
    const AtaRegisters r = run(backend, handle, smartRegisters(0xDA)).exchange.registers;
    return r.cylinderLow == 0x4F && r.cylinderHigh == 0xC2;
}

bool sumsToZero(const Sector &s)
{
    return std::accumulate(s.begin(), s.end(), 0u) % 256 == 0;
}

// Slot of attribute id in a SMART data sector, as byte offset.
int entryOf(const Sector &data, int id)
{
    for (int at = 2; at < 362; at += 12) {
        if (data[at] == id)
            return at;
    }
    return -1;
}

quint64 rawOf(const Sector &data, int id)
{
    const int at = entryOf(data, id);
    quint64 raw = 0;
    for (int i = 5; i >= 0; --i)
        raw = raw << 8 | data[at + 5 + i];
    return raw;
}

QString identifyText(const Sector &identify, int offset, int length)
{
    QByteArray text;
    for (int i = 0; i < length; ++i)
        text.append(char(identify[offset + (i ^ 1)]));
    return QString::fromLatin1(text).trimmed();
}

QString descriptorString(const std::vector<std::uint8_t> &d, int field)
{
    const std::uint32_t offset = d[field] | d[field + 1] << 8 | d[field + 2] << 16 | std::uint32_t(d[field + 3]) << 24;
    return offset == 0 ? QStringLiteral("<none>") : QString::fromLatin1(reinterpret_cast<const char *>(d.data() + offset));
}

void writeFile(const QString &path, const QByteArray &bytes)
{
    QFile file(path);
    QVERIFY(file.open(QIODevice::WriteOnly));
    file.write(bytes);
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

private slots:
    void sharedDumpsAnswerAsSaved();
    void descriptorLayout();
    void commandAnswers_data();
    void commandAnswers();
    void pathsAndSmartSupport();
    void valuesChangeOverPolls();
    void descriptionOverDump();
    void loadErrors();
    void folderOrderAndNumbers();
    void volumes();
    void hangIsInterruptible();
    void surfaceReads();

private:
    std::unique_ptr<SimulatedBackend> loadJson(const QByteArray &json, QStringList *errors = nullptr);
    QTemporaryDir m_dir;
    int m_files = 0;
};

std::unique_ptr<SimulatedBackend> TestSimulatedBackend::loadJson(const QByteArray &json, QStringList *errors)
{
    const QString path = m_dir.filePath(QStringLiteral("disk%1.json").arg(++m_files));
    writeFile(path, json);
    QStringList localErrors;
    auto backend = SimulatedBackend::load({path}, errors ? errors : &localErrors);
    if (!errors && !localErrors.isEmpty())
        qWarning() << localErrors;
    return backend;
}

void TestSimulatedBackend::sharedDumpsAnswerAsSaved()
{
    const QString dir = TestEnv::smartDumpDir();
    if (dir.isEmpty())
        QSKIP("shared SMART dumps not present");
    QStringList errors;
    auto backend = SimulatedBackend::load({dir}, &errors);
    QVERIFY2(errors.isEmpty(), qPrintable(errors.join('\n'))); // README and FORMAT.md are not disks

    QStringList dumps = QDir(dir).entryList(QDir::Files, QDir::Name);
    dumps.removeAll(QStringLiteral("README"));
    dumps.removeAll(QStringLiteral("FORMAT.md"));
    QCOMPARE(backend->diskCount(), dumps.size());

    for (int i = 0; i < dumps.size(); ++i) {
        const auto dump = SmartDump::load(QDir(dir).filePath(dumps[i]));
        QVERIFY(dump);
        const DiskHandle h = backend->openDisk(backend->diskPath(i));
        QVERIFY(h != kNoHandle);
        QCOMPARE(run(*backend, h, identifyRegisters()).exchange.data, *dump->identify);
        QCOMPARE(run(*backend, h, smartRegisters(0xD0), 1).exchange.data, *dump->smartData);
        QCOMPARE(run(*backend, h, smartRegisters(0xD1), 2).exchange.data, *dump->thresholds);

        // Only the drive that saved a failing status reports one; the
        // Seagate's old-age attribute at its threshold does not count.
        QCOMPARE(reportsHealthy(*backend, h), dumps[i] != QLatin1String("Maxtor_96147H8--BAC51KJ0--2"));

        std::uint64_t length = 0;
        QVERIFY(backend->diskLength(h, length));
        if (dumps[i] == QLatin1String("SAMSUNG_HD501LJ--CR100-12"))
            QCOMPARE(length, quint64(976773168) * 512);
        if (dumps[i] == QLatin1String("SAMSUNG_MMCQE28G8MUP--0VA_VAM08L1Q")) {
            std::vector<std::uint8_t> descriptor(512);
            descriptor.resize(std::size_t(backend->deviceDescriptor(h, descriptor.data(), 512)));
            QCOMPARE(descriptorString(descriptor, 16), QStringLiteral("SAMSUNG MMCQE28G8MUP-0VA"));
            QCOMPARE(descriptorString(descriptor, 20), QStringLiteral("VAM08L1Q"));
        }
        backend->closeDisk(h);
    }
}

void TestSimulatedBackend::descriptorLayout()
{
    auto backend = loadJson(disk("TD1K-0042-7781"));
    const DiskHandle h = backend->openDisk("sim://0");
    std::vector<std::uint8_t> d(4096, 0xEE);
    const int n = backend->deviceDescriptor(h, d.data(), int(d.size()));
    QVERIFY(n > 36);
    d.resize(std::size_t(n));
    QCOMPARE(int(d[0]), 40);                       // version
    QCOMPARE(int(d[4] | d[5] << 8), n);            // size
    QCOMPARE(int(d[10]), 0);                       // not removable
    QCOMPARE(int(d[28]), 11);                      // SATA
    QCOMPARE(descriptorString(d, 12), QStringLiteral("<none>"));
    QCOMPARE(descriptorString(d, 16), QStringLiteral("Tervo TD1000 SATA"));
    QCOMPARE(descriptorString(d, 20), QStringLiteral("TD01"));
    QCOMPARE(descriptorString(d, 24), QStringLiteral("TD1K-0042-7781"));
    QCOMPARE(int(d.back()), 0);

    // A short buffer gets what fits, and the header still tells the full size.
    std::vector<std::uint8_t> shortBuffer(50, 0xEE);
    QCOMPARE(backend->deviceDescriptor(h, shortBuffer.data(), 50), 50);
    QCOMPARE(int(shortBuffer[4]), n);
    QCOMPARE(backend->deviceDescriptor(h, shortBuffer.data(), 4), -1);

    auto usb = loadJson(disk("U1", "\"removable\": true"));
    const DiskHandle u = usb->openDisk("sim://0");
    QVERIFY(usb->deviceDescriptor(u, d.data(), int(d.size())) > 0);
    QCOMPARE(int(d[10]), 1);
    QCOMPARE(int(d[28]), 7);
}

void TestSimulatedBackend::commandAnswers_data()
{
    QTest::addColumn<int>("path");
    QTest::newRow("ATA pass-through") << 0;
    QTest::newRow("SMART driver") << 1;
    QTest::newRow("IDE pass-through") << 2;
}

void TestSimulatedBackend::commandAnswers()
{
    QFETCH(int, path);
    const bool driver = path == 1;
    auto backend = loadJson(disk("C1", R"("smart": {"attributes": [
        {"id": 1, "flags": 15, "current": 200, "worst": 190, "threshold": 51, "raw": 0},
        {"id": 194, "flags": 34, "current": 112, "raw": 38}]})"));
    const DiskHandle h = backend->openDisk("sim://0");

    const Answer id = run(*backend, h, identifyRegisters(), path);
    QVERIFY(id.accepted);
    QCOMPARE(id.exchange.bytesReturned, 512u);
    QCOMPARE(id.exchange.driverError, 0);
    QCOMPARE(id.exchange.registersReturned, !driver);
    if (!driver)
        QCOMPARE(int(id.exchange.registers.command), 0x50);
    QCOMPARE(int(id.exchange.data[510]), 0xA5);
    QVERIFY(sumsToZero(id.exchange.data));
    QCOMPARE(identifyText(id.exchange.data, 54, 40), QStringLiteral("Tervo TD1000 SATA"));
    const quint64 lba = quint64(id.exchange.data[200] | id.exchange.data[201] << 8)
                        | quint64(id.exchange.data[202] | id.exchange.data[203] << 8) << 16;
    QCOMPARE(lba, quint64(1000204886016) / 512);

    const Answer data = run(*backend, h, smartRegisters(0xD0), path);
    QVERIFY(data.accepted);
    QCOMPARE(data.exchange.bytesReturned, 512u);
    QVERIFY(sumsToZero(data.exchange.data));
    const int e = entryOf(data.exchange.data, 1);
    QCOMPARE(e, 2);
    QCOMPARE(int(data.exchange.data[e + 1]), 15);
    QCOMPARE(int(data.exchange.data[e + 3]), 200);
    QCOMPARE(int(data.exchange.data[e + 4]), 190);
    QCOMPARE(int(data.exchange.data[entryOf(data.exchange.data, 194) + 4]), 112); // worst follows current
    QCOMPARE(rawOf(data.exchange.data, 194), quint64(38));

    const Answer limits = run(*backend, h, smartRegisters(0xD1), path);
    QVERIFY(limits.accepted);
    QVERIFY(sumsToZero(limits.exchange.data));
    QCOMPARE(int(limits.exchange.data[2]), 1);
    QCOMPARE(int(limits.exchange.data[3]), 51);

    const Answer status = run(*backend, h, smartRegisters(0xDA), path);
    QVERIFY(status.accepted);
    QVERIFY(status.exchange.registersReturned);
    QCOMPARE(int(status.exchange.registers.cylinderLow), 0x4F);
    QCOMPARE(int(status.exchange.registers.cylinderHigh), 0xC2);
    QCOMPARE(int(status.exchange.registers.command), 0x50);

    // IDENTIFY PACKET DEVICE is aborted by an ATA disk; a data command asked
    // for without a data phase is rejected by the interface.
    AtaRegisters packet = identifyRegisters();
    packet.command = 0xA1;
    const Answer aborted = run(*backend, h, packet, path);
    QVERIFY(aborted.accepted);
    if (driver)
        QVERIFY(aborted.exchange.driverError != 0);
    else
        QCOMPARE(aborted.exchange.registers.command & 0x01, 1);
    AtaExchange noData;
    noData.registers = identifyRegisters();
    QVERIFY(!backend->ataCommand(h, path, 0, noData));
}

void TestSimulatedBackend::pathsAndSmartSupport()
{
    auto late = loadJson(disk("P2", R"("behaviour": {"firstPath": 2})"));
    DiskHandle h = late->openDisk("sim://0");
    QVERIFY(!run(*late, h, identifyRegisters(), 0).accepted);
    QVERIFY(!run(*late, h, identifyRegisters(), 1).accepted);
    QVERIFY(run(*late, h, identifyRegisters(), 2).accepted);

    auto silent = loadJson(disk("P3", R"("behaviour": {"firstPath": 3})"));
    h = silent->openDisk("sim://0");
    for (int path = 0; path <= 3; ++path)
        QVERIFY(!run(*silent, h, identifyRegisters(), path).accepted);

    auto noSmart = loadJson(R"({"size": 1000204886016, "identity": {"model": "Old", "smartSupported": false},
                                "smart": {"attributes": [{"id": 9}]}})");
    h = noSmart->openDisk("sim://0");
    const Answer id = run(*noSmart, h, identifyRegisters());
    QCOMPARE(id.exchange.data[164] & 1, 0); // word 82 bit 0
    QVERIFY(sumsToZero(id.exchange.data));
    for (const std::uint8_t feature : {0xD0, 0xD1, 0xDA}) {
        QCOMPARE(run(*noSmart, h, smartRegisters(feature), 0).exchange.registers.command & 0x01, 1);
        QVERIFY(run(*noSmart, h, smartRegisters(feature), 1).exchange.driverError != 0);
    }
}

void TestSimulatedBackend::valuesChangeOverPolls()
{
    auto backend = loadJson(disk("V1", R"("smart": {"attributes": [
        {"id": 5, "flags": 51, "current": {"start": 100, "step": -10, "min": 20}, "threshold": 50, "raw": {"start": 0, "step": 8, "every": 2}},
        {"id": 194, "flags": 34, "current": 60, "raw": [30, 40, 50]},
        {"id": 190, "flags": 34, "raw": {"values": [1, 2], "repeat": true}},
        {"id": 4, "flags": 50, "current": 10, "threshold": 20}]})"));
    const DiskHandle h = backend->openDisk("sim://0");

    QVERIFY(reportsHealthy(*backend, h)); // an old-age attribute below its threshold does not trip it
    const QList<int> current = {100, 90, 80, 70, 60, 50, 40};
    for (int poll = 0; poll < current.size(); ++poll) {
        // Neither IDENTIFY nor the thresholds count as a poll.
        run(*backend, h, identifyRegisters());
        run(*backend, h, smartRegisters(0xD1));
        const Sector d = smartData(*backend, h);
        QVERIFY(sumsToZero(d));
        const int e = entryOf(d, 5);
        QCOMPARE(int(d[e + 3]), current[poll]);
        QCOMPARE(int(d[e + 4]), current[poll]);
        QCOMPARE(rawOf(d, 5), quint64(8 * (poll / 2)));
        QCOMPARE(rawOf(d, 194), quint64(std::min(30 + 10 * poll, 50)));
        QCOMPARE(rawOf(d, 190), quint64(1 + poll % 2));
        // RETURN STATUS judges the latest poll: 50 is at the threshold.
        QCOMPARE(reportsHealthy(*backend, h), current[poll] > 50);
    }
}

void TestSimulatedBackend::descriptionOverDump()
{
    // A dump of our own: the sectors a described disk answers, saved.
    auto source = loadJson(disk("D0", R"("smart": {"attributes": [
        {"id": 9, "flags": 50, "current": 97, "worst": 97, "raw": 2500},
        {"id": 194, "flags": 34, "current": 35, "worst": 60, "raw": 35}]})"));
    const DiskHandle s = source->openDisk("sim://0");
    SmartDump dump;
    dump.identify = run(*source, s, identifyRegisters()).exchange.data;
    dump.smartData = smartData(*source, s);
    // Leave a gap in the table, as some drives do: 194 moves from slot 1 to slot 3.
    Sector &table = *dump.smartData;
    std::copy_n(table.begin() + 14, 12, table.begin() + 38);
    std::fill_n(table.begin() + 14, 12, 0);
    table[511] = 0;
    table[511] = std::uint8_t(-std::accumulate(table.begin(), table.end(), 0u));
    dump.thresholds = run(*source, s, smartRegisters(0xD1)).exchange.data;
    dump.healthy = true;
    QTemporaryDir folder;
    writeFile(folder.filePath(QStringLiteral("base.dump")), dump.serialize());
    writeFile(folder.filePath(QStringLiteral("over.json")), R"({"dump": "base.dump", "size": 4096000,
        "identity": {"serial": "OVR-1"},
        "smart": {"attributes": [{"id": 194, "raw": {"start": 40, "step": 1}}, {"id": 12, "current": 99, "raw": 7}]}})");

    // The dump the description starts from is not a disk of its own.
    QStringList errors;
    auto backend = SimulatedBackend::load({folder.path()}, &errors);
    QVERIFY2(errors.isEmpty(), qPrintable(errors.join('\n')));
    QCOMPARE(backend->diskCount(), 1);
    const DiskHandle h = backend->openDisk("sim://0");
    std::uint64_t length = 0;
    QVERIFY(backend->diskLength(h, length));
    QCOMPARE(length, quint64(4096000));

    const Sector id = run(*backend, h, identifyRegisters()).exchange.data;
    QCOMPARE(identifyText(id, 20, 20), QStringLiteral("OVR-1"));
    QCOMPARE(identifyText(id, 54, 40), QStringLiteral("Tervo TD1000 SATA"));
    QVERIFY(sumsToZero(id));

    for (int poll = 0; poll < 2; ++poll) {
        const Sector d = smartData(*backend, h);
        QVERIFY(sumsToZero(d));
        QCOMPARE(entryOf(d, 194), 2 + 3 * 12);
        QCOMPARE(rawOf(d, 194), quint64(40 + poll));
        QCOMPARE(int(d[entryOf(d, 194) + 4]), 60); // worst kept as saved: only raw moves
        QCOMPARE(rawOf(d, 9), quint64(2500));
        QCOMPARE(entryOf(d, 12), 2 + 4 * 12); // after the last used slot: the gap stays
        QCOMPARE(int(d[entryOf(d, 12) + 3]), 99);
    }
}

void TestSimulatedBackend::loadErrors()
{
    QTemporaryDir folder;
    auto put = [&](const char *name, const QByteArray &bytes) { writeFile(folder.filePath(QLatin1String(name)), bytes); };
    put("a-good.json", disk("G1"));
    put("b-syntax.json", "{\n  \"size\": 512,\n  \"identity\": {\"model\" \"X\"}\n}");
    put("c-field.json", disk("F1", R"("smart": {"attributes": [{"id": 5, "current": 300}]})"));
    put("d-unknown.json", disk("U1", R"("behavior": {"openFails": true})"));
    put("e-nosize.json", R"({"identity": {"model": "X"}})");
    put("f-cut.dump", QByteArray("IDFY\0\0\x02\0", 8) + QByteArray(100, 'x'));
    put("g-good.json", disk("G2"));
    put("README", "Notes about these disks.\n");
    put("notes.txt", "more notes\n");

    QStringList errors;
    auto backend = SimulatedBackend::load({folder.path(), folder.filePath(QStringLiteral("missing.json"))}, &errors);
    QCOMPARE(backend->diskCount(), 2);
    QCOMPARE(errors.size(), 6);
    const QStringList expected = {
        "b-syntax.json: line 3, column",
        "c-field.json: smart.attributes[0].current: expected a whole number from 0 to 255, found 300",
        "d-unknown.json: behavior: unknown field",
        "e-nosize.json: size: missing",
        "f-cut.dump: section",
        "missing.json: no such file or folder",
    };
    for (int i = 0; i < expected.size(); ++i)
        QVERIFY2(errors[i].contains(expected[i]), qPrintable(errors[i]));
}

void TestSimulatedBackend::folderOrderAndNumbers()
{
    QTemporaryDir folder;
    writeFile(folder.filePath(QStringLiteral("b.json")), disk("B"));
    writeFile(folder.filePath(QStringLiteral("a.json")), disk("A"));
    writeFile(folder.filePath(QStringLiteral("c.json")), disk("C", "\"deviceNumber\": 0"));
    writeFile(folder.filePath(QStringLiteral("d.json")), disk("D", "\"deviceNumber\": 7"));
    writeFile(folder.filePath(QStringLiteral("e.json")), disk("E", "\"deviceNumber\": 7"));
    QStringList errors;
    auto backend = SimulatedBackend::load({folder.path()}, &errors);
    QCOMPARE(errors.size(), 1);
    QVERIFY2(errors[0].contains(QLatin1String("e.json: deviceNumber 7 is already taken by")), qPrintable(errors[0]));

    auto serialAt = [&](int probe) {
        const DiskHandle h = backend->openDisk(backend->diskPath(probe));
        if (h == kNoHandle)
            return QStringLiteral("-");
        std::int32_t number = -1;
        backend->deviceNumber(h, number);
        const QString serial = identifyText(run(*backend, h, identifyRegisters()).exchange.data, 20, 20);
        backend->closeDisk(h);
        return QStringLiteral("%1=%2").arg(number).arg(serial);
    };
    QStringList seen;
    for (int probe = 0; probe < 9; ++probe)
        seen << serialAt(probe);
    QCOMPARE(seen.join(' '), QStringLiteral("0=C 1=A 2=B - - - - 7=D -"));
    QCOMPARE(backend->diskPath(3), std::string("sim://3"));
    QCOMPARE(backend->openDisk("sim://"), kNoHandle);
    QCOMPARE(backend->openDisk("/dev/sda"), kNoHandle);
}

void TestSimulatedBackend::volumes()
{
    QTemporaryDir folder;
    writeFile(folder.filePath(QStringLiteral("1.json")), disk("F", R"("volumes": [
        {"label": "Data", "fileSystem": "NTFS", "serial": "1A2B-3C4D", "root": "D:\\", "total": 600000000000, "free": 123456789504},
        {"label": "Recovery", "serial": 3735928559, "total": 1000000512, "free": 512}])"));
    writeFile(folder.filePath(QStringLiteral("2.json")), disk("R", R"("removable": true,
        "volumes": [{"label": "STICK", "fileSystem": "FAT32", "root": "E:\\", "total": 16000000000, "free": 8000000000}])"));
    writeFile(folder.filePath(QStringLiteral("3.json")), disk("S", R"("volumes": [
        {"label": "System", "root": "C:\\", "total": 100000000000, "free": 50000000000}])"));
    QStringList errors;
    auto backend = SimulatedBackend::load({folder.path()}, &errors);
    QVERIFY2(errors.isEmpty(), qPrintable(errors.join('\n')));

    const std::vector<std::string> names = backend->volumeNames();
    QCOMPARE(names, (std::vector<std::string>{"\\\\?\\Volume{sim-0-0}\\", "\\\\?\\Volume{sim-0-1}\\",
                                               "\\\\?\\Volume{sim-1-0}\\", "\\\\?\\Volume{sim-2-0}\\"}));
    QCOMPARE(backend->isFixedVolume(names[1]), true);
    QCOMPARE(backend->isFixedVolume(names[2]), false);
    std::int32_t number = -1;
    QVERIFY(backend->volumeDeviceNumber(names[3], number));
    QCOMPARE(number, 2);

    for (const std::string &name : {names[0], names[1]}) {
        VolumeSpace space;
        QVERIFY(backend->volumeSpace(name, space));
        const quint64 cluster = space.sectorsPerCluster * space.bytesPerSector;
        const bool first = name == names[0];
        QCOMPARE(cluster * space.totalClusters, first ? quint64(600000000000) : quint64(1000000512));
        QCOMPARE(cluster * space.freeClusters, first ? quint64(123456789504) : quint64(512));
    }
    VolumeInformation info;
    QVERIFY(backend->volumeInformation(names[0], info));
    QCOMPARE(info.serialNumber, 0x1A2B3C4Du);
    QVERIFY(backend->volumeInformation(names[1], info));
    QCOMPARE(info.fileSystem, std::string("NTFS"));
    QCOMPARE(info.serialNumber, 0xDEADBEEFu);

    // Roots of fixed volumes only, in drive-letter order.
    const std::vector<MountPoint> mounts = backend->mountPoints();
    QCOMPARE(mounts.size(), std::size_t(2));
    QCOMPARE(mounts[0].root + mounts[0].volumeName, "C:\\" + names[3]);
    QCOMPARE(mounts[1].root + mounts[1].volumeName, "D:\\" + names[0]);

    DiskGeometry g;
    QVERIFY(backend->geometry(backend->openDisk("sim://1"), g));
    QCOMPARE(g.mediaType, 11u);
    QVERIFY(backend->geometry(backend->openDisk("sim://0"), g));
    QCOMPARE(g.mediaType, kFixedMedia);
    QCOMPARE(g.cylinders, quint64(1000204886016) / (512 * 63 * 255));
}

void TestSimulatedBackend::hangIsInterruptible()
{
    QTemporaryDir folder;
    writeFile(folder.filePath(QStringLiteral("1.json")), disk("H", R"("behaviour": {"hang": {"seconds": 60}})"));
    writeFile(folder.filePath(QStringLiteral("2.json")), disk("OK"));
    writeFile(folder.filePath(QStringLiteral("3.json")), disk("SLOW", R"("behaviour": {"hang": {"seconds": 0.3, "polls": [0]}})"));
    auto backend = SimulatedBackend::load({folder.path()}, nullptr);

    // A hanging disk holds up neither another disk nor the caller that gives up on it.
    const DiskHandle hung = backend->openDisk("sim://0");
    bool hungAnswered = true;
    QElapsedTimer timer;
    timer.start();
    std::thread worker([&] { hungAnswered = run(*backend, hung, smartRegisters(0xD0)).accepted; });
    const DiskHandle other = backend->openDisk("sim://1");
    QVERIFY(run(*backend, other, smartRegisters(0xD0)).accepted);
    QTest::qWait(100);
    backend->closeDisk(hung);
    worker.join();
    QVERIFY(!hungAnswered);
    QVERIFY(timer.elapsed() < 5000);

    // A short hang runs out and answers; the next poll does not hang.
    const DiskHandle slow = backend->openDisk("sim://2");
    timer.restart();
    QVERIFY(run(*backend, slow, smartRegisters(0xD0)).accepted);
    QVERIFY(timer.elapsed() >= 290);
    timer.restart();
    QVERIFY(run(*backend, slow, smartRegisters(0xD0)).accepted);
    QVERIFY(timer.elapsed() < 250);

    // cancelHangs ends a hang in progress and every later one.
    const DiskHandle again = backend->openDisk("sim://0");
    timer.restart();
    std::thread second([&] { hungAnswered = run(*backend, again, smartRegisters(0xD0)).accepted; });
    QTest::qWait(100);
    backend->cancelHangs();
    second.join();
    QVERIFY(!hungAnswered);
    QVERIFY(!run(*backend, again, smartRegisters(0xD0)).accepted);
    QVERIFY(timer.elapsed() < 5000);
}

void TestSimulatedBackend::surfaceReads()
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

    auto locked = loadJson(disk("L", R"("behaviour": {"openFails": true, "failingQueries": ["geometry"]})"));
    QCOMPARE(locked->openDisk("sim://0"), kNoHandle);
    QCOMPARE(locked->openForRead("sim://0", true), kNoHandle);
    auto odd = loadJson(disk("Q", R"("behaviour": {"failingQueries": ["geometry", "descriptor"]})"));
    const DiskHandle q = odd->openDisk("sim://0");
    DiskGeometry g;
    std::uint64_t length = 0;
    QVERIFY(!odd->geometry(q, g));
    QVERIFY(odd->diskLength(q, length));
    QCOMPARE(odd->deviceDescriptor(q, buffer.data(), 4096), -1);
}

QTEST_GUILESS_MAIN(TestSimulatedBackend)
#include "tst_simulatedbackend.moc"
