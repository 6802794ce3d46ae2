#include "device/IdentifyDecoder.h"

#include <QtTest>

namespace {

void setWord(Sector &s, int word, std::uint16_t value)
{
    s[2 * word] = std::uint8_t(value & 0xFF);
    s[2 * word + 1] = std::uint8_t(value >> 8);
}

// Stores \a bytes the way a drive does: first character of each pair in the
// high byte of the word.
void putField(Sector &s, int offset, const QByteArray &bytes)
{
    for (int i = 0; i < bytes.size(); ++i)
        s[offset + (i ^ 1)] = std::uint8_t(bytes.at(i));
}

// A field padded with spaces to its full length, as drives normally send it.
void putPadded(Sector &s, int offset, int length, const QByteArray &text)
{
    putField(s, offset, text.leftJustified(length, ' ', true));
}

Sector identifyWith(const QByteArray &model, const QByteArray &serial, const QByteArray &firmware)
{
    Sector s{};
    putPadded(s, IdentifyDecoder::kModelOffset, IdentifyDecoder::kModelLength, model);
    putPadded(s, IdentifyDecoder::kSerialOffset, IdentifyDecoder::kSerialLength, serial);
    putPadded(s, IdentifyDecoder::kFirmwareOffset, IdentifyDecoder::kFirmwareLength, firmware);
    return s;
}

} // namespace

class TestIdentifyDecoder : public QObject
{
    Q_OBJECT

private slots:
    void stringField_data();
    void stringField();
    void stringFieldIsCappedAt64();
    void smartBits_data();
    void smartBits();
    void ataVersion_data();
    void ataVersion();
    void minorVersionTextOutsideTable();
    void identityPrecedence_data();
    void identityPrecedence();
};

void TestIdentifyDecoder::stringField_data()
{
    QTest::addColumn<QByteArray>("field"); // in reading order, before the pair swap
    QTest::addColumn<QString>("expected");

    QTest::newRow("padded model") << QByteArray("ST320410A").leftJustified(40, ' ') << "ST320410A";
    QTest::newRow("odd length text") << QByteArray("3.CME   ") << "3.CME";
    QTest::newRow("inner spaces kept") << QByteArray("WDC  WD2500JB").leftJustified(40, ' ') << "WDC  WD2500JB";
    QTest::newRow("spaces only") << QByteArray(20, ' ') << "";
    QTest::newRow("all NUL") << QByteArray(20, '\0') << "";
    QTest::newRow("NUL padding") << QByteArray("2.9.09\0\0", 8) << "2.9.09";
    QTest::newRow("text after NUL is dropped") << QByteArray("AB\0CDEFG", 8) << "AB";
    QTest::newRow("leading padding") << QByteArray("      K430T7C2F50K  ") << "K430T7C2F50K";
    QTest::newRow("C white space trimmed") << QByteArray("\t\n\v\f\rSN1\r\f\v\n\t   ") << "SN1";
    QTest::newRow("Latin-1 letter") << QByteArray("Disk\xe9   ") << QString::fromUtf8("Disk\u00e9");
    // 0xA0 is a character in Latin-1, not padding.
    QTest::newRow("no-break space kept") << QByteArray("\xa0X      ") << QString::fromUtf8("\u00a0X");
}

void TestIdentifyDecoder::stringField()
{
    QFETCH(QByteArray, field);
    QFETCH(QString, expected);
    Sector s{};
    putField(s, 100, field);
    QCOMPARE(IdentifyDecoder::decodeString(s, 100, int(field.size())), expected);
}

void TestIdentifyDecoder::stringFieldIsCappedAt64()
{
    Sector s{};
    putField(s, 100, QByteArray(80, 'x'));
    QCOMPARE(IdentifyDecoder::decodeString(s, 100, 80), QString(64, QLatin1Char('x')));
    // A field running past the sector ends with the sector.
    QCOMPARE(IdentifyDecoder::decodeString(s, 500, 40).size(), 0);
    putField(s, 504, QByteArray("ABCDEFGH"));
    QCOMPARE(IdentifyDecoder::decodeString(s, 504, 40), QStringLiteral("ABCDEFGH"));
}

void TestIdentifyDecoder::smartBits_data()
{
    QTest::addColumn<int>("word82");
    QTest::addColumn<int>("word83");
    QTest::addColumn<int>("word85");
    QTest::addColumn<int>("word87");
    QTest::addColumn<int>("supported");
    QTest::addColumn<int>("enabled");
    QTest::addColumn<int>("storedEnabled"); // what applyIdentify keeps in the record

    QTest::newRow("both valid, on") << 0x746B << 0x4000 << 0x7469 << 0x4123 << 1 << 1 << 1;
    QTest::newRow("both valid, off") << 0x746A << 0x7FFF << 0x7468 << 0x4000 << 0 << 0 << 0;
    QTest::newRow("words zero") << 0x0001 << 0x0000 << 0x0001 << 0x0000 << -1 << -1 << 1;
    QTest::newRow("words all ones") << 0xFFFF << 0xFFFF << 0xFFFF << 0xFFFF << -1 << -1 << 1;
    QTest::newRow("bit 15 without bit 14") << 0x0001 << 0x8000 << 0x0000 << 0x8000 << -1 << -1 << 1;
    QTest::newRow("enabled unknown, off") << 0x0000 << 0x4000 << 0x0000 << 0xC000 << 0 << -1 << 1;
}

void TestIdentifyDecoder::smartBits()
{
    QFETCH(int, word82);
    QFETCH(int, word83);
    QFETCH(int, word85);
    QFETCH(int, word87);
    Sector s{};
    setWord(s, 82, std::uint16_t(word82));
    setWord(s, 83, std::uint16_t(word83));
    setWord(s, 85, std::uint16_t(word85));
    setWord(s, 87, std::uint16_t(word87));

    QTEST(IdentifyDecoder::smartSupported(s), "supported");
    QTEST(IdentifyDecoder::smartEnabled(s), "enabled");

    // An unknown "supported" stays -1, an unknown "enabled" is tried as on.
    DiskRecord disk;
    IdentifyDecoder::applyIdentify(disk, s);
    QTEST(disk.smartSupported, "supported");
    QTEST(disk.smartEnabled, "storedEnabled");
}

void TestIdentifyDecoder::ataVersion_data()
{
    QTest::addColumn<int>("word80");
    QTest::addColumn<int>("word81");
    QTest::addColumn<int>("major");
    QTest::addColumn<QString>("text");

    QTest::newRow("word 80 all ones") << 0xFFFF << 0x0021 << -1 << "";
    QTest::newRow("word 80 zero") << 0x0000 << 0x0021 << -1 << "";
    QTest::newRow("minor 6: ATA-3 draft") << 0x0008 << 6 << -3 << "ATA-3 X3T10 2008D revision 1";
    QTest::newRow("minor 8: ATA-3 draft") << 0x0008 << 8 << -3 << "ATA-3 X3T10 2008D revision 0";
    QTest::newRow("minor 1") << 0x0002 << 1 << 1 << "ATA-1 X3T9.2 781D prior to revision 4";
    QTest::newRow("minor 10") << 0x000E << 10 << 3 << "ATA-3 published, ANSI X3.298-199x";
    QTest::newRow("minor 19 before 20") << 0x003E << 19 << 5 << "ATA/ATAPI-5 T13 1321D revision 3";
    QTest::newRow("minor 20 back to ATA-4") << 0x003E << 20 << 4 << "ATA/ATAPI-4 T13 1153D revision 14";
    QTest::newRow("minor 26") << 0x00FE << 26 << 7 << "ATA/ATAPI-7 T13 1532D revision 1";
    QTest::newRow("minor 33") << 0x00FE << 33 << 7 << "ATA/ATAPI-7 T13 1532D revision 4a";
    QTest::newRow("minor 34, last row") << 0x007E << 34 << 6 << "ATA/ATAPI-6 published, ANSI INCITS 361-2002";
    // Rows without a major number, and minors outside the table, fall back to
    // the major word with no text.
    QTest::newRow("minor 29 reserved") << 0x00FE << 29 << 7 << "";
    QTest::newRow("minor 31 reserved") << 0x01FE << 31 << 8 << "";
    QTest::newRow("minor 0 is not looked up") << 0x007E << 0 << 6 << "";
    QTest::newRow("minor 35") << 0x003E << 35 << 5 << "";
    QTest::newRow("minor 0xFFFF") << 0x001E << 0xFFFF << 4 << "";
    QTest::newRow("bit 15 highest") << 0x8002 << 0 << 15 << "";
    QTest::newRow("only bit 0 set") << 0x0001 << 0 << 1 << "";
}

void TestIdentifyDecoder::ataVersion()
{
    QFETCH(int, word80);
    QFETCH(int, word81);
    QFETCH(int, major);
    QFETCH(QString, text);
    Sector s{};
    setWord(s, 80, std::uint16_t(word80));
    setWord(s, 81, std::uint16_t(word81));

    const IdentifyDecoder::AtaVersion version = IdentifyDecoder::ataVersion(s);
    QCOMPARE(version.major, major);
    QCOMPARE(version.text, text);

    DiskRecord disk;
    IdentifyDecoder::applyIdentify(disk, s);
    QCOMPARE(disk.ataMajorVersion, major);
    QCOMPARE(disk.ataStandardText, text);
}

void TestIdentifyDecoder::minorVersionTextOutsideTable()
{
    QCOMPARE(IdentifyDecoder::minorVersionText(0), QStringLiteral("Device does not report version"));
    QCOMPARE(IdentifyDecoder::minorVersionText(29), QStringLiteral("reserved"));
    QVERIFY(IdentifyDecoder::minorVersionText(-1).isEmpty());
    QVERIFY(IdentifyDecoder::minorVersionText(35).isEmpty());
}

void TestIdentifyDecoder::identityPrecedence_data()
{
    // What the storage descriptor left in the record, what IDENTIFY says, and
    // what the record holds afterwards.
    QTest::addColumn<QString>("descModel");
    QTest::addColumn<QString>("descSerial");
    QTest::addColumn<QString>("descFirmware");
    QTest::addColumn<QByteArray>("idModel");
    QTest::addColumn<QByteArray>("idSerial");
    QTest::addColumn<QByteArray>("idFirmware");
    QTest::addColumn<QString>("model");
    QTest::addColumn<QString>("serial");
    QTest::addColumn<QString>("firmware");

    QTest::newRow("no descriptor")
        << "" << "" << "" << QByteArray("ST9100821AS") << QByteArray("5NJ0R13A") << QByteArray("3.CME")
        << "ST9100821AS" << "5NJ0R13A" << "3.CME";
    QTest::newRow("descriptor wins model and firmware, not serial")
        << "ATA ST9100821AS" << "    5NJ0R13A" << "3.CM" << QByteArray("ST9100821AS") << QByteArray("5NJ0R13A")
        << QByteArray("3.CME") << "ATA ST9100821AS" << "5NJ0R13A" << "3.CM";
    QTest::newRow("serial of spaces keeps descriptor serial")
        << "" << "  WD-WMANK4051741" << "" << QByteArray("WDC WD2500JB-00REA0") << QByteArray("")
        << QByteArray("20.00K20") << "WDC WD2500JB-00REA0" << "  WD-WMANK4051741" << "20.00K20";
    QTest::newRow("empty IDENTIFY leaves everything")
        << "Vendor Product" << "S1" << "F1" << QByteArray() << QByteArray() << QByteArray()
        << "Vendor Product" << "S1" << "F1";
}

void TestIdentifyDecoder::identityPrecedence()
{
    QFETCH(QByteArray, idModel);
    QFETCH(QByteArray, idSerial);
    QFETCH(QByteArray, idFirmware);
    DiskRecord disk;
    QFETCH(QString, descModel);
    QFETCH(QString, descSerial);
    QFETCH(QString, descFirmware);
    disk.model = descModel;
    disk.serial = descSerial;
    disk.firmware = descFirmware;

    IdentifyDecoder::applyIdentify(disk, identifyWith(idModel, idSerial, idFirmware));
    QTEST(disk.model, "model");
    QTEST(disk.serial, "serial");
    QTEST(disk.firmware, "firmware");
}

QTEST_GUILESS_MAIN(TestIdentifyDecoder)
#include "tst_identifydecoder.moc"
