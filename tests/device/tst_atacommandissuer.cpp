#include "FakeDriveBackend.h"

#include "device/AtaCommandIssuer.h"

#include <QtTest>

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

// The text the sector stores at \a offset, read back in drive byte order up to
// the first NUL.
std::string storedText(const Sector &s, int offset, int length)
{
    std::string text;
    for (int i = 0; i < length; ++i) {
        const char c = char(s[std::size_t(offset + (i ^ 1))]);
        if (c == 0)
            break;
        text.push_back(c);
    }
    return text;
}

struct Fixture
{
    FakeDriveBackend backend;
    FakeDriveBackend::Disk *disk = nullptr;
    DiskHandle handle = kNoHandle;

    Fixture()
    {
        disk = &backend.addDisk(kProbe);
        handle = backend.openDisk(backend.diskPath(kProbe));
        backend.clearCalls();
    }
    int run(AtaRegisters &registers, Sector &data)
    {
        return AtaCommandIssuer::issue(backend, handle, kProbe, registers, data);
    }
};

} // namespace

Q_DECLARE_METATYPE(Reply)
Q_DECLARE_METATYPE(std::vector<int>)

class TestAtaCommandIssuer : public QObject
{
    Q_OBJECT

private slots:
    void pathOrder_data();
    void pathOrder();
    void requestsPerPath();
    void commandSet_data();
    void commandSet();
    void returnedRegisters();
    void descriptorFallback_data();
    void descriptorFallback();
    void descriptorFailure();
};

// What the first path answers decides whether the next one is tried.
void TestAtaCommandIssuer::pathOrder_data()
{
    QTest::addColumn<Reply>("path0");
    QTest::addColumn<Reply>("path1");
    QTest::addColumn<int>("expected");
    QTest::addColumn<std::vector<int>>("tried");

    const Reply good0 = Reply::sector(sectorFrom(0));
    const Reply good1 = Reply::sector(sectorFrom(1));
    Reply errorStatus = good0;
    errorStatus.registers = AtaRegisters{0x04, 0, 0, 0, 0, 0xA0, 0x51, 0};
    Reply cleanStatus = good0;
    cleanStatus.registers = AtaRegisters{0, 1, 0, 0, 0, 0xA0, 0x50, 0};
    Reply shortTransfer = good0;
    shortTransfer.bytesReturned = 511;
    Reply nothing; // accepted, buffer left as sent: sentinel and zeros
    Reply sentinelAndData = good0;
    sentinelAndData.data->fill(0);
    (*sentinelAndData.data)[0] = 0xCF;
    (*sentinelAndData.data)[511] = 1;
    Reply driverError = good1;
    driverError.driverError = 1;

    QTest::newRow("path 0 answers") << good0 << good1 << 0 << std::vector<int>{0};
    QTest::newRow("status without error bit") << cleanStatus << good1 << 0 << std::vector<int>{0};
    QTest::newRow("sentinel but other data") << sentinelAndData << good1 << 0 << std::vector<int>{0};
    QTest::newRow("path 0 refused") << Reply::refused() << good1 << 1 << std::vector<int>{0, 1};
    QTest::newRow("error bit in status") << errorStatus << good1 << 1 << std::vector<int>{0, 1};
    QTest::newRow("short transfer") << shortTransfer << good1 << 1 << std::vector<int>{0, 1};
    QTest::newRow("nothing transferred") << nothing << good1 << 1 << std::vector<int>{0, 1};
    QTest::newRow("driver error on path 1") << Reply::refused() << driverError << 2 << std::vector<int>{0, 1, 2};
    QTest::newRow("path 1 refused") << Reply::refused() << Reply::refused() << 2 << std::vector<int>{0, 1, 2};
}

void TestAtaCommandIssuer::pathOrder()
{
    QFETCH(Reply, path0);
    QFETCH(Reply, path1);
    QFETCH(int, expected);
    QFETCH(std::vector<int>, tried);

    Fixture f;
    f.disk->setReply(AtaPassThroughPath, path0);
    f.disk->setReply(SmartIoctlPath, path1);
    f.disk->setReply(IdePassThroughPath, Reply::sector(sectorFrom(2)));

    AtaRegisters registers = AtaCommandIssuer::identifyDevice();
    Sector data{};
    QCOMPARE(f.run(registers, data), expected);
    QCOMPARE(f.backend.ataPaths(), tried);
    if (expected == 0)
        QCOMPARE(data, *path0.data);
    else
        QCOMPARE(data, sectorFrom(expected));
}

// What each path is handed: the sentinel on the pass-through paths, and on the
// SMART interface a drive/head byte that agrees with the drive number.
void TestAtaCommandIssuer::requestsPerPath()
{
    Fixture f;
    f.disk->setReply(IdePassThroughPath, Reply::sector(sectorFrom(2)));
    AtaRegisters registers = AtaCommandIssuer::smartReadData();
    Sector data{};
    QCOMPARE(f.run(registers, data), 2);

    const auto calls = f.backend.calls("ataCommand");
    QCOMPARE(calls.size(), 3u);
    for (const auto &call : calls) {
        QCOMPARE(call.probeIndex, kProbe);
        QVERIFY(call.dataIn);
        QCOMPARE(call.registers.features, 0xD0);
    }
    QCOMPARE(calls[0].firstDataByte, 0xCF);
    QCOMPARE(calls[2].firstDataByte, 0xCF);
    QCOMPARE(calls[0].registers.driveHead, 0);
    QCOMPARE(calls[1].registers.driveHead, 0xB0);
}

// The five commands reach the drive with their task file; anything else is
// refused before the drive is touched.
void TestAtaCommandIssuer::commandSet_data()
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

void TestAtaCommandIssuer::commandSet()
{
    QFETCH(AtaRegisters, registers);
    QFETCH(QByteArray, taskFile);
    QFETCH(bool, dataIn);

    Fixture f;
    f.disk->setReply(AtaPassThroughPath, Reply::sector(sectorFrom(0)));
    f.disk->descriptor = FakeDriveBackend::makeDescriptor("", "Disk", "1", "");
    Sector data;
    data.fill(0x77);
    const int result = f.run(registers, data);

    if (taskFile.isEmpty()) {
        QCOMPARE(result, -1);
        QVERIFY(f.backend.calls().empty());
        QCOMPARE(data[0], 0x77);
        return;
    }
    QCOMPARE(result, 0);
    const auto call = f.backend.calls("ataCommand").at(0);
    const QByteArray sent(reinterpret_cast<const char *>(&call.registers), 7);
    QCOMPARE(sent.toHex(), taskFile.toHex());
    QCOMPARE(call.dataIn, dataIn);
    // A command without data leaves the caller's buffer alone.
    QCOMPARE(data[0], dataIn ? 0x10 : 0x77);
}

// RETURN STATUS answers in the registers; the SMART interface gives them back
// only for that command.
void TestAtaCommandIssuer::returnedRegisters()
{
    const AtaRegisters verdict{0, 0, 0, 0xF4, 0x2C, 0xA0, 0x50, 0};
    Reply answer;
    answer.registers = verdict;
    answer.data = sectorFrom(1);

    Fixture f;
    f.disk->setReply(SmartIoctlPath, answer);
    AtaRegisters status = AtaCommandIssuer::smartReturnStatus();
    Sector data{};
    QCOMPARE(f.run(status, data), 1);
    QCOMPARE(status.cylinderLow, 0xF4);
    QCOMPARE(status.cylinderHigh, 0x2C);

    AtaRegisters read = AtaCommandIssuer::smartReadData();
    QCOMPARE(f.run(read, data), 1);
    QCOMPARE(read.cylinderLow, 0x4F);
    QCOMPARE(data, sectorFrom(1));

    // The pass-through paths hand back the task file of every command.
    Fixture g;
    g.disk->setReply(AtaPassThroughPath, answer);
    AtaRegisters identify = AtaCommandIssuer::identifyDevice();
    QCOMPARE(g.run(identify, data), 0);
    QCOMPARE(identify.cylinderLow, 0xF4);
}

// A disk that answers no command still gets an IDENTIFY sector, made from its
// descriptor, that claims SMART.
void TestAtaCommandIssuer::descriptorFallback_data()
{
    QTest::addColumn<QByteArray>("product");
    QTest::addColumn<QByteArray>("revision");
    QTest::addColumn<QByteArray>("model");
    QTest::addColumn<QByteArray>("firmware");

    QTest::newRow("plain") << QByteArray("SSD 860 EVO") << QByteArray("RVT04B6Q") << QByteArray("SSD 860 EVO")
                           << QByteArray("RVT04B6Q");
    QTest::newRow("cut at CR") << QByteArray("Disk\rjunk") << QByteArray("1.0\n2") << QByteArray("Disk")
                               << QByteArray("1.0");
    QTest::newRow("too long") << QByteArray(45, 'M') << QByteArray("123456789") << QByteArray(40, 'M')
                              << QByteArray("12345678");
    QTest::newRow("no strings") << QByteArray() << QByteArray() << QByteArray() << QByteArray();
}

void TestAtaCommandIssuer::descriptorFallback()
{
    QFETCH(QByteArray, product);
    QFETCH(QByteArray, revision);
    QFETCH(QByteArray, model);
    QFETCH(QByteArray, firmware);

    Fixture f;
    f.disk->descriptor = FakeDriveBackend::makeDescriptor("ATA", product.toStdString(), revision.toStdString(), "S");
    AtaRegisters registers = AtaCommandIssuer::identifyDevice();
    Sector data;
    data.fill(0x55);
    QCOMPARE(f.run(registers, data), 3);
    QCOMPARE(f.backend.ataPaths(), (std::vector<int>{0, 1, 2}));
    QCOMPARE(f.backend.calls("deviceDescriptor").at(0).size, 256);

    QCOMPARE(QByteArray::fromStdString(storedText(data, 54, 40)), model);
    QCOMPARE(QByteArray::fromStdString(storedText(data, 46, 8)), firmware);
    QCOMPARE(sectorWord(data, 47), 0); // nothing past the model field
    QCOMPARE(sectorWord(data, 80), 8);
    QCOMPARE(sectorWord(data, 82), 1);
    QCOMPARE(sectorWord(data, 83), 0x4000);
    QCOMPARE(sectorWord(data, 85), 1);
    QCOMPARE(sectorWord(data, 87), 0x4000);
    QCOMPARE(storedText(data, 20, 20), std::string()); // no serial, no leftovers
    QCOMPARE(data[511], 0);
}

void TestAtaCommandIssuer::descriptorFailure()
{
    Fixture f;
    AtaRegisters registers = AtaCommandIssuer::identifyDevice();
    Sector data;
    data.fill(0x55);
    QCOMPARE(f.run(registers, data), -1);
    QCOMPARE(f.backend.ataPaths(), (std::vector<int>{0, 1, 2}));
    QCOMPARE(data[0], 0x55);
}

QTEST_GUILESS_MAIN(TestAtaCommandIssuer)
#include "tst_atacommandissuer.moc"
