#include "device/AttributeCatalogue.h"
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

DiskRecord firstRead(std::initializer_list<Entry> entries, int powerOnUnit = 0)
{
    Sector data{}, thresholds{};
    int index = 0;
    for (const Entry &e : entries)
        putEntry(data, thresholds, index++, e);
    DiskRecord disk;
    disk.smartEnabled = 1;
    disk.powerOnUnit = powerOnUnit;
    SmartDecoder::applyFirstRead(disk, data, thresholds);
    return disk;
}

} // namespace

class TestSmartDecoder : public QObject
{
    Q_OBJECT

private slots:
    void decodeRaw_data()
    {
        QTest::addColumn<int>("id");
        QTest::addColumn<QByteArray>("rawBytes"); // storage order
        QTest::addColumn<qint64>("expected");

        QTest::newRow("all six bytes, LE") << 10 << QByteArray::fromHex("630000002900") << qint64(176093659235);
        QTest::newRow("top byte") << 5 << QByteArray::fromHex("00000000d007") << qint64(8589934592000);
        // 194 reads the first word only; above 100 it is in tenths.
        QTest::newRow("194 tenths") << 194 << QByteArray::fromHex("9c0100000000") << qint64(41);
        QTest::newRow("194 exactly 100") << 194 << QByteArray::fromHex("640000000000") << qint64(100);
        QTest::newRow("194 101") << 194 << QByteArray::fromHex("650000000000") << qint64(10);
        QTest::newRow("194 min/max words ignored") << 194 << QByteArray::fromHex("1c000f003600") << qint64(28);
        QTest::newRow("190 is not special") << 190 << QByteArray::fromHex("2200ffff2f00") << qint64(0x2FFFFF0022);
    }

    void decodeRaw()
    {
        QFETCH(int, id);
        QFETCH(QByteArray, rawBytes);
        std::array<std::uint8_t, 12> entry{};
        entry[0] = std::uint8_t(id);
        std::copy(rawBytes.begin(), rawBytes.end(), entry.begin() + 5);
        QTEST(SmartDecoder::decodeRaw(entry.data()), "expected");
    }

    // The table ends at the first empty slot. A disk without rows is read as
    // having SMART off and drops out of re-reads.
    void rowCount()
    {
        Sector data{}, thresholds{};
        for (int i = 0; i < SmartDecoder::kMaxAttributes; ++i)
            putEntry(data, thresholds, i, {std::uint8_t(200 + i), 0x0003, 100, 100, 0, 0});
        for (const auto &[emptySlot, rows] : {std::pair(-1, 30), std::pair(2, 2), std::pair(0, 0)}) {
            if (emptySlot >= 0)
                slot(data, emptySlot)[0] = 0;
            DiskRecord disk;
            disk.smartEnabled = 1;
            SmartDecoder::applyFirstRead(disk, data, thresholds);
            QCOMPARE(disk.attributes.size(), rows);
            QCOMPARE(disk.attributeCount, rows);
            QCOMPARE(disk.smartState, rows > 0 ? 1 : 0);
            QCOMPARE(disk.smartEnabled, rows > 0 ? 1 : 0);
            if (rows > 0)
                QCOMPARE(disk.attributes.last().id, quint32(200 + rows - 1));
        }
    }

    void rowFields()
    {
        Sector data{}, thresholds{};
        putEntry(data, thresholds, 0, {5, 0x0033, 100, 100, 0, 51});
        putEntry(data, thresholds, 1, {2, 0x0005, 100, 100, 0, 36});
        putEntry(data, thresholds, 2, {12, 0x0032, 100, 100, 0, 0});
        putEntry(data, thresholds, 3, {201, 0x1A00, 100, 100, 0, 0});
        // Thresholds go by slot: the thresholds sector's own IDs are not looked at.
        slot(thresholds, 0)[0] = 2;
        slot(thresholds, 1)[0] = 0;
        data[362] = 0x82;
        data[367] = 0x5B;
        data[368] = 0x03;
        data[369] = 0x01;
        data[370] = 0xFF; // error logging byte: not part of the record

        DiskRecord disk;
        SmartDecoder::applyFirstRead(disk, data, thresholds);
        QCOMPARE(disk.attributes.size(), 4);
        // Flag bit 0 clear: advisory; bit 2 set: performance.
        QStringList kinds;
        for (const SmartAttribute &a : disk.attributes)
            kinds << QStringLiteral("%1%2 %3").arg(a.advisory).arg(a.performance).arg(a.threshold);
        QCOMPARE(kinds, (QStringList{"00 51", "01 36", "10 0", "10 0"}));
        QCOMPARE(disk.attributes.at(3).flags, 0x1A00u);
        QCOMPARE(disk.offlineStatus, 0x82u);
        QCOMPARE(disk.offlineCapability, 0x5Bu);
        QCOMPARE(disk.smartCapability, 0x0103u);
        // Values and raw counts are compared with skdump end to end.
        QCOMPARE(disk.attributes.first().name, AttributeCatalogue::name(5));
        QCOMPARE(disk.attributes.first().description, AttributeCatalogue::description(5));
        QVERIFY(!disk.hasTemperature); // no 194 row
    }

    void powerOnUnit_data()
    {
        QTest::addColumn<quint64>("raw");
        QTest::addColumn<int>("unitBefore");
        QTest::addColumn<int>("unitAfter");

        QTest::newRow("43999: hours") << quint64(43999) << 0 << 1;
        QTest::newRow("44000: minutes") << quint64(44000) << 0 << 2;
        QTest::newRow("above 32 bits: minutes") << quint64(0x70B300001119) << 0 << 2;
        QTest::newRow("chosen seconds kept") << quint64(100) << 3 << 3;
    }

    void powerOnUnit()
    {
        QFETCH(quint64, raw);
        QFETCH(int, unitBefore);
        const DiskRecord disk = firstRead({{9, 0x0032, 99, 99, raw, 0}}, unitBefore);
        QTEST(disk.powerOnUnit, "unitAfter");
        QCOMPARE(disk.powerOnRaw, raw);
        QCOMPARE(disk.powerOnRawAtStart, raw);
    }

    // A re-read refreshes current values, raw values and what derives from them,
    // row by row up to the count the first read saw.
    void reRead()
    {
        DiskRecord disk = firstRead({{1, 0x000F, 100, 90, 5, 16}, {9, 0x0032, 95, 95, 43000, 0}, {194, 0x0022, 40, 30, 30, 0}});
        QVERIFY(disk.hasTemperature);
        QCOMPARE(disk.temperature, 30);
        disk.hasTemperature = false; // a re-read must not set it again

        Sector data{}, unused{};
        putEntry(data, unused, 0, {1, 0x0000, 80, 10, 7, 99});
        putEntry(data, unused, 1, {9, 0x0000, 94, 10, 50000, 99});
        putEntry(data, unused, 2, {194, 0x0000, 38, 10, 0x01A4, 99}); // 420 tenths
        data[362] = 0x02;
        data[367] = 0x01;
        SmartDecoder::applyReRead(disk, data);

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

        disk.attributeCount = 2;
        putEntry(data, unused, 2, {194, 0, 50, 0, 55, 0});
        SmartDecoder::applyReRead(disk, data);
        QCOMPARE(disk.attributes.at(2).current, 38u);
        QCOMPARE(disk.temperature, 42);
    }
};

QTEST_GUILESS_MAIN(TestSmartDecoder)
#include "tst_smartdecoder.moc"
