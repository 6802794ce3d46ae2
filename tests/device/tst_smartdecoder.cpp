#include "device/AttributeCatalogue.h"
#include "device/IdentifyDecoder.h"
#include "device/SmartDecoder.h"

#include <QtTest>

namespace {

struct Entry
{
    std::uint8_t id = 0;
    std::uint16_t flags = 0;
    std::uint8_t current = 0;
    std::uint8_t worst = 0;
    std::uint64_t raw = 0;
    std::uint8_t threshold = 0;
};

std::uint8_t *slot(Sector &s, int index)
{
    return s.data() + SmartDecoder::kFirstEntry + SmartDecoder::kEntrySize * index;
}

void putEntry(Sector &data, Sector &thresholds, int index, const Entry &e)
{
    std::uint8_t *d = slot(data, index);
    d[0] = e.id;
    d[1] = std::uint8_t(e.flags & 0xFF);
    d[2] = std::uint8_t(e.flags >> 8);
    d[3] = e.current;
    d[4] = e.worst;
    for (int i = 0; i < 6; ++i)
        d[5 + i] = std::uint8_t(e.raw >> (8 * i));
    std::uint8_t *t = slot(thresholds, index);
    t[0] = e.id;
    t[1] = e.threshold;
}

std::array<std::uint8_t, 12> entryBytes(std::uint8_t id, const QByteArray &rawBytes)
{
    std::array<std::uint8_t, 12> e{};
    e[0] = id;
    for (int i = 0; i < rawBytes.size(); ++i)
        e[5 + i] = std::uint8_t(rawBytes.at(i));
    return e;
}

// A disk read once with attributes 1, 9 (raw \a powerOn) and 194 (raw \a temperature).
DiskRecord firstReadDisk(std::uint64_t powerOn, std::uint64_t temperature)
{
    Sector data{}, thresholds{};
    putEntry(data, thresholds, 0, {1, 0x000F, 100, 90, 5, 16});
    putEntry(data, thresholds, 1, {9, 0x0032, 95, 95, powerOn, 0});
    putEntry(data, thresholds, 2, {194, 0x0022, 40, 30, temperature, 0});
    DiskRecord disk;
    SmartDecoder::applyFirstRead(disk, data, thresholds);
    return disk;
}

} // namespace

class TestSmartDecoder : public QObject
{
    Q_OBJECT

private slots:
    void decodeRaw_data();
    void decodeRaw();
    void rowCount_data();
    void rowCount();
    void rowFields_data();
    void rowFields();
    void thresholdsTakenBySlot();
    void statusAndCapabilityBytes();
    void temperatureSideEffects();
    void powerOnUnit_data();
    void powerOnUnit();
    void reReadUpdatesOnlyCurrentAndRaw();
    void reReadKeepsRowsBeyondCount();
};

void TestSmartDecoder::decodeRaw_data()
{
    QTest::addColumn<int>("id");
    QTest::addColumn<QByteArray>("rawBytes"); // storage order
    QTest::addColumn<qint64>("expected");

    QTest::newRow("small LE") << 5 << QByteArray::fromHex("450000000000") << qint64(69);
    QTest::newRow("all six bytes") << 10 << QByteArray::fromHex("630000002900") << qint64(176093659235);
    QTest::newRow("top byte") << 5 << QByteArray::fromHex("00000000d007") << qint64(8589934592000);
    QTest::newRow("48 bits all ones") << 1 << QByteArray::fromHex("ffffffffffff") << qint64(0xFFFFFFFFFFFF);
    QTest::newRow("194 whole degrees") << 194 << QByteArray::fromHex("2d0000000000") << qint64(45);
    QTest::newRow("194 tenths") << 194 << QByteArray::fromHex("9c0100000000") << qint64(41);
    QTest::newRow("194 exactly 100") << 194 << QByteArray::fromHex("640000000000") << qint64(100);
    QTest::newRow("194 101") << 194 << QByteArray::fromHex("650000000000") << qint64(10);
    QTest::newRow("194 min/max words ignored") << 194 << QByteArray::fromHex("1c000f003600") << qint64(28);
    QTest::newRow("194 byte 4 ignored") << 194 << QByteArray::fromHex("220000001400") << qint64(34);
    QTest::newRow("194 word all ones") << 194 << QByteArray::fromHex("ffff00000000") << qint64(6553);
    QTest::newRow("190 is not special") << 190 << QByteArray::fromHex("2200ffff2f00") << qint64(0x2FFFFF0022);
}

void TestSmartDecoder::decodeRaw()
{
    QFETCH(int, id);
    QFETCH(QByteArray, rawBytes);
    QTEST(SmartDecoder::decodeRaw(entryBytes(std::uint8_t(id), rawBytes).data()), "expected");
}

void TestSmartDecoder::rowCount_data()
{
    QTest::addColumn<QByteArray>("ids"); // entry IDs in slot order; the rest stays zero
    QTest::addColumn<int>("rows");

    QByteArray full;
    for (int i = 0; i < 30; ++i)
        full.append(char(i + 1));
    QTest::newRow("30 entries") << full << 30;
    QTest::newRow("one entry") << QByteArray("\x05", 1) << 1;
    QTest::newRow("ID 0 first") << QByteArray("\x00\x05\x09", 3) << 0;
    QTest::newRow("stops at first ID 0") << QByteArray("\x01\x03\x00\xc2\xc5", 5) << 2;
    QTest::newRow("empty sector") << QByteArray() << 0;
}

void TestSmartDecoder::rowCount()
{
    QFETCH(QByteArray, ids);
    QFETCH(int, rows);
    Sector data{}, thresholds{};
    for (int i = 0; i < ids.size(); ++i)
        putEntry(data, thresholds, i, {std::uint8_t(ids.at(i)), 0x0003, 100, 100, quint64(i), 0});

    DiskRecord disk;
    disk.smartEnabled = 1;
    SmartDecoder::applyFirstRead(disk, data, thresholds);
    QCOMPARE(disk.attributes.size(), rows);
    QCOMPARE(disk.attributeCount, rows);
    // A disk without rows is read as having SMART off and drops out of re-reads.
    QCOMPARE(disk.smartState, rows > 0 ? 1 : 0);
    QCOMPARE(disk.smartEnabled, rows > 0 ? 1 : 0);
    for (int i = 0; i < rows; ++i)
        QCOMPARE(disk.attributes.at(i).id, quint32(quint8(ids.at(i))));
}

void TestSmartDecoder::rowFields_data()
{
    QTest::addColumn<int>("id");
    QTest::addColumn<int>("flags");
    QTest::addColumn<uint>("advisory");
    QTest::addColumn<uint>("performance");

    QTest::newRow("pre-failure") << 5 << 0x0033 << 0u << 0u;
    QTest::newRow("pre-failure, performance") << 2 << 0x0005 << 0u << 1u;
    QTest::newRow("advisory") << 12 << 0x0032 << 1u << 0u;
    QTest::newRow("advisory, performance") << 8 << 0x0024 << 1u << 1u;
    QTest::newRow("high flag byte only") << 201 << 0x1A00 << 1u << 0u;
    QTest::newRow("unknown ID") << 170 << 0xFFFF << 0u << 1u;
}

void TestSmartDecoder::rowFields()
{
    QFETCH(int, id);
    QFETCH(int, flags);
    Sector data{}, thresholds{};
    putEntry(data, thresholds, 0, {std::uint8_t(id), std::uint16_t(flags), 117, 99, 0x0102030405, 21});

    DiskRecord disk;
    SmartDecoder::applyFirstRead(disk, data, thresholds);
    QCOMPARE(disk.attributes.size(), 1);
    const SmartAttribute &row = disk.attributes.first();
    QCOMPARE(row.id, quint32(id));
    QCOMPARE(row.flags, quint32(flags));
    QTEST(row.advisory, "advisory");
    QTEST(row.performance, "performance");
    QCOMPARE(row.current, 117u);
    QCOMPARE(row.worst, 99u);
    QCOMPARE(row.threshold, 21u);
    QCOMPARE(row.raw, qint64(0x0102030405));
    QCOMPARE(row.name, AttributeCatalogue::name(quint32(id)));
    QCOMPARE(row.description, AttributeCatalogue::description(quint32(id)));
}

void TestSmartDecoder::thresholdsTakenBySlot()
{
    // The thresholds sector's own IDs are not looked at.
    Sector data{}, thresholds{};
    putEntry(data, thresholds, 0, {1, 0x000B, 100, 100, 0, 51});
    putEntry(data, thresholds, 1, {5, 0x0033, 100, 100, 0, 36});
    slot(thresholds, 0)[0] = 5;
    slot(thresholds, 1)[0] = 0;

    DiskRecord disk;
    SmartDecoder::applyFirstRead(disk, data, thresholds);
    QCOMPARE(disk.attributes.size(), 2);
    QCOMPARE(disk.attributes.at(0).threshold, 51u);
    QCOMPARE(disk.attributes.at(1).threshold, 36u);
}

void TestSmartDecoder::statusAndCapabilityBytes()
{
    Sector data{}, thresholds{};
    data[362] = 0x82;
    data[367] = 0x5B;
    data[368] = 0x03;
    data[369] = 0x01;
    data[370] = 0xFF; // error logging byte: not part of the record

    DiskRecord disk;
    SmartDecoder::applyFirstRead(disk, data, thresholds);
    QCOMPARE(disk.offlineStatus, 0x82u);
    QCOMPARE(disk.offlineCapability, 0x5Bu);
    QCOMPARE(disk.smartCapability, 0x0103u);
}

void TestSmartDecoder::temperatureSideEffects()
{
    const DiskRecord hot = firstReadDisk(100, 0x0000000F019C);
    QVERIFY(hot.hasTemperature);
    QCOMPARE(hot.temperature, 41);

    Sector data{}, thresholds{};
    putEntry(data, thresholds, 0, {190, 0x0022, 66, 50, 34, 45});
    DiskRecord noTemperature;
    SmartDecoder::applyFirstRead(noTemperature, data, thresholds);
    QVERIFY(!noTemperature.hasTemperature);
    QCOMPARE(noTemperature.temperature, 0);
}

void TestSmartDecoder::powerOnUnit_data()
{
    QTest::addColumn<quint64>("raw");
    QTest::addColumn<int>("unitBefore");
    QTest::addColumn<int>("unitAfter");

    QTest::newRow("zero hours") << quint64(0) << 0 << 1;
    QTest::newRow("43999: hours") << quint64(43999) << 0 << 1;
    QTest::newRow("44000: minutes") << quint64(44000) << 0 << 2;
    QTest::newRow("above 32 bits: minutes") << quint64(0x70B300001119) << 0 << 2;
    QTest::newRow("chosen seconds kept") << quint64(100) << 3 << 3;
    QTest::newRow("chosen hours kept") << quint64(600000) << 1 << 1;
}

void TestSmartDecoder::powerOnUnit()
{
    QFETCH(quint64, raw);
    QFETCH(int, unitBefore);
    Sector data{}, thresholds{};
    putEntry(data, thresholds, 0, {9, 0x0032, 99, 99, raw, 0});

    DiskRecord disk;
    disk.powerOnUnit = unitBefore;
    SmartDecoder::applyFirstRead(disk, data, thresholds);
    QTEST(disk.powerOnUnit, "unitAfter");
    QCOMPARE(disk.powerOnRaw, raw);
    QCOMPARE(disk.powerOnRawAtStart, raw);
}

void TestSmartDecoder::reReadUpdatesOnlyCurrentAndRaw()
{
    DiskRecord disk = firstReadDisk(43000, 30);
    QCOMPARE(disk.powerOnUnit, 1);
    disk.hasTemperature = false; // a re-read must not set it again

    Sector data{}, unused{};
    putEntry(data, unused, 0, {1, 0x0000, 80, 10, 7, 99});
    putEntry(data, unused, 1, {9, 0x0000, 94, 10, 50000, 99});
    putEntry(data, unused, 2, {194, 0x0000, 38, 10, 0x01A4, 99}); // 420 tenths
    data[362] = 0x02;
    data[367] = 0x01;
    SmartDecoder::applyReRead(disk, data);

    QCOMPARE(disk.attributes.size(), 3);
    const SmartAttribute &first = disk.attributes.at(0);
    QCOMPARE(first.current, 80u);
    QCOMPARE(first.raw, qint64(7));
    QCOMPARE(first.worst, 90u);
    QCOMPARE(first.threshold, 16u);
    QCOMPARE(first.flags, 0x000Fu);
    QCOMPARE(disk.attributes.at(2).raw, qint64(42));

    QCOMPARE(disk.temperature, 42);
    QVERIFY(!disk.hasTemperature);
    QCOMPARE(disk.powerOnRaw, quint64(50000));
    QCOMPARE(disk.powerOnRawAtStart, quint64(43000));
    QCOMPARE(disk.powerOnUnit, 1);
    QCOMPARE(disk.offlineStatus, 0u);
    QCOMPARE(disk.offlineCapability, 0u);
    QCOMPARE(disk.smartState, 1);
}

void TestSmartDecoder::reReadKeepsRowsBeyondCount()
{
    DiskRecord disk = firstReadDisk(10, 30);
    disk.attributeCount = 2;

    Sector data{}, unused{};
    putEntry(data, unused, 0, {1, 0, 50, 0, 1, 0});
    putEntry(data, unused, 1, {9, 0, 50, 0, 2, 0});
    putEntry(data, unused, 2, {194, 0, 50, 0, 55, 0});
    SmartDecoder::applyReRead(disk, data);

    QCOMPARE(disk.attributes.at(1).current, 50u);
    QCOMPARE(disk.attributes.at(2).current, 40u);
    QCOMPARE(disk.attributes.at(2).raw, qint64(30));
    QCOMPARE(disk.temperature, 30);
}

QTEST_GUILESS_MAIN(TestSmartDecoder)
#include "tst_smartdecoder.moc"
