#include "FakeDriveBackend.h"

#include "device/DeviceDescriptor.h"
#include "device/DiskDiscovery.h"
#include "device/VolumeMapper.h"

#include <QtTest>

using Reply = FakeDriveBackend::AtaReply;
using Volume = FakeDriveBackend::Volume;

namespace {

Volume volume(const std::string &name, std::optional<std::int32_t> disk, bool fixed = true)
{
    Volume v;
    v.name = name;
    v.deviceNumber = disk;
    v.fixed = fixed;
    return v;
}

} // namespace

class TestDiskDiscovery : public QObject
{
    Q_OBJECT

private slots:
    // A gap in the numbering is not the end of the disks; every probe is traced.
    void probesEveryIndex()
    {
        FakeDriveBackend backend;
        backend.addDisk(1);
        backend.addDisk(25).deviceNumber = 7;
        backend.volumes = {volume("\\\\?\\Volume{a}\\", 7), volume("\\\\?\\Volume{b}\\", {}, false)};

        QStringList lines;
        const QList<DiskRecord> disks = getDevice_Info(backend, [&](const QString &line) { lines << line; });
        QCOMPARE(disks.size(), 2);
        QCOMPARE(disks[0].diskNumber, 1);
        QCOMPARE(disks[0].devicePath, QStringLiteral("/fake/disk1"));
        QCOMPARE(disks[1].diskNumber, 7);
        QCOMPARE(disks[1].volumes.size(), 1);
        QCOMPARE(backend.calls("openDisk").size(), 26u);
        QCOMPARE(backend.openHandleCount(), 0);
        // IDENTIFY addresses the drive by its probe index.
        for (const auto &call : backend.calls("ataCommand"))
            QVERIFY(call.probeIndex == 1 || call.probeIndex == 25);

        QCOMPARE(lines.size(), 26 + 3);
        QCOMPARE(lines[0], QStringLiteral("Before get Info: /fake/disk0"));
        QCOMPARE(lines[25], QStringLiteral("Before get Info: /fake/disk25"));
        QCOMPARE(lines.mid(26), (QStringList{QStringLiteral("Before findLogicalVolumes"),
                                             QStringLiteral("Logical Volume: \\\\?\\Volume{a}\\"),
                                             QStringLiteral("Logical Volume: \\\\?\\Volume{b}\\")}));
    }

    void dropsUnmonitoredDisks_data()
    {
        QTest::addColumn<int>("fault");
        QTest::newRow("removable media") << 0;
        QTest::newRow("geometry fails") << 1;
        QTest::newRow("length fails") << 2;
        QTest::newRow("device number fails") << 3;
    }

    void dropsUnmonitoredDisks()
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
        backend.volumes = {volume("V0", 0)};

        QVERIFY(getDevice_Info(backend).isEmpty());
        QCOMPARE(backend.calls("closeDisk").size(), 1u);
        QVERIFY(backend.calls("ataCommand").empty());
        // Without disks there is nothing to attach volumes to.
        QVERIFY(backend.calls("volumeNames").empty());
    }

    // Geometry, descriptor and IDENTIFY each fill their part of the record; the
    // descriptor's model and firmware win, IDENTIFY's serial wins.
    void identity()
    {
        FakeDriveBackend backend;
        FakeDriveBackend::Disk &full = backend.addDisk(0);
        full.geometry = DiskGeometry{121601, kFixedMedia, 255, 63, 512};
        full.length = 1000204886016ull; // not the product of the geometry
        full.smartVersion = {{1, 17}};
        full.descriptor = FakeDriveBackend::makeDescriptor("ATA     ", " ST1000DM003 ", " CC43 ", "DSERIAL");
        const Sector identify = FakeDriveBackend::makeIdentify("From Identify", "ISERIAL", "I1");
        full.setReply(AtaPassThroughPath, Reply::sector(identify));
        backend.addDisk(1).setReply(SmartIoctlPath, Reply::sector(identify));
        backend.addDisk(2).descriptor = FakeDriveBackend::makeDescriptor("   ", "Caf\xe9 Disk\xb5", "", "  Z1D5 ");

        const QList<DiskRecord> d = getDevice_Info(backend);
        QCOMPARE(d.size(), 3);
        QCOMPARE(d[0].cylinders, 121601u);
        QCOMPARE(d[0].capacityBytes, 1000204886016ull);
        QCOMPARE(d[0].smartVersion + '.' + d[0].smartRevision, QStringLiteral("1.17"));
        QCOMPARE(QStringList({d[0].model, d[0].serial, d[0].firmware}), QStringList({"ATA ST1000DM003", "ISERIAL", "CC43"}));
        QCOMPARE(d[0].smartSupported, 1);
        QCOMPARE(QStringList({d[1].model, d[1].serial, d[1].firmware}), QStringList({"From Identify", "ISERIAL", "I1"}));
        // Latin-1 text; a blank vendor leaves the product alone; the serial is kept as returned.
        QCOMPARE(QStringList({d[2].model, d[2].serial, d[2].firmware}),
                 QStringList({QStringLiteral("Caf\u00e9 Disk\u00b5"), "  Z1D5 ", ""}));
        QCOMPARE(backend.calls("deviceDescriptor").at(0).size, 4096);
    }

    // Offsets must point past the header and into what was returned.
    void descriptorBounds_data()
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

    void descriptorBounds()
    {
        QFETCH(int, offset);
        QFETCH(int, returned);

        std::vector<std::uint8_t> bytes(64, 0);
        bytes[28] = '@'; // the last header byte, not text
        for (int i = 29; i < 50; ++i)
            bytes[std::size_t(i)] = std::uint8_t('A' + i - 29);
        FakeDriveBackend::setDescriptorOffset(bytes, DeviceDescriptor::kProductOffsetField, std::uint32_t(offset));

        DiskRecord d;
        applyDeviceDescriptor(d, bytes.data(), returned);
        QTEST(d.model, "product");
        QVERIFY(d.serial.isEmpty() && d.firmware.isEmpty());
    }

    // Letters go to the first volume a mount names; the rest are numbered in list
    // order; a non-fixed volume is skipped but still counted. Each volume goes to
    // the first disk with its number, or to none.
    void volumes()
    {
        FakeDriveBackend backend;
        Volume full = volume("FULL", 1);
        full.space = VolumeSpace{8, 512, 1000, 250000000};
        full.information = VolumeInformation{"System", "NTFS", 0x1A2B3C4D};
        Volume small = volume("SMALL", 0);
        small.information = VolumeInformation{"", "FAT32", 0xABC};
        backend.volumes = {volume("OPT", {}, false), full, small, volume("BARE", {}), volume("ALSO1", 1), volume("AWAY", 7)};
        backend.mounts = {{"E:\\", "SMALL"}, {"F:\\", "SMALL"}, {"G:\\", "UNKNOWN"}};
        QList<DiskRecord> disks(3);
        disks[0].diskNumber = 0;
        disks[1].diskNumber = disks[2].diskNumber = 1;

        const QList<VolumeRecord> v = findLogicalVolumes(backend, disks);
        const auto list = [](const QList<VolumeRecord> &volumes) {
            QStringList out;
            for (const VolumeRecord &volume : volumes)
                out << QStringLiteral("%1=%2 %3").arg(volume.index).arg(volume.rootPath, volume.volumeName);
            return out.join(QLatin1String(", "));
        };
        QCOMPARE(list(v), QStringLiteral("1=1:\\ FULL, 2=E:\\ SMALL, 3=2:\\ BARE, 4=3:\\ ALSO1, 5=4:\\ AWAY"));
        QCOMPARE(list(disks[0].volumes), QStringLiteral("2=E:\\ SMALL"));
        QCOMPARE(list(disks[1].volumes), QStringLiteral("1=1:\\ FULL, 4=3:\\ ALSO1"));
        QVERIFY(disks[2].volumes.isEmpty());

        QCOMPARE(v[0].totalBytes, 8ull * 512 * 250000000);
        QCOMPARE(v[0].freeBytes, 8ull * 512 * 1000);
        QCOMPARE(QStringList({v[0].label, v[0].fileSystem, v[0].serialText}), QStringList({"System", "NTFS", "1A2B-3C4D"}));
        QCOMPARE(v[1].serialText, QStringLiteral("0000-0ABC"));
        QCOMPARE(v[1].totalBytes, 0u);
        // Every query failed: the defaults stay.
        QCOMPARE(QStringList({v[2].label, v[2].fileSystem, v[2].serialText}), QStringList({"", "Unknown", ""}));
        QCOMPARE(v[2].diskNumber, -1);
    }
};

QTEST_GUILESS_MAIN(TestDiskDiscovery)
#include "tst_diskdiscovery.moc"
