// The block map's rules (which cell shows what, where the pointer is, what the tooltip says) and
// the scan's texts (result, elapsed time, speed, read-time classes).

#include "scan/BlockMap.h"
#include "scan/LatencyClass.h"
#include "scan/ScanTexts.h"
#include "settings/LanguageTable.h"

#include <QtTest>

namespace {

constexpr qint64 kBlock = 61440;

// Ten whole blocks and 1000 sectors of an eleventh.
BlockMap tenAndABit(qint64 firstSector = 0)
{
    BlockMap map;
    map.setDiskBytes((10 * kBlock + 1000) * 512);
    map.setFirstSector(firstSector);
    map.reset();
    return map;
}

} // namespace

class TestBlockMap : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase() { QVERIFY(loadLanguage(LanguageTable::English)); }

    void cells()
    {
        BlockMap map = tenAndABit(3 * kBlock + 5);
        QCOMPARE(map.totalBlocks(), 11);
        QCOMPARE(map.firstBlock(), 3);
        QCOMPARE(map.cell(3), BlockMap::Cell::Unverified); // before any scan
        map.setCurrentBlock(7);
        map.addBadRange(4 * kBlock + 10, 4 * kBlock + 20);     // wholly in block 4
        map.addBadRange(6 * kBlock - 64, 6 * kBlock + 63);     // straddles 5 and 6: marks neither
        map.addBadRange(9 * kBlock, 9 * kBlock);               // beyond the current block
        const QList<BlockMap::Cell> expected = {
            BlockMap::Cell::Unverified, BlockMap::Cell::Unverified, BlockMap::Cell::Unverified, // before the range
            BlockMap::Cell::Verified, BlockMap::Cell::Bad, BlockMap::Cell::Verified, BlockMap::Cell::Verified,
            BlockMap::Cell::Verified, BlockMap::Cell::Unverified, BlockMap::Cell::Unverified, BlockMap::Cell::Unverified};
        for (qint64 i = 0; i < map.totalBlocks(); ++i)
            QVERIFY2(map.cell(i) == expected.at(i), qPrintable(QString::number(i)));
        QCOMPARE(map.badRangesIn(5), (QList<BlockMap::Range>{{4 * kBlock + 10, 4 * kBlock + 20}}));
        QVERIFY(map.badRangesIn(6).isEmpty() && map.badRangesIn(7).isEmpty());

        map.setReadTime(5, 30000);
        QCOMPARE(map.latencyClass(5), 2);
        QCOMPARE(map.latencyClass(4), -1); // bad wins
        QCOMPARE(map.latencyClass(6), -1); // not timed
        map.reset();                       // a new scan forgets ranges and times, keeps the last block
        QCOMPARE(map.cell(4), BlockMap::Cell::Verified);
        QCOMPARE(map.readTime(5), -1);
    }

    void hitTest_data()
    {
        QTest::addColumn<int>("x");
        QTest::addColumn<int>("y");
        QTest::addColumn<qint64>("n");
        QTest::newRow("inside the first cell") << 3 << 3 << 1LL;
        QTest::newRow("a left outline belongs to the cell before") << 6 << 0 << 1LL;
        QTest::newRow("just right of it") << 7 << 0 << 2LL;
        QTest::newRow("second row: floor for rows") << 1 << 6 << 11LL;
        QTest::newRow("the pixel column 0 is block 0 of the row") << 0 << 7 << 10LL;
    }
    void hitTest()
    {
        QFETCH(int, x);
        QFETCH(int, y);
        QFETCH(qint64, n);
        BlockMap map = tenAndABit();
        map.reflow(22 + 10 * BlockMap::kCellWidth);
        QCOMPARE(map.columns(), 10);
        QCOMPARE(map.rows(), 2);
        QCOMPARE(map.blockAt(x, y), n);
    }

    void narrowAreaKeepsAColumn()
    {
        BlockMap map = tenAndABit();
        map.reflow(5);
        QCOMPARE(map.columns(), 1);
        QCOMPARE(map.rows(), 11);
    }

    void tooltips()
    {
        BlockMap map = tenAndABit();
        const QString head = QStringLiteral("Block 11 Size 31457280 bytes (30 Mb)\nSectors from 614400 to 615399\n");
        QCOMPARE(map.tooltip(11, true), head + QStringLiteral("Unverified block"));
        QCOMPARE(map.tooltip(12, true), QString());
        map.setCurrentBlock(10);
        QCOMPARE(map.tooltip(11, false), head + QStringLiteral("Verified block"));
        map.addBadRange(614400, 614400);
        map.setReadTime(10, 600000);
        QCOMPARE(map.tooltip(11, false), head + QStringLiteral("Bad Block"));
        map.setReadTime(9, 12345);
        QCOMPARE(map.tooltip(10, true), QStringLiteral("Block 10 Size 31457280 bytes (30 Mb)\nSectors from 552960 to "
                                                       "614399\nVerified block\nSlowest read: 12.3 ms (5-20 ms)"));
    }

    void latencyClasses_data()
    {
        QTest::addColumn<qint64>("micros");
        QTest::addColumn<QString>("label");
        QTest::newRow("fast") << 4999LL << "<5 ms";
        QTest::newRow("5 ms") << 5000LL << "5-20 ms";
        QTest::newRow("under 50") << 49999LL << "20-50 ms";
        QTest::newRow("150 ms") << 150000LL << "150-500 ms";
        QTest::newRow("half a second") << 500000LL << ">500 ms";
    }
    void latencyClasses()
    {
        QFETCH(qint64, micros);
        QFETCH(QString, label);
        QCOMPARE(LatencyClass::label(LatencyClass::of(micros)), label);
    }

    void elapsed_data()
    {
        QTest::addColumn<qint64>("seconds");
        QTest::addColumn<QString>("text");
        QTest::newRow("nothing") << 0LL << "0 s.";
        QTest::newRow("a minute") << 60LL << "1 m. 0 s.";
        QTest::newRow("all parts") << 3723LL << "1 h. 2 m. 3 s.";
        QTest::newRow("no minutes between hours and seconds") << 3603LL << "1 h. 3 s.";
    }
    void elapsed()
    {
        QFETCH(qint64, seconds);
        QFETCH(QString, text);
        QCOMPARE(ScanTexts::elapsed(seconds), text);
    }

    void results()
    {
        ScanSummary summary{false, false, 35, 2097152, 3, 3723};
        QCOMPARE(ScanTexts::result(summary), QStringLiteral("Scan Disk Complete\nTotal Blocks scanned: 35\nTotal Sectors "
                                                            "scanned: 2097152\nTotal Bad Blocks: 3\nTime elapsed: 1 h. 2 m. 3 s."));
        summary.stopped = true;
        summary.openFailed = true; // a stop wins
        QVERIFY(ScanTexts::result(summary).startsWith(QLatin1String("Scan Disk Stopped\nTotal Blocks scanned: 35\n")));
        summary.stopped = false;
        QCOMPARE(ScanTexts::result(summary), QStringLiteral("The disk is in use or locked by another process."));
        QCOMPARE(ScanTexts::openFailedMessage(), QStringLiteral("The disk is in use or \nlocked by another process."));
    }

    void speed()
    {
        const QDateTime mark(QDate(2026, 1, 1), QTime(10, 0, 0, 100));
        QCOMPARE(ScanTexts::speedSeconds(mark, mark.addMSecs(800)), 1); // the same second counts as one
        QCOMPARE(ScanTexts::speedSeconds(mark, mark.addMSecs(2000)), 2);
        QCOMPARE(ScanTexts::readSpeed(30720.0 / 3), QStringLiteral("Read Speed: 10240.00 KB/s"));
        QCOMPARE(ScanTexts::badSectors(7, 9), QStringLiteral("Bad Sectors between 7 - 9"));
    }
};

QTEST_GUILESS_MAIN(TestBlockMap)
#include "tst_blockmap.moc"
