#include "device/DiskInfoReport.h"
#include "device/SizeText.h"
#include "device/SmartTexts.h"

#include <QLocale>
#include <QtTest>

namespace {

QStringList labels(const QList<InfoRow> &rows, QString InfoRow::*field = &InfoRow::label)
{
    QStringList out;
    for (const InfoRow &row : rows)
        out.append(row.*field);
    return out;
}

QStringList values(const QList<InfoRow> &rows)
{
    return labels(rows, &InfoRow::value);
}

VolumeRecord volume(const QString &label, const QString &root, quint64 freeBytes, quint64 totalBytes)
{
    return VolumeRecord{0, {}, root, label, QStringLiteral("NTFS"), QStringLiteral("1A2B-3C4D"), -1, totalBytes, freeBytes};
}

const QStringList kIdentityLabels = {"Disk Model", "Serial Number", "Firmware Version", "User Capacity",
                                     "ATA Version", "ATA Standart", "SMART Support"};
const QStringList kGeometryLabels = {"Cylinders", "Tracks per cylinder", "Sectors per track", "Bytes per sector",
                                     "Offline data collection status", "Offline data collection capabilities",
                                     "SMART capabilities", "SMART Attributes Data Structure revision number"};

} // namespace

class TestDiskInfoReport : public QObject
{
    Q_OBJECT

private slots:
    void sizeTexts_data()
    {
        QTest::addColumn<quint64>("count");
        QTest::addColumn<QChar>("separator");
        QTest::addColumn<QString>("bytes");
        QTest::addColumn<QString>("shortText");

        const QChar point(QLatin1Char('.'));
        const QChar comma(QLatin1Char(','));
        QTest::newRow("0") << quint64(0) << point << "0 bytes" << "0 B";
        QTest::newRow("1") << quint64(1) << point << "1 byte" << "1 B";
        QTest::newRow("1023") << quint64(1023) << point << "1 023 bytes" << "1023 B";
        QTest::newRow("1024") << quint64(1024) << point << "1 024 bytes" << "1 KB";
        QTest::newRow("1100") << quint64(1100) << point << "1 100 bytes" << "1.074 KB";
        QTest::newRow("1536") << quint64(1536) << point << "1 536 bytes" << "1.5 KB";
        // Only the three decimals are trimmed, never digits before the point.
        QTest::newRow("10240") << quint64(10240) << point << "10 240 bytes" << "10 KB";
        QTest::newRow("1048575") << quint64(1048575) << point << "1 048 575 bytes" << "1023.999 KB";
        QTest::newRow("1048576") << quint64(1048576) << point << "1 048 576 bytes" << "1 MB";
        QTest::newRow("500 GB disk") << quint64(500107862016) << point << "500 107 862 016 bytes" << "465.762 GB";
        QTest::newRow("1099511627776") << quint64(1099511627776) << point << "1 099 511 627 776 bytes" << "1 TB";
        QTest::newRow("2 PB") << quint64(2251799813685248) << point << "2 251 799 813 685 248 bytes" << "2048 TB";
        // The point written by the formatting is not the comma looked for.
        QTest::newRow("comma: 2048") << quint64(2048) << comma << "2 048 bytes" << "2. KB";
        QTest::newRow("comma: 1536") << quint64(1536) << comma << "1 536 bytes" << "1.5 KB";
    }

    void sizeTexts()
    {
        QFETCH(quint64, count);
        QFETCH(QChar, separator);
        QTEST(SizeText::byteCount(count), "bytes");
        QTEST(SizeText::shortSize(qint64(count), separator), "shortText");
        // Without a separator given, the system's is the one looked for.
        if (separator == QLocale::system().decimalPoint().at(0))
            QTEST(SizeText::shortSize(qint64(count)), "shortText");
    }

    // The status row names the activity (bits 0..6) and the automatic collection switch (bit 7).
    void offlineStatus_data()
    {
        QTest::addColumn<quint32>("status");
        QTest::addColumn<QString>("activity");
        QTest::addColumn<QString>("automatic");

        QTest::newRow("0") << 0x00u << "was never started" << "Disabled";
        QTest::newRow("2 with auto") << 0x82u << "was completed without error" << "Enabled";
        QTest::newRow("3") << 0x03u << "is in progress" << "Disabled";
        QTest::newRow("3 with auto") << 0x83u << "is in a Reserved state" << "Enabled";
        QTest::newRow("5") << 0x05u << "was aborted by an interrupting command from host" << "Disabled";
        QTest::newRow("63") << 0xBFu << "is in a Reserved state" << "Enabled";
        QTest::newRow("64") << 0x40u << "is in a Vendor Specific state" << "Disabled";
        QTest::newRow("127 with auto") << 0xFFu << "is in a Vendor Specific state" << "Enabled";
    }

    void offlineStatus()
    {
        QFETCH(quint32, status);
        QFETCH(QString, activity);
        QFETCH(QString, automatic);
        DiskRecord disk;
        disk.offlineStatus = status;
        const InfoRow row = DiskInfoReport::geometryRows(disk).at(4);
        QCOMPARE(labels(row.children), QStringList({QStringLiteral("Offline data collection activity %1.").arg(activity),
                                                    QStringLiteral("Auto Offline Data Collection: %1.").arg(automatic)}));
    }

    void capabilityTexts_data()
    {
        QTest::addColumn<quint32>("offlineCapability");
        QTest::addColumn<quint32>("smartCapability");
        QTest::addColumn<QStringList>("offlineTexts");
        QTest::addColumn<QStringList>("smartTexts");

        QTest::newRow("none") << 0u << 0u << QStringList{"   Offline data collection not supported"}
                              << QStringList{"   Automatic saving of SMART data is not implemented"};
        // Bit 2 reads the other way round; bit 7 is not a capability.
        QTest::newRow("typical drive")
            << 0xDBu << 0x0102u
            << QStringList{"SMART execute Offline immediate", "Auto Offline data collection on/off support",
                           "Suspend Offline collection upon new command", "Offline surface scan supported",
                           "Self-test supported", "No Conveyance Self-test supported", "Selective Self-test supported"}
            << QStringList{"   Does not save SMART data before tentering power-saving mode", "   Supports SMART auto save timer"};
    }

    void capabilityTexts()
    {
        QFETCH(quint32, offlineCapability);
        QFETCH(quint32, smartCapability);
        QTEST(SmartTexts::offlineCapabilityTexts(offlineCapability), "offlineTexts");
        QTEST(SmartTexts::smartCapabilityTexts(smartCapability), "smartTexts");
    }

    void identityRows_data()
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

    void identityRows()
    {
        QFETCH(int, ataMajor);
        QFETCH(int, smartState);
        QFETCH(QString, ataVersion);
        QFETCH(QString, smartSupport);
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
        QCOMPARE(values(rows), QStringList({"ST9100821AS", "5NJ0R13A", "3.CME", "100 030 242 816 bytes (93.16 GB)",
                                            ataVersion, "ATA-3 X3T10 2008D revision 1", smartSupport}));
    }

    void geometryRows()
    {
        DiskRecord disk;
        disk.cylinders = 12161;
        disk.tracksPerCylinder = 255;
        disk.sectorsPerTrack = 63;
        disk.bytesPerSector = 512;
        disk.offlineCapability = 0x80;
        disk.smartCapability = 0x0003;
        disk.attributes.resize(17);
        disk.attributeCount = 3; // the row counts the rows themselves

        const QList<InfoRow> rows = DiskInfoReport::geometryRows(disk);
        QCOMPARE(labels(rows), kGeometryLabels);
        QCOMPARE(values(rows), QStringList({"12161", "255", "63", "512", "", "", "", "17"}));
        QCOMPARE(labels(rows.at(5).children), SmartTexts::offlineCapabilityTexts(0x80));
        // SMART capabilities show their texts as values under a "..." label.
        QCOMPARE(labels(rows.at(6).children), QStringList({"...", "..."}));
        QCOMPARE(values(rows.at(6).children), SmartTexts::smartCapabilityTexts(0x0003));
    }

    // Volume rows sit between the identity and the geometry rows.
    void allRowsAndVolumes()
    {
        DiskRecord disk;
        disk.volumes = {volume(QStringLiteral("System"), QStringLiteral("C:\\"), 1536, 1073741824),
                        volume(QStringLiteral("Data %2"), QStringLiteral("1:\\"), 0, 2048), VolumeRecord{}};
        const QList<InfoRow> rows = DiskInfoReport::allRows(disk);
        // Placeholders inside a label are text, not more arguments.
        const QStringList volumeLabels = {"System (C:\\) Free 1.5 KB of 1 GB", "Data %2 (1:\\) Free 0 B of 2 KB",
                                          " () Free 0 B of 0 B"};
        QCOMPARE(labels(rows), kIdentityLabels + volumeLabels + kGeometryLabels);
        QCOMPARE(rows.at(7).value, QStringLiteral("File system (NTFS). Serial number (1A2B-3C4D)."));
        QCOMPARE(rows.at(9).value, QStringLiteral("File system (Unknown). Serial number ()."));
        QVERIFY(rows.at(7).children.isEmpty());
    }
};

QTEST_GUILESS_MAIN(TestDiskInfoReport)
#include "tst_diskinforeport.moc"
