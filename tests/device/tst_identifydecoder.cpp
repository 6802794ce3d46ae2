#include "device/IdentifyDecoder.h"

#include <QtTest>

namespace {

// Stores \a bytes the way a drive does: first character of each pair in the
// high byte of the word.
void putField(Sector &s, int offset, const QByteArray &bytes)
{
    for (int i = 0; i < bytes.size(); ++i)
        s[offset + (i ^ 1)] = std::uint8_t(bytes.at(i));
}

} // namespace

class TestIdentifyDecoder : public QObject
{
    Q_OBJECT

private slots:
    void stringField_data()
    {
        QTest::addColumn<int>("offset");
        QTest::addColumn<QByteArray>("field"); // in reading order, before the pair swap
        QTest::addColumn<int>("length");
        QTest::addColumn<QString>("expected");

        QTest::newRow("padded, inner spaces kept") << 100 << QByteArray("WDC  WD2500JB").leftJustified(40, ' ') << 40 << "WDC  WD2500JB";
        QTest::newRow("odd length text") << 100 << QByteArray("3.CME   ") << 8 << "3.CME";
        QTest::newRow("spaces only") << 100 << QByteArray(20, ' ') << 20 << "";
        QTest::newRow("text after NUL is dropped") << 100 << QByteArray("AB\0CDEFG", 8) << 8 << "AB";
        QTest::newRow("C white space trimmed") << 100 << QByteArray("  \t\n\v\f\rSN1\r\f\v\n\t   ") << 20 << "SN1";
        // 0xA0 is a character in Latin-1, not padding.
        QTest::newRow("Latin-1, no-break space kept") << 100 << QByteArray("\xa0" "Disk\xe9   ") << 10 << QString::fromUtf8("\u00a0Disk\u00e9");
        QTest::newRow("capped at 64") << 100 << QByteArray(80, 'x') << 80 << QString(64, QLatin1Char('x'));
        QTest::newRow("ends with the sector") << 504 << QByteArray("ABCDEFGH") << 40 << "ABCDEFGH";
    }

    void stringField()
    {
        QFETCH(int, offset);
        QFETCH(QByteArray, field);
        QFETCH(int, length);
        Sector s{};
        putField(s, offset, field);
        QTEST(IdentifyDecoder::decodeString(s, offset, length), "expected");
    }

    void smartBits_data()
    {
        QTest::addColumn<QList<int>>("words"); // 82, 83, 85, 87
        QTest::addColumn<int>("supported");
        QTest::addColumn<int>("enabled");
        QTest::addColumn<int>("storedEnabled"); // what applyIdentify keeps in the record

        QTest::newRow("both valid, on") << QList<int>{0x746B, 0x4000, 0x7469, 0x4123} << 1 << 1 << 1;
        QTest::newRow("both valid, off") << QList<int>{0x746A, 0x7FFF, 0x7468, 0x4000} << 0 << 0 << 0;
        // Words 83 and 87 count only when their top bits read 01; an unknown
        // "supported" stays -1, an unknown "enabled" is tried as on.
        QTest::newRow("words zero") << QList<int>{0x0001, 0x0000, 0x0001, 0x0000} << -1 << -1 << 1;
        QTest::newRow("words all ones") << QList<int>{0xFFFF, 0xFFFF, 0xFFFF, 0xFFFF} << -1 << -1 << 1;
        QTest::newRow("enabled unknown, off") << QList<int>{0x0000, 0x4000, 0x0000, 0xC000} << 0 << -1 << 1;
    }

    void smartBits()
    {
        QFETCH(QList<int>, words);
        Sector s{};
        setSectorWord(s, 82, std::uint16_t(words[0]));
        setSectorWord(s, 83, std::uint16_t(words[1]));
        setSectorWord(s, 85, std::uint16_t(words[2]));
        setSectorWord(s, 87, std::uint16_t(words[3]));
        QTEST(IdentifyDecoder::smartSupported(s), "supported");
        QTEST(IdentifyDecoder::smartEnabled(s), "enabled");

        DiskRecord disk;
        IdentifyDecoder::applyIdentify(disk, s);
        QTEST(disk.smartSupported, "supported");
        QTEST(disk.smartEnabled, "storedEnabled");
    }

    void ataVersion_data()
    {
        QTest::addColumn<int>("word80");
        QTest::addColumn<int>("word81");
        QTest::addColumn<int>("major");
        QTest::addColumn<QString>("text");

        QTest::newRow("word 80 all ones") << 0xFFFF << 0x0021 << -1 << "";
        QTest::newRow("word 80 zero") << 0x0000 << 0x0021 << -1 << "";
        QTest::newRow("minor 1") << 0x0002 << 1 << 1 << "ATA-1 X3T9.2 781D prior to revision 4";
        QTest::newRow("minor 6: ATA-3 draft") << 0x0008 << 6 << -3 << "ATA-3 X3T10 2008D revision 1";
        QTest::newRow("minor 8: ATA-3 draft") << 0x0008 << 8 << -3 << "ATA-3 X3T10 2008D revision 0";
        QTest::newRow("minor 20 back to ATA-4") << 0x003E << 20 << 4 << "ATA/ATAPI-4 T13 1153D revision 14";
        QTest::newRow("minor 34, last row") << 0x007E << 34 << 6 << "ATA/ATAPI-6 published, ANSI INCITS 361-2002";
        // Rows without a major number, and minors outside the table, fall back to
        // the highest bit of the major word with no text.
        QTest::newRow("minor 29 reserved") << 0x00FE << 29 << 7 << "";
        QTest::newRow("minor 0 is not looked up") << 0x007E << 0 << 6 << "";
        QTest::newRow("minor 35") << 0x003E << 35 << 5 << "";
        QTest::newRow("bit 15 highest") << 0x8002 << 0xFFFF << 15 << "";
        QTest::newRow("only bit 0 set") << 0x0001 << 0 << 1 << "";
    }

    void ataVersion()
    {
        QFETCH(int, word80);
        QFETCH(int, word81);
        Sector s{};
        setSectorWord(s, 80, std::uint16_t(word80));
        setSectorWord(s, 81, std::uint16_t(word81));

        DiskRecord disk;
        IdentifyDecoder::applyIdentify(disk, s);
        QTEST(disk.ataMajorVersion, "major");
        QTEST(disk.ataStandardText, "text");
    }
};

QTEST_GUILESS_MAIN(TestIdentifyDecoder)
#include "tst_identifydecoder.moc"
