// The byte-level pieces of the Linux backend, fed with hand-made replies:
// pass-through commands and sense data, the device descriptor, volume
// serials, mount point escapes and disk names.

#include "device/AtaCommandIssuer.h"
#include "device/DeviceDescriptor.h"
#include "device/linux/AtaPassThrough.h"
#include "device/linux/BlockProbe.h"
#include "device/linux/MountTable.h"
#include "device/linux/ScsiIdentity.h"
#include "device/linux/SysfsBlock.h"

#include <QtTest>

#include <vector>

using Bytes = std::vector<std::uint8_t>;
Q_DECLARE_METATYPE(Bytes)

class TestLinuxBackendBytes : public QObject
{
    Q_OBJECT

private slots:
    void passThroughCommands()
    {
        // PIO data-in from the device, in blocks, the count in the sector count field.
        AtaRegisters read = AtaCommandIssuer::smartReadData();
        read.driveHead = 0xA0;
        const auto in12 = AtaPassThrough::command12(read, true);
        QCOMPARE(Bytes(in12.begin(), in12.end()), (Bytes{0xA1, 4 << 1, 0x0E, 0xD0, 1, 1, 0x4F, 0xC2, 0xA0, 0xB0, 0, 0}));
        // Non-data with CK_COND: the registers must come back.
        const auto status16 = AtaPassThrough::command16(AtaCommandIssuer::smartReturnStatus(), false);
        QCOMPARE(std::pair(int(status16[1]), int(status16[2])), std::pair(3 << 1, 0x20));
    }

    void senseData_data()
    {
        QTest::addColumn<Bytes>("sense");
        QTest::addColumn<int>("key");      // -1: not sense data at all
        QTest::addColumn<Bytes>("taskFile"); // error, count, LBA low, mid, high, device, status; empty: none

        // RECOVERED ERROR, 00/1D, an information descriptor first, then the
        // ATA Status Return descriptor of a drive past its threshold.
        const Bytes descriptor = {0x72, 0x01, 0x00, 0x1D, 0, 0, 0, 26, 0x00, 0x0A, 0x80, 0, 0, 0, 0, 0, 0,
                                  0,    0,    0,    0x09, 0x0C, 0x00, 0x04, 0x00, 0x07, 0x00, 0x11, 0x00,
                                  0xF4, 0x00, 0x2C, 0xA0, 0x51};
        Bytes hidden = descriptor;
        hidden[7] = 12;
        // Fixed format: error, status, device, count in the information field,
        // LBA in the command-specific field, marked by 00/1D.
        const Bytes fixed = {0x70, 0, 0x01, 0x00, 0x50, 0x40, 0x02, 10, 0, 0x00, 0x4F, 0xC2, 0x00, 0x1D, 0, 0, 0, 0};
        const Bytes atThreshold = {0x04, 0x07, 0x11, 0xF4, 0x2C, 0xA0, 0x51};

        QTest::newRow("descriptor") << descriptor << 1 << atThreshold;
        QTest::newRow("descriptor cut by the sense length") << Bytes(descriptor.begin(), descriptor.end() - 3) << 1 << Bytes();
        QTest::newRow("descriptor beyond the additional length") << hidden << 1 << Bytes();
        QTest::newRow("fixed") << fixed << 1 << Bytes{0x00, 0x02, 0x00, 0x4F, 0xC2, 0x40, 0x50};
        // A SCSI disk that does not know the command: its zero fields are no task file.
        QTest::newRow("fixed, invalid opcode")
            << Bytes{0xF0, 0, 0x05, 0, 0, 0, 0, 10, 0, 0, 0, 0, 0x20, 0x00, 0, 0, 0, 0} << 5 << Bytes();
        QTest::newRow("fixed, too short") << Bytes(fixed.begin(), fixed.begin() + 7) << -1 << Bytes();
        QTest::newRow("unknown response code") << Bytes{0x7F, 0, 0, 0, 0, 0, 0, 0} << -1 << Bytes();
    }

    void senseData()
    {
        QFETCH(Bytes, sense);
        QFETCH(int, key);
        QFETCH(Bytes, taskFile);
        const auto parsed = AtaPassThrough::parseSense(sense.data(), int(sense.size()));
        QCOMPARE(parsed ? int(parsed->key) : -1, key);
        Bytes got;
        if (parsed && parsed->registers) {
            const AtaRegisters &r = *parsed->registers;
            got = {r.features, r.sectorCount, r.sectorNumber, r.cylinderLow, r.cylinderHigh, r.driveHead, r.command};
        }
        QCOMPARE(got, taskFile);
    }

    void identityBusAndDescriptor()
    {
        // A SATA disk behind a USB bridge that translates is still ATA, but on USB.
        ScsiIdentity::Inquiry ata, scsi;
        ata.vendor = "ATA";
        scsi.vendor = "SEAGATE";
        QCOMPARE(ScsiIdentity::chooseIdentity(ata, std::nullopt, std::nullopt, false).busType, ScsiIdentity::kBusAta);
        QCOMPARE(ScsiIdentity::chooseIdentity(ata, std::nullopt, std::nullopt, true).busType, ScsiIdentity::kBusUsb);
        QCOMPARE(ScsiIdentity::chooseIdentity(scsi, std::nullopt, std::nullopt, false).busType, ScsiIdentity::kBusScsi);

        // A buffer that only holds the product: the others are absent, not cut,
        // and the size still says what the whole descriptor needs.
        ScsiIdentity::DriveIdentity id;
        id.product = "WDC WD5000AAKS-00V1A0";
        id.revision = "05.01D05";
        id.serial = "WD-WCAWF1234567";
        Bytes small(80, 0xEE);
        const int m = DeviceDescriptor::write(id, small.data(), 64);
        QCOMPARE(m, 64);
        QCOMPARE(int(small[4]), 40 + 22 + 9 + 16);
        QCOMPARE(DeviceDescriptor::stringAt(small.data(), m, DeviceDescriptor::kProductOffsetField), id.product);
        QCOMPARE(int(small[20] | small[24]), 0);
        QCOMPARE(small[64], 0xEE); // nothing written past the buffer's end
        QCOMPARE(DeviceDescriptor::write(id, small.data(), 7), -1);
    }

    void volumeSerial()
    {
        // The serial the file system keeps (FAT's XXXX-XXXX, the low half of
        // NTFS's), else the UUID's first eight hex digits.
        const std::vector<std::pair<std::string, qint64>> cases = {
            {"1A2B-3C4D", 0x1A2B3C4D}, {"0123456789ABCDEF", 0x89ABCDEF},
            {"3b9f2c1e-7d45-4a60-9e21-5c8d0f6a4b17", 0x3B9F2C1E}, {"2023-01-15-10-30-00-00", 0x20230115},
            {"abc", -1}, {"xyz-1234", -1}};
        for (const auto &[uuid, serial] : cases) {
            const auto value = BlockProbe::serialFromUuid(uuid);
            QCOMPARE(value ? qint64(*value) : qint64(-1), serial);
        }
    }

    void names()
    {
        // A backslash that starts no escape in a mount point stays.
        QCOMPARE(MountTable::unescape("a\\9b\\04"), std::string("a\\9b\\04"));
        for (const auto &[name, index] : std::vector<std::pair<std::string, int>>{
                 {"sda", 0}, {"sdz", 25}, {"sdaa", 26}, {"sda1", -1}, {"nvme0n1", -1}, {"sd", -1}})
            QCOMPARE(SysfsBlock::diskIndex(name), index);

        std::vector<std::string> names = {"sdaa", "sda10", "sdb", "sda2", "sdz", "sda", "nvme0n1", "hda"};
        std::sort(names.begin(), names.end(), SysfsBlock::naturalLess);
        // Letter runs compare by length first, which puts sdz before sdaa.
        const std::vector<std::string> expected = {"hda", "sda", "sda2", "sda10", "sdb", "sdz", "nvme0n1", "sdaa"};
        QCOMPARE(names, expected);
    }
};
QTEST_GUILESS_MAIN(TestLinuxBackendBytes)
#include "tst_linuxbackendbytes.moc"