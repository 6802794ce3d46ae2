#include "FakeDriveBackend.h"

#include "device/DeviceDescriptor.h"
#include "device/DiskDiscovery.h"

#include <QtTest>

using Reply = FakeDriveBackend::AtaReply;
using Volume = FakeDriveBackend::Volume;

namespace {

Volume fixedVolume(const std::string &name, std::optional<std::int32_t> disk)
{
    Volume v;
    v.name = name;
    v.deviceNumber = disk;
    return v;
}

QList<DiskRecord> disksNumbered(std::initializer_list<int> numbers)
{
    QList<DiskRecord> disks;
    for (const int n : numbers) {
        DiskRecord d;
        d.diskNumber = n;
        disks.append(d);
    }
    return disks;
}

QStringList roots(const QList<VolumeRecord> &volumes)
{
    QStringList list;
    for (const VolumeRecord &v : volumes)
        list << QStringLiteral("%1=%2").arg(v.index).arg(v.rootPath);
    return list;
}

} // namespace

class TestDiskDiscovery : public QObject
{
    Q_OBJECT

private slots:
    void probesEveryIndex();
    void dropsUnmonitoredDisks_data();
    void dropsUnmonitoredDisks();
    void geometryAndVersion();
    void descriptorIdentity_data();
    void descriptorIdentity();
    void descriptorBounds_data();
    void descriptorBounds();
    void identifyPrecedence();
    void traceLines();
    void volumeRoots();
    void volumeFigures();
    void volumesOnDisks();
};

// A gap in the numbering is not the end of the disks.
void TestDiskDiscovery::probesEveryIndex()
{
    FakeDriveBackend backend;
    backend.addDisk(1);
    backend.addDisk(25).deviceNumber = 7;

    const QList<DiskRecord> disks = getDevice_Info(backend);
    QCOMPARE(disks.size(), 2);
    QCOMPARE(disks[0].diskNumber, 1);
    QCOMPARE(disks[0].devicePath, QStringLiteral("/fake/disk1"));
    QCOMPARE(disks[1].diskNumber, 7);
    QCOMPARE(backend.calls("openDisk").size(), 26u);
    QCOMPARE(backend.openHandleCount(), 0);
    // IDENTIFY addresses the drive by its probe index.
    for (const auto &call : backend.calls("ataCommand"))
        QVERIFY(call.probeIndex == 1 || call.probeIndex == 25);
}

void TestDiskDiscovery::dropsUnmonitoredDisks_data()
{
    QTest::addColumn<int>("fault");
    QTest::newRow("removable media") << 0;
    QTest::newRow("geometry fails") << 1;
    QTest::newRow("length fails") << 2;
    QTest::newRow("device number fails") << 3;
}

void TestDiskDiscovery::dropsUnmonitoredDisks()
{
    QFETCH(int, fault);
    FakeDriveBackend backend;
    FakeDriveBackend::Disk &disk = backend.addDisk(0);
    switch (fault) {
    case 0: disk.geometry->mediaType = 11; break;
    case 1: disk.geometry.reset(); break;
    case 2: disk.length.reset(); break;
    case 3: disk.deviceNumber.reset(); break;
    }
    backend.volumes = {fixedVolume("V0", 0)};

    QVERIFY(getDevice_Info(backend).isEmpty());
    QCOMPARE(backend.calls("closeDisk").size(), 1u);
    QCOMPARE(backend.openHandleCount(), 0);
    QVERIFY(backend.calls("ataCommand").empty());
    QVERIFY(backend.calls("volumeNames").empty());
}

void TestDiskDiscovery::geometryAndVersion()
{
    FakeDriveBackend backend;
    FakeDriveBackend::Disk &disk = backend.addDisk(0);
    disk.geometry = DiskGeometry{121601, kFixedMedia, 255, 63, 512};
    disk.length = 1000204886016ull; // not the product of the geometry
    disk.smartVersion = {{1, 17}};

    const DiskRecord d = getDevice_Info(backend).at(0);
    QCOMPARE(d.cylinders, 121601u);
    QCOMPARE(d.capacityBytes, 1000204886016ull);
    QCOMPARE(d.smartVersion, QStringLiteral("1"));
    QCOMPARE(d.smartRevision, QStringLiteral("17"));
    // No descriptor and no command path: identity stays empty, IDENTIFY defaults.
    QVERIFY(d.model.isEmpty() && d.serial.isEmpty() && d.firmware.isEmpty());
    QCOMPARE(d.ataMajorVersion, 0);
    QCOMPARE(backend.calls("deviceDescriptor").at(0).size, 4096);
}

void TestDiskDiscovery::descriptorIdentity_data()
{
    QTest::addColumn<QByteArray>("vendor");
    QTest::addColumn<QByteArray>("product");
    QTest::addColumn<QByteArray>("revision");
    QTest::addColumn<QByteArray>("serial");
    QTest::addColumn<QString>("model");
    QTest::addColumn<QString>("firmware");

    QTest::newRow("vendor and product") << QByteArray("ATA     ") << QByteArray(" ST1000DM003 ") << QByteArray(" CC43 ")
                                        << QByteArray("  Z1D5 ") << QStringLiteral("ATA ST1000DM003")
                                        << QStringLiteral("CC43");
    QTest::newRow("product alone") << QByteArray("   ") << QByteArray("Samsung SSD") << QByteArray("1B6Q")
                                   << QByteArray("S3Z") << QStringLiteral("Samsung SSD") << QStringLiteral("1B6Q");
    QTest::newRow("Latin-1") << QByteArray("Caf\xe9") << QByteArray("Disk\xb5") << QByteArray() << QByteArray()
                             << QStringLiteral("Caf\u00e9 Disk\u00b5") << QString();
}

void TestDiskDiscovery::descriptorIdentity()
{
    QFETCH(QByteArray, vendor);
    QFETCH(QByteArray, product);
    QFETCH(QByteArray, revision);
    QFETCH(QByteArray, serial);
    QFETCH(QString, model);
    QFETCH(QString, firmware);

    FakeDriveBackend backend;
    backend.addDisk(0).descriptor = FakeDriveBackend::makeDescriptor(
        vendor.toStdString(), product.toStdString(), revision.toStdString(), serial.toStdString());

    const DiskRecord d = getDevice_Info(backend).at(0);
    QCOMPARE(d.model, model);
    QCOMPARE(d.serial, QString::fromLatin1(serial)); // kept as returned
    QCOMPARE(d.firmware, firmware);
}

// Offsets must point past the header and into what was returned.
void TestDiskDiscovery::descriptorBounds_data()
{
    QTest::addColumn<int>("offset");
    QTest::addColumn<int>("returned");
    QTest::addColumn<QString>("product");

    QTest::newRow("inside the header") << 28 << 64 << QString();
    QTest::newRow("just past the header") << 29 << 64 << QStringLiteral("ABCDEFGHIJKLMNOPQRSTU");
    QTest::newRow("at the end of the reply") << 40 << 40 << QString();
    QTest::newRow("beyond the reply") << 500 << 64 << QString();
    QTest::newRow("string cut by the reply") << 36 << 40 << QStringLiteral("HIJK");
    QTest::newRow("too short for the offsets") << 29 << 18 << QString();
}

void TestDiskDiscovery::descriptorBounds()
{
    QFETCH(int, offset);
    QFETCH(int, returned);
    QFETCH(QString, product);

    std::vector<std::uint8_t> bytes(64, 0);
    for (int i = 29; i < 50; ++i)
        bytes[std::size_t(i)] = std::uint8_t('A' + i - 29);
    FakeDriveBackend::setDescriptorOffset(bytes, DeviceDescriptor::kProductOffsetField, std::uint32_t(offset));

    DiskRecord d;
    applyDeviceDescriptor(d, bytes.data(), returned);
    QCOMPARE(d.model, product);
    QVERIFY(d.serial.isEmpty() && d.firmware.isEmpty());
}

// The serial prefers IDENTIFY; model and firmware prefer the descriptor.
void TestDiskDiscovery::identifyPrecedence()
{
    FakeDriveBackend backend;
    FakeDriveBackend::Disk &disk = backend.addDisk(0);
    disk.descriptor = FakeDriveBackend::makeDescriptor("ATA", "From Descriptor", "D1", "DSERIAL");
    disk.setReply(AtaPassThroughPath, Reply::sector(FakeDriveBackend::makeIdentify("From Identify", "ISERIAL", "I1")));
    FakeDriveBackend::Disk &bare = backend.addDisk(1);
    bare.setReply(SmartIoctlPath, Reply::sector(FakeDriveBackend::makeIdentify("From Identify", "ISERIAL", "I1")));

    const QList<DiskRecord> disks = getDevice_Info(backend);
    QCOMPARE(disks[0].model, QStringLiteral("ATA From Descriptor"));
    QCOMPARE(disks[0].serial, QStringLiteral("ISERIAL"));
    QCOMPARE(disks[0].firmware, QStringLiteral("D1"));
    QCOMPARE(disks[0].smartSupported, 1);
    QCOMPARE(disks[1].model, QStringLiteral("From Identify"));
    QCOMPARE(disks[1].serial, QStringLiteral("ISERIAL"));
    QCOMPARE(disks[1].firmware, QStringLiteral("I1"));
}

void TestDiskDiscovery::traceLines()
{
    FakeDriveBackend backend;
    backend.addDisk(2);
    Volume cdrom = fixedVolume("\\\\?\\Volume{b}\\", {});
    cdrom.fixed = false;
    backend.volumes = {fixedVolume("\\\\?\\Volume{a}\\", 2), cdrom};

    QStringList lines;
    getDevice_Info(backend, [&](const QString &line) { lines << line; });
    QCOMPARE(lines.size(), 26 + 3);
    QCOMPARE(lines[0], QStringLiteral("Before get Info: /fake/disk0"));
    QCOMPARE(lines[25], QStringLiteral("Before get Info: /fake/disk25"));
    QCOMPARE(lines.mid(26), (QStringList{QStringLiteral("Before findLogicalVolumes"),
                                         QStringLiteral("Logical Volume: \\\\?\\Volume{a}\\"),
                                         QStringLiteral("Logical Volume: \\\\?\\Volume{b}\\")}));

    // Without disks there is nothing to attach volumes to.
    FakeDriveBackend empty;
    empty.volumes = backend.volumes;
    lines.clear();
    QVERIFY(getDevice_Info(empty, [&](const QString &line) { lines << line; }).isEmpty());
    QCOMPARE(lines.last(), QStringLiteral("Before findLogicalVolumes"));
    QVERIFY(empty.calls("volumeNames").empty());
}

// Letters go to the first matching volume; the rest are numbered in list
// order; a non-fixed volume is skipped but still counted.
void TestDiskDiscovery::volumeRoots()
{
    FakeDriveBackend backend;
    Volume optical = fixedVolume("OPT", {});
    optical.fixed = false;
    backend.volumes = {optical, fixedVolume("A", 0), fixedVolume("B", 0), fixedVolume("C", 0)};
    backend.mounts = {{"E:\\", "B"}, {"F:\\", "B"}, {"G:\\", "UNKNOWN"}};

    QList<DiskRecord> disks = disksNumbered({0});
    const QList<VolumeRecord> volumes = findLogicalVolumes(backend, disks);
    QCOMPARE(roots(volumes), (QStringList{"1=1:\\", "2=E:\\", "3=2:\\"}));
    QCOMPARE(roots(disks[0].volumes), roots(volumes));
}

void TestDiskDiscovery::volumeFigures()
{
    FakeDriveBackend backend;
    Volume full = fixedVolume("FULL", 0);
    full.space = VolumeSpace{8, 512, 1000, 250000000};
    full.information = VolumeInformation{"System", "NTFS", 0x1A2B3C4D};
    Volume small = fixedVolume("SMALL", 0);
    small.information = VolumeInformation{"", "FAT32", 0xABC};
    backend.volumes = {full, small, fixedVolume("BARE", {})};

    QList<DiskRecord> disks = disksNumbered({0});
    const QList<VolumeRecord> v = findLogicalVolumes(backend, disks);
    QCOMPARE(v.size(), 3);
    QCOMPARE(v[0].totalBytes, 8ull * 512 * 250000000);
    QCOMPARE(v[0].freeBytes, 8ull * 512 * 1000);
    QCOMPARE(v[0].label, QStringLiteral("System"));
    QCOMPARE(v[0].fileSystem, QStringLiteral("NTFS"));
    QCOMPARE(v[0].serialText, QStringLiteral("1A2B-3C4D"));
    QCOMPARE(v[1].serialText, QStringLiteral("0000-0ABC"));
    QCOMPARE(v[1].totalBytes, 0u);
    // Every query failed: the defaults stay.
    QCOMPARE(v[2].fileSystem, QStringLiteral("Unknown"));
    QVERIFY(v[2].label.isEmpty() && v[2].serialText.isEmpty());
    QCOMPARE(v[2].diskNumber, -1);
}

// Each volume goes to the first disk with its number, or to none.
void TestDiskDiscovery::volumesOnDisks()
{
    FakeDriveBackend backend;
    backend.volumes = {fixedVolume("ON1", 1), fixedVolume("ON0", 0), fixedVolume("ELSEWHERE", 7),
                       fixedVolume("UNKNOWN", {}), fixedVolume("ALSO1", 1)};

    QList<DiskRecord> disks = disksNumbered({0, 1, 1});
    const QList<VolumeRecord> volumes = findLogicalVolumes(backend, disks);
    QCOMPARE(volumes.size(), 5);
    QCOMPARE(disks[0].volumes.size(), 1);
    QCOMPARE(disks[0].volumes[0].volumeName, QStringLiteral("ON0"));
    QCOMPARE(disks[1].volumes.size(), 2);
    QCOMPARE(disks[1].volumes[1].volumeName, QStringLiteral("ALSO1"));
    QVERIFY(disks[2].volumes.isEmpty());
}

QTEST_GUILESS_MAIN(TestDiskDiscovery)
#include "tst_diskdiscovery.moc"
