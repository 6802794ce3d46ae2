// The scan page as a user drives it: the Events Log lines a scan reports, the result dialog or
// warning box, the controls while a scan runs, the map it leaves, and the window's one page per
// disk, which survives its window while a read is still under way.

#include "SimulatedDescription.h"
#include "TestFiles.h"
#include "WindowOnDisks.h"

#include "KorvaneImages.h"
#include "device/simulated/SimulatedBackend.h"
#include "settings/FreeEdition.h"
#include "settings/LanguageTable.h"
#include "ui/ScanDiskPages.h"
#include "ui/form_scan_set.h"
#include "ui/paintblock.h"
#include "ui/scan_complette_dlg.h"
#include "ui/scandisk.h"

#include <QDoubleSpinBox>
#include <QGroupBox>
#include <QLabel>
#include <QMessageBox>
#include <QProgressBar>
#include <QPushButton>
#include "ui/DiskTree.h"
#include <QTemporaryDir>
#include <QtTest>

namespace {

// Three map blocks, with failures in blocks 0 and 2.
constexpr qint64 kDiskBytes = 3 * 31457280LL;

struct LogLine
{
    int disk;
    int kind;
    QString text;
    bool operator==(const LogLine &o) const { return disk == o.disk && kind == o.kind && text == o.text; }
};

/// What the result of a scan showed: the modal window's title and its labels' texts.
struct Shown
{
    QString title;
    QStringList texts;
};

} // namespace

class TestScanPage : public QObject
{
    Q_OBJECT
    QTemporaryDir m_dir;

    std::shared_ptr<DriveBackend> backend(const QByteArray &extra)
    {
        return simulatedDisk(m_dir.filePath(QStringLiteral("disk.json")),
                             "{\"size\": " + QByteArray::number(kDiskBytes) + ", \"identity\": {\"model\": \"PAGE DISK\"}, " + extra + "}");
    }

    // Starts a scan on \a page, runs \a whileRunning, and waits for the scan's end; \a shown is the
    // modal window the end showed, closed at once.
    static void scan(scandisk &page, Shown &shown, const std::function<void()> &whileRunning = {})
    {
        QTimer poll;
        connect(&poll, &QTimer::timeout, [&] {
            QWidget *modal = QApplication::activeModalWidget();
            if (!modal)
                return;
            shown.title = modal->windowTitle();
            for (const QLabel *label : modal->findChildren<QLabel *>())
                shown.texts << label->text();
            modal->close();
        });
        poll.start(20);
        page.form()->pushButton->click();
        if (whileRunning)
            whileRunning();
        QTRY_VERIFY_WITH_TIMEOUT(!page.isScanning() && page.form()->pushButton->isEnabled(), 20000);
        QTest::qWait(100);
    }

private slots:
    void initTestCase()
    {
        initKorvaneImages();
        QVERIFY(LanguageTable::loadLanguage(LanguageTable::English));
    }

    void completeScanReportsRangesAndResult()
    {
        scandisk page(backend(R"("surface": {"badSectors": [5, 130000], "slowSectors": [{"first": 70000, "last": 70000, "latencyMs": 30}]})"));
        page.setDisk(4, QStringLiteral("sim://0"), kDiskBytes);
        QCOMPARE(page.form()->spinBox_2->value(), 184319.0);
        QList<LogLine> log;
        connect(&page, &scandisk::intoLogFromScan, [&](int disk, int kind, const QString &text) { log.append({disk, kind, text}); });
        page.show();
        Shown shown;
        scan(page, shown);

        QCOMPARE(log.size(), 4);
        QCOMPARE(log.at(0), (LogLine{4, 1, QStringLiteral("Scan Disk Started")}));
        QCOMPARE(log.at(1), (LogLine{4, 3, QStringLiteral("Bad Sectors between 0 - 127")}));
        QCOMPARE(log.at(2), (LogLine{4, 3, QStringLiteral("Bad Sectors between 129920 - 130047")}));
        QVERIFY(log.at(3).text.startsWith(QLatin1String("Scan Disk Complete\nTotal Blocks scanned: 3\nTotal Sectors "
                                                        "scanned: 184320\nTotal Bad Blocks: 1\nTime elapsed: ")));
        QCOMPARE(shown.title, QStringLiteral("Scan Disk Complete"));
        QVERIFY(shown.texts.contains(QStringLiteral("184320")));

        const BlockMap &map = page.blockMap()->map();
        QCOMPARE(map.cell(0), BlockMap::Cell::Bad);
        QCOMPARE(map.cell(1), BlockMap::Cell::Verified);
        QCOMPARE(map.cell(2), BlockMap::Cell::Bad);
        QVERIFY(map.readTime(1) >= 30000);
        QVERIFY(page.form()->groupBox->isEnabled() && !page.form()->pushButton_2->isEnabled());
        QVERIFY(page.form()->progressBar->isHidden());
    }

    void stoppedScan()
    {
        scandisk page(backend(R"("surface": {"readLatencyMs": 10})"));
        page.setDisk(0, QStringLiteral("sim://0"), kDiskBytes);
        QStringList log;
        connect(&page, &scandisk::intoLogFromScan, [&](int, int, const QString &text) { log << text; });
        page.show();
        bool lockedWhileRunning = false;
        Shown shown;
        scan(page, shown, [&] {
            // While it runs, the range and the block size cannot change under it.
            lockedWhileRunning = !page.form()->spinBox->isEnabled() && !page.form()->groupBox->isEnabled()
                && page.form()->pushButton_2->isEnabled() && page.form()->progressBar->isVisible();
            QTest::qWait(100);
            page.form()->pushButton_2->click();
        });
        QVERIFY(lockedWhileRunning);
        QCOMPARE(shown.title, QStringLiteral("Scan Disk Stopped"));
        QVERIFY(log.last().startsWith(QLatin1String("Scan Disk Stopped\nTotal Blocks scanned: 1\n")));
    }

    void lockedDiskWarns()
    {
        scandisk page(backend(R"("behaviour": {"scanLocked": true})"));
        page.setDisk(0, QStringLiteral("sim://0"), kDiskBytes);
        QStringList log;
        connect(&page, &scandisk::intoLogFromScan, [&](int, int, const QString &text) { log << text; });
        page.show();
        Shown shown;
        scan(page, shown);
        QCOMPARE(shown.title, QStringLiteral("Scan Disk Error"));
        QVERIFY(shown.texts.contains(QStringLiteral("The disk is in use or \nlocked by another process.")));
        QCOMPARE(log.last(), QStringLiteral("The disk is in use or locked by another process."));
    }

    void rangeStaysOrdered()
    {
        scandisk page(backend(QByteArrayLiteral("\"volumes\": []")));
        page.setDisk(0, QStringLiteral("sim://0"), kDiskBytes);
        page.form()->spinBox_2->setValue(1000);
        page.form()->spinBox->setValue(5000);
        QCOMPARE(page.form()->spinBox_2->value(), 5000.0);
        page.form()->spinBox_2->setValue(10);
        QCOMPARE(page.form()->spinBox->value(), 10.0);
    }

    // One page per disk, shown with its disk; closing the window mid-scan shows no dialog and
    // does not wait for the read in hand.
    void windowPagesPerDisk()
    {
        const QString first = m_dir.filePath(QStringLiteral("a.json"));
        const QString second = m_dir.filePath(QStringLiteral("b.json"));
        QVERIFY(TestFiles::write(first, R"({"size": 94371840, "identity": {"serial": "A"}})"));
        QVERIFY(TestFiles::write(second, R"({"size": 1048576000, "identity": {"serial": "B"}, "surface": {"readLatencyMs": 3000}})"));
        const FreeEdition licence;
        auto window = windowOnDisks({first, second}, licence);
        QVERIFY(nextEvaluation(*window));
        auto *pages = window->findChild<ScanDiskPages *>();
        auto *tree = window->findChild<DiskTree *>();
        tree->setCurrentItem(tree->topLevelItem(1));
        QCOMPARE(pages->currentWidget(), pages->page(1));
        QCOMPARE(pages->page(1)->form()->spinBox_2->value(), 2047999.0);
        QCOMPARE(pages->page(0)->form()->spinBox_2->value(), 184319.0);

        pages->page(1)->form()->pushButton->click();
        QTRY_VERIFY(pages->page(1)->isScanning());
        QElapsedTimer clock;
        clock.start();
        window->trayClose();
        window.reset();
        QVERIFY(clock.elapsed() < 1500); // well inside the read in hand
        QVERIFY(!QApplication::activeModalWidget());
    }
};

QTEST_MAIN(TestScanPage)
#include "tst_scanpage.moc"
