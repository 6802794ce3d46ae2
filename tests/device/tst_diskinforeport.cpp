#include "device/DiskInfoReport.h"
#include "device/SizeText.h"
#include "device/SmartTexts.h"

#include <QLocale>
#include <QtTest>

namespace {

QStringList labels(const QList<InfoRow> &rows)
{
    QStringList out;
    for (const InfoRow &row : rows)
        out.append(row.label);
    return out;
}

const InfoRow *findRow(const QList<InfoRow> &rows, const QString &label)
{
    for (const InfoRow &row : rows) {
        if (row.label == label)
            return &row;
    }
    return nullptr;
}

VolumeRecord volume(const QString &label, const QString &root, quint64 freeBytes, quint64 totalBytes)
{
    VolumeRecord v;
    v.label = label;
    v.rootPath = root;
    v.freeBytes = freeBytes;
    v.totalBytes = totalBytes;
    v.fileSystem = QStringLiteral("NTFS");
    v.serialText = QStringLiteral("1A2B-3C4D");
    return v;
}

const QStringList kIdentityLabels = {
    QStringLiteral("Disk Model"),       QStringLiteral("Serial Number"), QStringLiteral("Firmware Version"),
    QStringLiteral("User Capacity"),    QStringLiteral("ATA Version"),   QStringLiteral("ATA Standart"),
    QStringLiteral("SMART Support"),
};

const QStringList kGeometryLabels = {
    QStringLiteral("Cylinders"),
    QStringLiteral("Tracks per cylinder"),
    QStringLiteral("Sectors per track"),
    QStringLiteral("Bytes per sector"),
    QStringLiteral("Offline data collection status"),
    QStringLiteral("Offline data collection capabilities"),
    QStringLiteral("SMART capabilities"),
    QStringLiteral("SMART Attributes Data Structure revision number"),
};

} // namespace

class TestDiskInfoReport : public QObject
{
    Q_OBJECT

private slots:
    void byteCount_data();
    void byteCount();
    void shortSize_data();
    void shortSize();
    void shortSizeUsesSystemSeparator();
    void offlineStatusText_data();
    void offlineStatusText();
    void capabilityTexts_data();
    void capabilityTexts();
    void identityRows_data();
    void identityRows();
    void volumeRow();
    void geometryRows();
    void allRowsOrder_data();
    void allRowsOrder();
};

void TestDiskInfoReport::byteCount_data()
{
    QTest::addColumn<quint64>("count");
    QTest::addColumn<QString>("text");

    QTest::newRow("0") << quint64(0) << "0 bytes";
    QTest::newRow("1") << quint64(1) << "1 byte";
    QTest::newRow("2") << quint64(2) << "2 bytes";
    QTest::newRow("999") << quint64(999) << "999 bytes";
    QTest::newRow("1000") << quint64(1000) << "1 000 bytes";
    QTest::newRow("100000") << quint64(100000) << "100 000 bytes";
    QTest::newRow("1234567") << quint64(1234567) << "1 234 567 bytes";
    QTest::newRow("500 GB disk") << quint64(500107862016) << "500 107 862 016 bytes";
    QTest::newRow("largest") << quint64(18446744073709551615u) << "18 446 744 073 709 551 615 bytes";
}

void TestDiskInfoReport::byteCount()
{
    QFETCH(quint64, count);
    QTEST(SizeText::byteCount(count), "text");
}

void TestDiskInfoReport::shortSize_data()
{
    QTest::addColumn<qint64>("count");
    QTest::addColumn<QChar>("separator");
    QTest::addColumn<QString>("text");

    const QChar point(QLatin1Char('.'));
    const QChar comma(QLatin1Char(','));
    QTest::newRow("0") << qint64(0) << point << "0 B";
    QTest::newRow("negative") << qint64(-5) << point << "-5 B";
    QTest::newRow("1023") << qint64(1023) << point << "1023 B";
    QTest::newRow("1024") << qint64(1024) << point << "1 KB";
    QTest::newRow("1536") << qint64(1536) << point << "1.5 KB";
    QTest::newRow("2048") << qint64(2048) << point << "2 KB";
    QTest::newRow("1100") << qint64(1100) << point << "1.074 KB";
    // Only the three decimals are trimmed, never digits before the point.
    QTest::newRow("10240") << qint64(10240) << point << "10 KB";
    QTest::newRow("102400") << qint64(102400) << point << "100 KB";
    QTest::newRow("1048575") << qint64(1048575) << point << "1023.999 KB";
    QTest::newRow("1048576") << qint64(1048576) << point << "1 MB";
    QTest::newRow("1073741823") << qint64(1073741823) << point << "1024 MB";
    QTest::newRow("1073741824") << qint64(1073741824) << point << "1 GB";
    QTest::newRow("500 GB disk") << qint64(500107862016) << point << "465.762 GB";
    QTest::newRow("1099511627776") << qint64(1099511627776) << point << "1 TB";
    QTest::newRow("2 PB") << qint64(2251799813685248) << point << "2048 TB";
    // The point written by the formatting is not the comma looked for.
    QTest::newRow("comma: 2048") << qint64(2048) << comma << "2. KB";
    QTest::newRow("comma: 1536") << qint64(1536) << comma << "1.5 KB";
    QTest::newRow("comma: 1023") << qint64(1023) << comma << "1023 B";
}

void TestDiskInfoReport::shortSize()
{
    QFETCH(qint64, count);
    QFETCH(QChar, separator);
    QTEST(SizeText::shortSize(count, separator), "text");
}

void TestDiskInfoReport::shortSizeUsesSystemSeparator()
{
    const QString point = QLocale::system().decimalPoint();
    QVERIFY(!point.isEmpty());
    QCOMPARE(SizeText::shortSize(4096), SizeText::shortSize(4096, point.at(0)));
    QCOMPARE(SizeText::shortSize(1536), QStringLiteral("1.5 KB"));
}

void TestDiskInfoReport::offlineStatusText_data()
{
    QTest::addColumn<quint32>("status");
    QTest::addColumn<QString>("text");

    QTest::newRow("0") << 0x00u << "was never started";
    QTest::newRow("1") << 0x01u << "is in a Reserved state";
    QTest::newRow("2") << 0x02u << "was completed without error";
    QTest::newRow("2 with auto") << 0x82u << "was completed without error";
    QTest::newRow("3") << 0x03u << "is in progress";
    QTest::newRow("3 with auto") << 0x83u << "is in a Reserved state";
    QTest::newRow("4") << 0x84u << "was suspended by an interrupting command from host";
    QTest::newRow("5") << 0x05u << "was aborted by an interrupting command from host";
    QTest::newRow("6") << 0x86u << "was aborted by the device with a fatal error";
    QTest::newRow("7") << 0x07u << "is in a Reserved state";
    QTest::newRow("63") << 0xBFu << "is in a Reserved state";
    QTest::newRow("64") << 0x40u << "is in a Vendor Specific state";
    QTest::newRow("127 with auto") << 0xFFu << "is in a Vendor Specific state";
}

void TestDiskInfoReport::offlineStatusText()
{
    QFETCH(quint32, status);
    QTEST(SmartTexts::offlineStatusText(status), "text");
}

void TestDiskInfoReport::capabilityTexts_data()
{
    QTest::addColumn<quint32>("offlineCapability");
    QTest::addColumn<quint32>("smartCapability");
    QTest::addColumn<QStringList>("offlineTexts");
    QTest::addColumn<QStringList>("smartTexts");

    QTest::newRow("none") << 0u << 0u << QStringList{"   Offline data collection not supported"}
                          << QStringList{"   Automatic saving of SMART data is not implemented"};
    QTest::newRow("typical drive")
        << 0x5Bu << 0x0003u
        << QStringList{"SMART execute Offline immediate",    "Auto Offline data collection on/off support",
                       "Suspend Offline collection upon new command", "Offline surface scan supported",
                       "Self-test supported",                "No Conveyance Self-test supported",
                       "Selective Self-test supported"}
        << QStringList{"   Saves SMART data before entering power-saving mode", "   Supports SMART auto save timer"};
    QTest::newRow("bit 7 only")
        << 0x80u << 0x0100u
        << QStringList{"No SMART execute Offline immediate", "No Auto Offline data collection support",
                       "Suspend Offline collection upon new command", "No Offline surface scan supported",
                       "No Self-test supported", "No Conveyance Self-test supported",
                       "No Selective Self-test supported"}
        << QStringList{"   Does not save SMART data before tentering power-saving mode"};
    QTest::newRow("all bits")
        << 0x7Fu << 0x0002u
        << QStringList{"SMART execute Offline immediate", "Auto Offline data collection on/off support",
                       "Abort Offline collection upon new command", "Offline surface scan supported",
                       "Self-test supported", "Conveyance Self-test supported", "Selective Self-test supported"}
        << QStringList{"   Does not save SMART data before tentering power-saving mode",
                       "   Supports SMART auto save timer"};
}

void TestDiskInfoReport::capabilityTexts()
{
    QFETCH(quint32, offlineCapability);
    QFETCH(quint32, smartCapability);
    QTEST(SmartTexts::offlineCapabilityTexts(offlineCapability), "offlineTexts");
    QTEST(SmartTexts::smartCapabilityTexts(smartCapability), "smartTexts");
}

void TestDiskInfoReport::identityRows_data()
{
    QTest::addColumn<int>("ataMajor");
    QTest::addColumn<int>("smartState");
    QTest::addColumn<QString>("ataVersion");
    QTest::addColumn<QString>("smartSupport");

    QTest::newRow("ATA-7, read") << 7 << 1 << "7" << "Enabled";
    QTest::newRow("version 0, no rows") << 0 << 0 << "0" << "Disabled";
    QTest::newRow("unknown, never read") << -1 << -1 << "N/A" << "Disabled";
    QTest::newRow("ATA-3 draft") << -3 << 2 << "N/A" << "Enabled";
}

void TestDiskInfoReport::identityRows()
{
    QFETCH(int, ataMajor);
    QFETCH(int, smartState);
    DiskRecord disk;
    disk.model = QStringLiteral("ST9100821AS");
    disk.serial = QStringLiteral("5NJ0R13A");
    disk.firmware = QStringLiteral("3.CME");
    disk.capacityBytes = 100030242816;
    disk.ataMajorVersion = ataMajor;
    disk.ataStandardText = QStringLiteral("ATA-3 X3T10 2008D revision 1");
    disk.smartState = smartState;
    disk.smartEnabled = 0; // the row follows the read, not this bit

    const QList<InfoRow> rows = DiskInfoReport::identityRows(disk);
    QCOMPARE(labels(rows), kIdentityLabels);
    QCOMPARE(rows.at(0).value, disk.model);
    QCOMPARE(rows.at(1).value, disk.serial);
    QCOMPARE(rows.at(2).value, disk.firmware);
    QCOMPARE(rows.at(3).value, QStringLiteral("100 030 242 816 bytes (%1)").arg(SizeText::shortSize(100030242816)));
    QTEST(rows.at(4).value, "ataVersion");
    QCOMPARE(rows.at(5).value, disk.ataStandardText);
    QTEST(rows.at(6).value, "smartSupport");
}

void TestDiskInfoReport::volumeRow()
{
    const InfoRow row = DiskInfoReport::volumeRow(volume(QStringLiteral("System"), QStringLiteral("C:\\"),
                                                         1536, 1073741824));
    QCOMPARE(row.label, QStringLiteral("System (C:\\) Free 1.5 KB of 1 GB"));
    QCOMPARE(row.value, QStringLiteral("File system (NTFS). Serial number (1A2B-3C4D)."));
    QVERIFY(row.children.isEmpty());

    // Placeholders inside a label are text, not more arguments.
    const InfoRow odd = DiskInfoReport::volumeRow(volume(QStringLiteral("Data %2"), QStringLiteral("1:\\"), 0, 0));
    QCOMPARE(odd.label, QStringLiteral("Data %2 (1:\\) Free 0 B of 0 B"));
    QCOMPARE(DiskInfoReport::volumeRow(VolumeRecord{}).value, QStringLiteral("File system (Unknown). Serial number ()."));
}

void TestDiskInfoReport::geometryRows()
{
    DiskRecord disk;
    disk.cylinders = 12161;
    disk.tracksPerCylinder = 255;
    disk.sectorsPerTrack = 63;
    disk.bytesPerSector = 512;
    disk.offlineStatus = 0x82;
    disk.offlineCapability = 0;
    disk.smartCapability = 0x0003;
    disk.attributes.resize(17);
    disk.attributeCount = 3; // the row counts the rows themselves

    const QList<InfoRow> rows = DiskInfoReport::geometryRows(disk);
    QCOMPARE(labels(rows), kGeometryLabels);
    QCOMPARE(rows.at(0).value, QStringLiteral("12161"));
    QCOMPARE(rows.at(1).value, QStringLiteral("255"));
    QCOMPARE(rows.at(2).value, QStringLiteral("63"));
    QCOMPARE(rows.at(3).value, QStringLiteral("512"));

    const InfoRow &status = rows.at(4);
    QCOMPARE(labels(status.children),
             QStringList({QStringLiteral("Offline data collection activity was completed without error."),
                          QStringLiteral("Auto Offline Data Collection: Enabled.")}));

    const InfoRow &offline = rows.at(5);
    QCOMPARE(labels(offline.children), QStringList{QStringLiteral("   Offline data collection not supported")});

    const InfoRow &smart = rows.at(6);
    QCOMPARE(smart.children.size(), 2);
    for (const InfoRow &child : smart.children)
        QCOMPARE(child.label, QStringLiteral("..."));
    QCOMPARE(smart.children.at(0).value, QStringLiteral("   Saves SMART data before entering power-saving mode"));
    QCOMPARE(smart.children.at(1).value, QStringLiteral("   Supports SMART auto save timer"));

    QCOMPARE(rows.at(7).value, QStringLiteral("17"));

    disk.offlineStatus = 0x03;
    const QList<InfoRow> manualRows = DiskInfoReport::geometryRows(disk);
    const InfoRow *manual = findRow(manualRows, QStringLiteral("Offline data collection status"));
    QVERIFY(manual);
    QCOMPARE(labels(manual->children),
             QStringList({QStringLiteral("Offline data collection activity is in progress."),
                          QStringLiteral("Auto Offline Data Collection: Disabled.")}));
}

void TestDiskInfoReport::allRowsOrder_data()
{
    QTest::addColumn<int>("volumes");
    QTest::newRow("no volumes") << 0;
    QTest::newRow("two volumes") << 2;
}

void TestDiskInfoReport::allRowsOrder()
{
    QFETCH(int, volumes);
    DiskRecord disk;
    QStringList expected = kIdentityLabels;
    for (int i = 0; i < volumes; ++i) {
        const VolumeRecord v = volume(QStringLiteral("Vol%1").arg(i), QStringLiteral("%1:\\").arg(i), 0, 2048);
        disk.volumes.append(v);
        expected.append(QStringLiteral("Vol%1 (%1:\\) Free 0 B of 2 KB").arg(i));
    }
    expected.append(kGeometryLabels);
    QCOMPARE(labels(DiskInfoReport::allRows(disk)), expected);
}

QTEST_GUILESS_MAIN(TestDiskInfoReport)
#include "tst_diskinforeport.moc"
