// The byte-level pieces of the Linux backend, fed with hand-made replies:
// pass-through commands and sense data, INQUIRY and VPD pages, the device
// descriptor, the mount table, volume serials and disk names.

#include "device/AtaCommandIssuer.h"
#include "device/DeviceDescriptor.h"
#include "device/linux/AtaPassThrough.h"
#include "device/linux/BlockProbe.h"
#include "device/linux/MountTable.h"
#include "device/linux/ScsiIdentity.h"
#include "device/linux/SysfsBlock.h"

#include <QtTest>

#include <vector>

namespace {

using Bytes = std::vector<std::uint8_t>;

// Stores \a text the way a drive does: space-padded, byte pairs swapped.
void putAtaString(Sector &s, int firstWord, int words, const std::string &text)
{
    for (int i = 0; i < 2 * words; ++i) {
        const char c = i < int(text.size()) ? text[std::size_t(i)] : ' ';
        s[std::size_t(2 * firstWord + (i ^ 1))] = std::uint8_t(c);
    }
}

Sector identifySector(const std::string &model, const std::string &serial, const std::string &firmware)
{
    Sector s{};
    putAtaString(s, 27, 20, model);
    putAtaString(s, 10, 10, serial);
    putAtaString(s, 23, 4, firmware);
    return s;
}

Bytes makeAtaInformationPage(const Sector &identify)
{
    Bytes page(ScsiIdentity::kAtaInformationLength, 0);
    page[1] = 0x89;
    page[2] = 0x02;
    page[3] = 0x38;
    page[56] = 0xEC;
    std::copy(identify.begin(), identify.end(), page.begin() + 60);
    return page;
}

Bytes inquiryData(const char *vendor, const char *product, const char *revision, bool removable = false)
{
    Bytes d(36, ' ');
    d[0] = 0;
    d[1] = removable ? 0x80 : 0;
    std::copy(vendor, vendor + std::min<std::size_t>(strlen(vendor), 8), d.begin() + 8);
    std::copy(product, product + std::min<std::size_t>(strlen(product), 16), d.begin() + 16);
    std::copy(revision, revision + std::min<std::size_t>(strlen(revision), 4), d.begin() + 32);
    return d;
}

Bytes taskFile(const AtaRegisters &r)
{
    return {r.features, r.sectorCount, r.sectorNumber, r.cylinderLow, r.cylinderHigh, r.driveHead, r.command};
}

std::string descriptorString(const Bytes &buffer, int returned, int field)
{
    return DeviceDescriptor::stringAt(buffer.data(), returned, field);
}

} // namespace

class TestLinuxBackendBytes : public QObject
{
    Q_OBJECT

private slots:
    void passThroughCommands()
    {
        AtaRegisters read = AtaCommandIssuer::smartReadData();
        read.driveHead = 0xA0;
        // PIO data-in; from the device, in blocks, the count in the sector count field.
        const auto in16 = AtaPassThrough::command16(read, true);
        QCOMPARE(Bytes(in16.begin(), in16.end()),
                 (Bytes{0x85, 4 << 1, 0x0E, 0, 0xD0, 0, 1, 0, 1, 0, 0x4F, 0, 0xC2, 0xA0, 0xB0, 0}));
        const auto in12 = AtaPassThrough::command12(read, true);
        QCOMPARE(Bytes(in12.begin(), in12.end()), (Bytes{0xA1, 4 << 1, 0x0E, 0xD0, 1, 1, 0x4F, 0xC2, 0xA0, 0xB0, 0, 0}));
        // Non-data with CK_COND: the registers must come back.
        const auto status16 = AtaPassThrough::command16(AtaCommandIssuer::smartReturnStatus(), false);
        QCOMPARE(int(status16[1]), 3 << 1);
        QCOMPARE(int(status16[2]), 0x20);
    }

    void senseData()
    {
        // Descriptor format: RECOVERED ERROR, 00/1D, an information descriptor
        // first, then the ATA Status Return descriptor of a drive past its threshold.
        Bytes sense = {0x72, 0x01, 0x00, 0x1D, 0, 0, 0, 26, 0x00, 0x0A, 0x80, 0, 0, 0, 0, 0, 0, 0, 0, 0,
                       0x09, 0x0C, 0x00, 0x04, 0x00, 0x07, 0x00, 0x11, 0x00, 0xF4, 0x00, 0x2C, 0xA0, 0x51};
        auto parsed = AtaPassThrough::parseSense(sense.data(), int(sense.size()));
        QVERIFY(parsed && parsed->registers);
        QCOMPARE(parsed->key, AtaPassThrough::kSenseRecoveredError);
        // error, count, LBA low, mid, high, device, status
        QCOMPARE(taskFile(*parsed->registers), (Bytes{0x04, 0x07, 0x11, 0xF4, 0x2C, 0xA0, 0x51}));
        // Cut off by the sense length, or hidden by the additional length: no registers.
        QVERIFY(!AtaPassThrough::parseSense(sense.data(), int(sense.size()) - 3)->registers);
        sense[7] = 12;
        QVERIFY(!AtaPassThrough::parseSense(sense.data(), int(sense.size()))->registers);

        // Fixed format: error, status, device, count in the information
        // field, LBA in the command-specific field, marked by 00/1D.
        const Bytes fixed = {0x70, 0, 0x01, 0x00, 0x50, 0x40, 0x02, 10, 0, 0x00, 0x4F, 0xC2, 0x00, 0x1D, 0, 0, 0, 0};
        parsed = AtaPassThrough::parseSense(fixed.data(), int(fixed.size()));
        QVERIFY(parsed && parsed->registers);
        QCOMPARE(taskFile(*parsed->registers), (Bytes{0x00, 0x02, 0x00, 0x4F, 0xC2, 0x40, 0x50}));

        // A SCSI disk that does not know the command (ILLEGAL REQUEST, invalid
        // opcode): its zero fields must not pass for a task file.
        const Bytes illegal = {0xF0, 0, 0x05, 0, 0, 0, 0, 10, 0, 0, 0, 0, 0x20, 0x00, 0, 0, 0, 0};
        parsed = AtaPassThrough::parseSense(illegal.data(), int(illegal.size()));
        QVERIFY(parsed && !parsed->registers);
        QCOMPARE(parsed->key, AtaPassThrough::kSenseIllegalRequest);

        QVERIFY(!AtaPassThrough::parseSense(Bytes{0x7F, 0, 0, 0, 0, 0, 0, 0}.data(), 8));
        QVERIFY(!AtaPassThrough::parseSense(fixed.data(), 7));
    }

    void inquiryAndSerialPages()
    {
        const Bytes std = inquiryData("ATA", "WDC WD5000AAKS-0", "3B01", true);
        const auto inquiry = ScsiIdentity::parseInquiry(std.data(), int(std.size()));
        QVERIFY(inquiry);
        QCOMPARE(inquiry->vendor, std::string("ATA"));
        QCOMPARE(inquiry->product, std::string("WDC WD5000AAKS-0"));
        QCOMPARE(inquiry->revision, std::string("3B01"));
        QVERIFY(inquiry->removable);
        QVERIFY(!ScsiIdentity::parseInquiry(std.data(), 35));

        // The page length bounds the serial, trailing blanks go.
        const Bytes serialPage = {0x00, 0x80, 0x00, 0x0A, ' ', ' ', 'Z', '1', 'X', '2', ' ', ' ', 0, 0, 'J', 'U', 'N', 'K'};
        QCOMPARE(ScsiIdentity::parseUnitSerial(serialPage.data(), int(serialPage.size())).value_or("?"),
                 std::string("Z1X2"));
        Bytes wrongPage = serialPage;
        wrongPage[1] = 0x83;
        QVERIFY(!ScsiIdentity::parseUnitSerial(wrongPage.data(), int(wrongPage.size())));

        // The ATA Information page must be whole and what it says it is.
        Bytes page = makeAtaInformationPage(identifySector("M", "S", "F"));
        QVERIFY(ScsiIdentity::parseAtaInformation(page.data(), int(page.size())));
        QVERIFY(!ScsiIdentity::parseAtaInformation(page.data(), int(page.size()) - 1));
        page[1] = 0x83;
        QVERIFY(!ScsiIdentity::parseAtaInformation(page.data(), int(page.size())));
    }

    void identityChoice()
    {
        const Sector identify = identifySector("WDC WD5000AAKS-00V1A0", "WD-WCAWF1234567", "05.01D05");
        const auto ata = *ScsiIdentity::parseInquiry(inquiryData("ATA", "WDC WD5000AAKS-0", "1D05").data(), 36);

        // Behind libata: no "ATA" vendor, the whole model, IDENTIFY's serial and firmware.
        auto id = ScsiIdentity::chooseIdentity(ata, identify, std::string("unit-serial"), false);
        QCOMPARE(id.vendor, std::string());
        QCOMPARE(id.product, std::string("WDC WD5000AAKS-00V1A0"));
        QCOMPARE(id.revision, std::string("05.01D05"));
        QCOMPARE(id.serial, std::string("WD-WCAWF1234567"));
        QCOMPARE(id.busType, ScsiIdentity::kBusAta);

        // Without the ATA page the vendor still goes; the cut model is all there is.
        id = ScsiIdentity::chooseIdentity(ata, std::nullopt, std::string("WD-WCAWF1234567"), false);
        QCOMPARE(id.vendor, std::string());
        QCOMPARE(id.product, std::string("WDC WD5000AAKS-0"));
        QCOMPARE(id.serial, std::string("WD-WCAWF1234567"));

        // A SATA disk behind a USB bridge that translates: still ATA, but on USB.
        QCOMPARE(ScsiIdentity::chooseIdentity(ata, identify, std::nullopt, true).busType, ScsiIdentity::kBusUsb);

        // A SCSI disk keeps its INQUIRY identity and unit serial.
        const auto scsi = *ScsiIdentity::parseInquiry(inquiryData("SEAGATE", "ST3300657SS", "0006").data(), 36);
        id = ScsiIdentity::chooseIdentity(scsi, std::nullopt, std::string("6SJ0ABCD"), false);
        QCOMPARE(id.vendor + "|" + id.product + "|" + id.serial, std::string("SEAGATE|ST3300657SS|6SJ0ABCD"));
        QCOMPARE(id.busType, ScsiIdentity::kBusScsi);
    }

    void descriptorLayout()
    {
        ScsiIdentity::DriveIdentity id;
        id.removable = true;
        id.product = "WDC WD5000AAKS-00V1A0";
        id.revision = "05.01D05";
        id.serial = "WD-WCAWF1234567";
        id.busType = ScsiIdentity::kBusAta;

        Bytes buffer(4096, 0xEE);
        const int n = ScsiIdentity::writeDescriptor(id, buffer.data(), int(buffer.size()));
        QCOMPARE(n, 40 + 22 + 9 + 16);
        QCOMPARE(int(buffer[4] | buffer[5] << 8), n); // size
        QCOMPARE(buffer[10], 1);                      // removable
        QCOMPARE(int(buffer[28]), 3);                 // bus type
        QCOMPARE(int(buffer[12] | buffer[13] << 8), 0); // no vendor
        QCOMPARE(descriptorString(buffer, n, DeviceDescriptor::kProductOffsetField), id.product);
        QCOMPARE(descriptorString(buffer, n, DeviceDescriptor::kRevisionOffsetField), id.revision);
        QCOMPARE(descriptorString(buffer, n, DeviceDescriptor::kSerialOffsetField), id.serial);

        // A buffer that only holds the product: the others are absent, not cut.
        Bytes small(80, 0xEE);
        const int m = ScsiIdentity::writeDescriptor(id, small.data(), 64);
        QCOMPARE(m, 64);
        QCOMPARE(int(small[4]), n); // still the size it needs
        QCOMPARE(descriptorString(small, m, DeviceDescriptor::kProductOffsetField), id.product);
        QCOMPARE(int(small[20] | small[24]), 0);
        QCOMPARE(small[64], 0xEE); // nothing written past the buffer's end
        QCOMPARE(ScsiIdentity::writeDescriptor(id, small.data(), 7), -1);
    }

    void mountInfo()
    {
        const std::string text =
            "22 1 8:2 / / rw,relatime shared:1 - ext4 /dev/sda2 rw\n"
            "30 22 8:3 / /mnt/my\\040disk\\011tab\\134x rw master:3 shared:4 - vfat /dev/sda3 rw,fmask=0022\n"
            "31 22 0:45 /@home /home rw - btrfs /dev/sdb1 rw,subvol=/@home\n"
            "garbage line\n"
            "32 22 0:46 / /run rw - tmpfs tmpfs rw";
        const auto mounts = MountTable::parse(text);
        QCOMPARE(mounts.size(), std::size_t(4));
        QCOMPARE(std::pair(mounts[0].major, mounts[0].minor), std::pair(8u, 2u));
        QCOMPARE(mounts[1].mountPoint, std::string("/mnt/my disk\ttab\\x"));
        QCOMPARE(mounts[1].fileSystem + " " + mounts[1].source, std::string("vfat /dev/sda3"));
        QCOMPARE(mounts[2].root, std::string("/@home"));
        QCOMPARE(mounts[3].source, std::string("tmpfs"));
        // A backslash that starts no escape stays.
        QCOMPARE(MountTable::unescape("a\\9b\\04"), std::string("a\\9b\\04"));
    }

    void volumeSerial_data()
    {
        QTest::addColumn<QString>("uuid");
        QTest::addColumn<qint64>("serial"); // -1: none
        QTest::newRow("FAT") << "1A2B-3C4D" << qint64(0x1A2B3C4D);
        QTest::newRow("NTFS, low half") << "0123456789ABCDEF" << qint64(0x89ABCDEF);
        QTest::newRow("ext4 UUID") << "3b9f2c1e-7d45-4a60-9e21-5c8d0f6a4b17" << qint64(0x3B9F2C1E);
        QTest::newRow("too short") << "abc" << qint64(-1);
        QTest::newRow("not hex") << "xyz-1234" << qint64(-1);
    }

    void volumeSerial()
    {
        QFETCH(QString, uuid);
        QFETCH(qint64, serial);
        const auto value = BlockProbe::serialFromUuid(uuid.toStdString());
        QCOMPARE(value ? qint64(*value) : qint64(-1), serial);
    }

    void diskNames()
    {
        QCOMPARE(SysfsBlock::diskIndex("sda"), 0);
        QCOMPARE(SysfsBlock::diskIndex("sdz"), 25);
        QCOMPARE(SysfsBlock::diskIndex("sdaa"), 26);
        QCOMPARE(SysfsBlock::diskIndex("sda1"), -1);
        QCOMPARE(SysfsBlock::diskIndex("nvme0n1"), -1);
        QCOMPARE(SysfsBlock::diskIndex("sd"), -1);

        std::vector<std::string> names = {"sdaa", "sda10", "sdb", "sda2", "sdz", "sda", "nvme0n1", "hda"};
        std::sort(names.begin(), names.end(), SysfsBlock::naturalLess);
        // Letter runs compare by length first, which puts sdz before sdaa.
        const std::vector<std::string> expected = {"hda", "sda", "sda2", "sda10", "sdb", "sdz", "nvme0n1", "sdaa"};
        QCOMPARE(names, expected);
    }
};

QTEST_GUILESS_MAIN(TestLinuxBackendBytes)
#include "tst_linuxbackendbytes.moc"
