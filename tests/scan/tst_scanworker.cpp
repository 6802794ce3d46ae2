// The surface scan worker on simulated disks: which check blocks it reports bad, how it counts
// blocks and bad blocks, what it sends, and how it stops, fails to open and times its reads.

#include "SimulatedDescription.h"

#include "scan/scan_tread.h"

#include <QTemporaryDir>
#include <QtTest>

namespace {

// Four map blocks and a partial fifth: 247808 sectors.
constexpr qint64 kDiskBytes = 4 * 31457280LL + 1048576;

using Ranges = QList<QPair<qint64, qint64>>;

/// What one run sent, taken in on the test's thread through queued connections.
struct Recorder : QObject
{
    Ranges bad;
    QList<qint64> blocks;
    QList<int> progress;
    QMap<qint64, qint64> readTimes;
    bool complete = false;

    explicit Recorder(scan_tread &worker)
    {
        connect(&worker, &scan_tread::scanedSector, this, [this](qint64 f, qint64 l, int state) {
            QCOMPARE(state, 2);
            bad.append({f, l});
        });
        connect(&worker, &scan_tread::scanedBlock, this, [this](qint64 b) { blocks.append(b); });
        connect(&worker, &scan_tread::updateProgress, this, [this](int p) { progress.append(p); });
        connect(&worker, &scan_tread::blockReadTime, this, [this](qint64 b, qint64 us) { readTimes.insert(b, us); });
        connect(&worker, &scan_tread::scanComplette, this, [this] { complete = true; });
    }
};

} // namespace

class TestScanWorker : public QObject
{
    Q_OBJECT
    QTemporaryDir m_dir;

    std::shared_ptr<DriveBackend> disk(const QByteArray &surface)
    {
        return simulatedDisk(m_dir.filePath(QStringLiteral("disk.json")),
                             "{\"size\": " + QByteArray::number(kDiskBytes) + ", \"surface\": " + surface + "}");
    }

    /// A worker over a disk with \a surface, set to scan \a first..\a last in \a blockSize reads.
    std::unique_ptr<scan_tread> worker(const QByteArray &surface, quint32 blockSize, qint64 first, qint64 last)
    {
        auto worker = std::make_unique<scan_tread>(disk(surface));
        worker->setDevicePath(QStringLiteral("sim://0"));
        worker->setBlockSize(blockSize);
        worker->setFirstSector(first);
        worker->setLastSector(last);
        return worker;
    }

    static void runScan(scan_tread &worker, Recorder &recorder)
    {
        worker.start();
        QTRY_VERIFY_WITH_TIMEOUT(recorder.complete, 30000);
        QVERIFY(worker.wait(5000));
    }

private slots:
    void ranges_data()
    {
        QTest::addColumn<QByteArray>("surface");
        QTest::addColumn<int>("blockSize");
        QTest::addColumn<qint64>("first");
        QTest::addColumn<qint64>("last");
        QTest::addColumn<Ranges>("bad");
        QTest::addColumn<QList<qint64>>("counts"); // sectors, blocks, bad blocks

        QTest::newRow("one sector") << QByteArray("{}") << 65536 << 5LL << 5LL << Ranges{} << QList<qint64>{1, 1, 0};
        QTest::newRow("one bad sector, the block it ends in not counted")
            << QByteArray(R"({"badSectors": [100]})") << 65536 << 100LL << 100LL << Ranges{{100, 100}}
            << QList<qint64>{1, 1, 0};
        QTest::newRow("shorter than a check block: one read")
            << QByteArray(R"({"badSectors": [20]})") << 65536 << 10LL << 40LL << Ranges{{10, 40}}
            << QList<qint64>{31, 1, 0};
        QTest::newRow("512 bytes: each bad sector by itself")
            << QByteArray(R"({"badSectors": [[100, 101], 250]})") << 512 << 0LL << 300LL
            << Ranges{{100, 100}, {101, 101}, {250, 250}} << QList<qint64>{301, 1, 0};
        QTest::newRow("256 KB: a bad sector marks its whole chunk")
            << QByteArray(R"({"badSectors": [700]})") << 262144 << 0LL << 2047LL << Ranges{{512, 1023}}
            << QList<qint64>{2048, 1, 0};
        // Block 0 fails twice and counts once; block 2 counts when left; the last block's failure
        // is reported but not counted, as the worker has always done.
        QTest::newRow("bad blocks counted on leaving a block")
            << QByteArray(R"({"badSectors": [100, 200, 122885, 247000]})") << 65536 << 0LL << 247807LL
            << Ranges{{0, 127}, {128, 255}, {122880, 123007}, {246912, 247039}} << QList<qint64>{247808, 5, 2};
        // A chunk failing as the scan enters the next block is folded into the block it leaves.
        QTest::newRow("a failure at the block change counts for the block left")
            << QByteArray(R"({"badSectors": [61440]})") << 65536 << 0LL << 122879LL << Ranges{{61440, 61567}}
            << QList<qint64>{122880, 2, 1};
        QTest::newRow("a read past the end of the disk is bad, not short")
            << QByteArray("{}") << 65536 << 247680LL << 247908LL << Ranges{{247808, 247908}}
            << QList<qint64>{229, 1, 0};
    }
    void ranges()
    {
        QFETCH(QByteArray, surface);
        QFETCH(int, blockSize);
        QFETCH(qint64, first);
        QFETCH(qint64, last);
        QFETCH(Ranges, bad);
        QFETCH(QList<qint64>, counts);
        const auto scan = worker(surface, quint32(blockSize), first, last);
        scan_tread &worker = *scan;
        QCOMPARE(worker.blockSize(), quint32(blockSize));
        Recorder recorder(worker);
        runScan(worker, recorder);

        QCOMPARE(recorder.bad, bad);
        QCOMPARE((QList<qint64>{worker.sectorsScanned(), worker.blocksScanned(), worker.badBlocks()}), counts);
        QVERIFY(!worker.openFailed() && !worker.stopRequested());
        // Progress rises, never sends 0, and ends at 100.
        QCOMPARE(recorder.progress.last(), 100);
        QVERIFY(!recorder.progress.contains(0));
        QVERIFY(std::is_sorted(recorder.progress.begin(), recorder.progress.end()));
        QCOMPARE(recorder.blocks.first(), first / 61440);
    }

    void blocksAndReadTimes()
    {
        const auto scan = worker(R"({"slowSectors": [{"first": 70000, "last": 70000, "latencyMs": 40}]})", 262144, 0, 247807);
        scan_tread &worker = *scan;
        Recorder recorder(worker);
        runScan(worker, recorder);
        QCOMPARE(recorder.blocks, (QList<qint64>{0, 1, 2, 3, 4}));
        QCOMPARE(recorder.readTimes.keys(), (QList<qint64>{0, 1, 2, 3, 4}));
        QVERIFY(recorder.readTimes.value(1) >= 40000);
        QVERIFY(recorder.readTimes.value(0) < recorder.readTimes.value(1));
        QVERIFY(recorder.readTimes.value(2) < recorder.readTimes.value(1));
    }

    void stopDuringTheFirstBlock()
    {
        const auto scan = worker(R"({"readLatencyMs": 5})", 65536, 0, 247807);
        scan_tread &worker = *scan;
        Recorder recorder(worker);
        worker.start();
        QTest::qWait(60);
        worker.stop();
        QTRY_VERIFY_WITH_TIMEOUT(recorder.complete, 10000);
        QVERIFY(worker.wait(5000));
        QVERIFY(worker.stopRequested());
        QCOMPARE(worker.blocksScanned(), 1);
        QVERIFY(worker.sectorsScanned() > 0 && worker.sectorsScanned() < 61440);
        QCOMPARE(worker.sectorsScanned() % 128, 0);
        QCOMPARE(recorder.progress.last(), 100);
    }

    // The disk drops out in block 1: everything from there fails, and the scan still ends.
    void diskDisappears()
    {
        const auto scan = worker(R"({"disappearsAt": 61440})", 262144, 0, 3 * 61440 - 1);
        scan_tread &worker = *scan;
        Recorder recorder(worker);
        runScan(worker, recorder);
        QCOMPARE(recorder.bad.size(), 240);
        QCOMPARE(recorder.bad.first(), (QPair<qint64, qint64>(61440, 61951)));
        QCOMPARE(recorder.bad.last(), (QPair<qint64, qint64>(183808, 184319)));
        // The first failure comes with the change into block 1 and is folded into block 0; block 1
        // counts when left; block 2, where the scan ends, does not.
        QCOMPARE(worker.badBlocks(), 2);
    }

    // A locked disk sends nothing but the end, and a reused worker forgets the last run.
    void openFailsAfterAScan()
    {
        const auto scan = worker(R"({"badSectors": [[0, 200000]]})", 65536, 61430, 61450);
        scan_tread &worker = *scan;
        {
            Recorder first(worker);
            runScan(worker, first);
        }
        QCOMPARE(worker.badBlocks(), 1); // the one chunk ends in the next block
        QCOMPARE(worker.sectorsScanned(), 21);
        worker.setDevicePath(QStringLiteral("sim://7"));
        Recorder recorder(worker);
        runScan(worker, recorder);
        QVERIFY(worker.openFailed());
        QVERIFY(recorder.blocks.isEmpty() && recorder.progress.isEmpty() && recorder.bad.isEmpty());
        QCOMPARE((QList<qint64>{worker.sectorsScanned(), worker.blocksScanned(), worker.badBlocks()}), (QList<qint64>{0, 0, 0}));
        QVERIFY(!worker.setBlockSize(4096));
        QCOMPARE(worker.blockSize(), 65536u);
    }
};

QTEST_GUILESS_MAIN(TestScanWorker)
#include "tst_scanworker.moc"
