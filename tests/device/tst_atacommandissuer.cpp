#include "FakeDriveBackend.h"

#include "device/AtaCommandIssuer.h"
#include "device/IdentifyDecoder.h"

#include <QtTest>

#include <numeric>

using Reply = FakeDriveBackend::AtaReply;

namespace {

constexpr int kProbe = 1;

// A sector that tells which path delivered it.
Sector sectorFrom(int path)
{
    Sector s;
    s.fill(std::uint8_t(0x10 + path));
    return s;
}

struct Fixture
{
    FakeDriveBackend backend;
    FakeDriveBackend::Disk *disk = &backend.addDisk(kProbe);
    DiskHandle handle = backend.openDisk(backend.diskPath(kProbe));
    Sector data = sectorFrom(7); // what the caller's buffer held before

    Fixture() { backend.clearCalls(); }
    int run(AtaRegisters &registers) { return AtaCommandIssuer::issue(backend, handle, kProbe, registers, data); }
    int run(AtaRegisters &&registers) { return run(registers); }
};

} // namespace

Q_DECLARE_METATYPE(Reply)

class TestAtaCommandIssuer : public QObject
{
    Q_OBJECT

private slots:
    // What the first path answers decides whether the next one is tried.
    void pathOrder_data()
    {
        QTest::addColumn<Reply>("path0");
        QTest::addColumn<Reply>("path1");
        QTest::addColumn<int>("expected");

        const Reply good0 = Reply::sector(sectorFrom(0));
        const Reply good1 = Reply::sector(sectorFrom(1));
        const auto with = [](Reply reply, const std::function<void(Reply &)> &change) {
            change(reply);
            return reply;
        };
        Sector sentinelAndData{};
        sentinelAndData[0] = 0xCF;
        sentinelAndData[511] = 1;

        QTest::newRow("path 0 answers") << good0 << good1 << 0;
        QTest::newRow("status without error bit")
            << with(good0, [](Reply &r) { r.registers = AtaRegisters{0, 1, 0, 0, 0, 0xA0, 0x50, 0}; }) << good1 << 0;
        QTest::newRow("sentinel but other data") << Reply::sector(sentinelAndData) << good1 << 0;
        QTest::newRow("path 0 refused") << Reply::refused() << good1 << 1;
        QTest::newRow("error bit in status")
            << with(good0, [](Reply &r) { r.registers = AtaRegisters{0x04, 0, 0, 0, 0, 0xA0, 0x51, 0}; }) << good1 << 1;
        QTest::newRow("short transfer") << with(good0, [](Reply &r) { r.bytesReturned = 511; }) << good1 << 1;
        QTest::newRow("nothing transferred") << Reply() << good1 << 1; // buffer left as sent: sentinel and zeros
        QTest::newRow("driver error on path 1")
            << Reply::refused() << with(good1, [](Reply &r) { r.driverError = 1; }) << 2;
        QTest::newRow("path 1 refused") << Reply::refused() << Reply::refused() << 2;
    }

    void pathOrder()
    {
        QFETCH(Reply, path0);
        QFETCH(Reply, path1);
        QFETCH(int, expected);

        Fixture f;
        f.disk->setReply(AtaPassThroughPath, path0);
        f.disk->setReply(SmartIoctlPath, path1);
        f.disk->setReply(IdePassThroughPath, Reply::sector(sectorFrom(2)));
        QCOMPARE(f.run(AtaCommandIssuer::identifyDevice()), expected);
        QCOMPARE(f.data, expected == 0 ? *path0.data : sectorFrom(expected));
        std::vector<int> tried(std::size_t(expected + 1));
        std::iota(tried.begin(), tried.end(), 0);
        QCOMPARE(f.backend.ataPaths(), tried);
        // The pass-through paths are handed the sentinel; the SMART interface a
        // drive/head byte that agrees with the drive number.
        for (const auto &call : f.backend.calls("ataCommand")) {
            QCOMPARE(call.probeIndex, kProbe);
            QCOMPARE(call.registers.driveHead, call.path == SmartIoctlPath ? 0xB0 : 0);
            if (call.path != SmartIoctlPath)
                QCOMPARE(call.firstDataByte, 0xCF);
        }
    }

    // The five commands reach the drive with their task file; anything else is
    // refused before the drive is touched.
    void commandSet_data()
    {
        QTest::addColumn<AtaRegisters>("registers");
        QTest::addColumn<QByteArray>("taskFile"); // features .. command, empty: refused
        QTest::addColumn<bool>("dataIn");

        QTest::newRow("IDENTIFY") << AtaCommandIssuer::identifyDevice() << QByteArray::fromHex("00010000 0000ec") << true;
        QTest::newRow("IDENTIFY PACKET") << AtaCommandIssuer::identifyPacketDevice()
                                         << QByteArray::fromHex("00010000 0000a1") << true;
        QTest::newRow("READ DATA") << AtaCommandIssuer::smartReadData() << QByteArray::fromHex("d001014f c200b0") << true;
        QTest::newRow("READ THRESHOLDS") << AtaCommandIssuer::smartReadThresholds()
                                         << QByteArray::fromHex("d101014f c200b0") << true;
        QTest::newRow("RETURN STATUS") << AtaCommandIssuer::smartReturnStatus()
                                       << QByteArray::fromHex("da00004f c200b0") << false;
        for (const std::uint8_t command : {0x00, 0x25, 0xEF, 0xB1}) {
            AtaRegisters r;
            r.command = command;
            QTest::addRow("command %02x", command) << r << QByteArray() << false;
        }
    }

    void commandSet()
    {
        QFETCH(AtaRegisters, registers);
        QFETCH(QByteArray, taskFile);
        QFETCH(bool, dataIn);

        Fixture f;
        f.disk->setReply(AtaPassThroughPath, Reply::sector(sectorFrom(0)));
        f.disk->descriptor = FakeDriveBackend::makeDescriptor("", "Disk", "1", "");
        const int result = f.run(registers);
        if (taskFile.isEmpty()) {
            QCOMPARE(result, -1);
            QVERIFY(f.backend.calls().empty());
            QCOMPARE(f.data, sectorFrom(7));
            return;
        }
        QCOMPARE(result, 0);
        const auto call = f.backend.calls("ataCommand").at(0);
        QCOMPARE(QByteArray(reinterpret_cast<const char *>(&call.registers), 7).toHex(), taskFile.toHex());
        QCOMPARE(call.dataIn, dataIn);
        // A command without data leaves the caller's buffer alone.
        QCOMPARE(f.data, dataIn ? sectorFrom(0) : sectorFrom(7));
    }

    // RETURN STATUS answers in the registers; the SMART interface gives them back
    // only for that command, the pass-through paths for every command.
    void returnedRegisters()
    {
        Reply answer = Reply::sector(sectorFrom(1));
        answer.registers = AtaRegisters{0, 0, 0, 0xF4, 0x2C, 0xA0, 0x50, 0};

        Fixture f;
        f.disk->setReply(SmartIoctlPath, answer);
        AtaRegisters status = AtaCommandIssuer::smartReturnStatus();
        QCOMPARE(f.run(status), 1);
        QCOMPARE(status.cylinderLow, 0xF4);
        QCOMPARE(status.cylinderHigh, 0x2C);
        AtaRegisters read = AtaCommandIssuer::smartReadData();
        QCOMPARE(f.run(read), 1);
        QCOMPARE(read.cylinderLow, 0x4F);

        Fixture g;
        g.disk->setReply(AtaPassThroughPath, answer);
        AtaRegisters identify = AtaCommandIssuer::identifyDevice();
        QCOMPARE(g.run(identify), 0);
        QCOMPARE(identify.cylinderLow, 0xF4);
    }

    // A disk that answers no command still gets an IDENTIFY sector, made from its
    // descriptor, that claims SMART.
    void descriptorFallback_data()
    {
        QTest::addColumn<QByteArray>("product");
        QTest::addColumn<QByteArray>("revision");
        QTest::addColumn<QString>("model");
        QTest::addColumn<QString>("firmware");

        QTest::newRow("plain") << QByteArray("SSD 860 EVO") << QByteArray("RVT04B6Q") << "SSD 860 EVO" << "RVT04B6Q";
        QTest::newRow("cut at CR") << QByteArray("Disk\rjunk") << QByteArray("1.0\n2") << "Disk" << "1.0";
        QTest::newRow("too long") << QByteArray(45, 'M') << QByteArray("123456789") << QString(40, 'M') << "12345678";
        QTest::newRow("no descriptor either") << QByteArray() << QByteArray() << QString() << QString();
    }

    void descriptorFallback()
    {
        QFETCH(QByteArray, product);
        QFETCH(QByteArray, revision);

        Fixture f;
        if (!product.isNull())
            f.disk->descriptor = FakeDriveBackend::makeDescriptor("ATA", product.toStdString(), revision.toStdString(), "S");
        const int result = f.run(AtaCommandIssuer::identifyDevice());
        QCOMPARE(f.backend.ataPaths(), (std::vector<int>{0, 1, 2}));
        if (product.isNull()) {
            QCOMPARE(result, -1);
            QCOMPARE(f.data, sectorFrom(7));
            return;
        }
        QCOMPARE(result, 3);
        QCOMPARE(f.backend.calls("deviceDescriptor").at(0).size, 256);

        QTEST(IdentifyDecoder::decodeString(f.data, IdentifyDecoder::kModelOffset, 40), "model");
        QTEST(IdentifyDecoder::decodeString(f.data, IdentifyDecoder::kFirmwareOffset, 8), "firmware");
        QCOMPARE(sectorWord(f.data, 47), 0); // nothing past the model field
        QVERIFY(IdentifyDecoder::decodeString(f.data, IdentifyDecoder::kSerialOffset, 20).isEmpty());
        QCOMPARE(f.data[511], 0);
        QCOMPARE(IdentifyDecoder::smartSupported(f.data), 1);
        QCOMPARE(IdentifyDecoder::smartEnabled(f.data), 1);
        QCOMPARE(IdentifyDecoder::ataVersion(f.data).major, 3);
    }
};

QTEST_GUILESS_MAIN(TestAtaCommandIssuer)
#include "tst_atacommandissuer.moc"
