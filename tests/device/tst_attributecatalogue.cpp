#include "device/AttributeCatalogue.h"

#include <QtTest>

namespace {

const QStringList kMarkers = {
    QStringLiteral("(Better RAW Value LESS)"),
    QStringLiteral("(Better RAW Value MORE)"),
    QStringLiteral("(Better Value LESS)"),
    QStringLiteral("(Better Value MORE)"),
};

} // namespace

class TestAttributeCatalogue : public QObject
{
    Q_OBJECT

private slots:
    void knownIds_data();
    void knownIds();
    void coverage();
    void unknownIds_data();
    void unknownIds();
    void texts_data();
    void texts();
};

// Every ID with a description, its name (or the unknown name) and the
// direction marker its description ends with.
void TestAttributeCatalogue::knownIds_data()
{
    QTest::addColumn<quint32>("id");
    QTest::addColumn<QString>("name");
    QTest::addColumn<QString>("marker");

    QTest::newRow("1") << 1u << "Raw read error rate" << "(Better RAW Value LESS)";
    QTest::newRow("2") << 2u << "Throughput performance" << "(Better RAW Value MORE)";
    QTest::newRow("3") << 3u << "Spinup time" << "(Better RAW Value LESS)";
    QTest::newRow("4") << 4u << "Start/Stop count" << "";
    QTest::newRow("5") << 5u << "Reallocated sector count" << "(Better RAW Value LESS)";
    QTest::newRow("6") << 6u << "Read channel margin" << "";
    QTest::newRow("7") << 7u << "Seek error rate" << "(Better RAW Value LESS)";
    QTest::newRow("8") << 8u << "Seek timer performance" << "(Better Value LESS)";
    QTest::newRow("9") << 9u << "Power-on hours count" << "";
    QTest::newRow("10") << 10u << "Spinup retry count" << "(Better RAW Value LESS)";
    QTest::newRow("11") << 11u << "Calibration retry count" << "(Better Value MORE)";
    QTest::newRow("12") << 12u << "Power cycle count" << "";
    QTest::newRow("13") << 13u << "Soft read error rate" << "(Better RAW Value LESS)";
    QTest::newRow("190") << 190u << "Airflow Temperature/Temperature Difference from 100" << "";
    QTest::newRow("191") << 191u << "G-sense error rate" << "";
    QTest::newRow("192") << 192u << "Power-off retract count" << "";
    QTest::newRow("193") << 193u << "Load/Unload cycle count" << "";
    QTest::newRow("194") << 194u << "Temperature" << "(Better RAW Value LESS)";
    QTest::newRow("195") << 195u << "Hardware ECC recovered" << "(Better Value MORE)";
    QTest::newRow("196") << 196u << "Reallocation count" << "(Better RAW Value LESS)";
    QTest::newRow("197") << 197u << "Current pending sector count" << "(Better RAW Value LESS)";
    QTest::newRow("198") << 198u << "Offline scan uncorrectable count" << "(Better RAW Value LESS)";
    QTest::newRow("199") << 199u << "UDMA CRC error rate" << "(Better RAW Value LESS)";
    QTest::newRow("200") << 200u << "Write error rate" << "(Better RAW Value LESS)";
    QTest::newRow("201") << 201u << "Unknown attribute" << "(Better RAW Value LESS)";
    QTest::newRow("202") << 202u << "Data Address Mark errors" << "";
    QTest::newRow("203") << 203u << "Run out cancel" << "(Better RAW Value LESS)";
    QTest::newRow("204") << 204u << "Soft ECC correction" << "";
    QTest::newRow("205") << 205u << "Thermal asperity rate (TAR)" << "";
    QTest::newRow("206") << 206u << "Flying height" << "";
    QTest::newRow("207") << 207u << "Spin high current" << "";
    QTest::newRow("208") << 208u << "Spin buzz" << "";
    QTest::newRow("209") << 209u << "Offline seek performance" << "";
    QTest::newRow("220") << 220u << "Disk shift" << "(Better RAW Value LESS)";
    QTest::newRow("221") << 221u << "Unknown attribute" << "(Better RAW Value LESS)";
    QTest::newRow("222") << 222u << "Loaded hours" << "";
    QTest::newRow("223") << 223u << "Load/unload retry count" << "";
    QTest::newRow("224") << 224u << "Load friction" << "";
    QTest::newRow("225") << 225u << "Unknown attribute" << "";
    QTest::newRow("226") << 226u << "Load-in time" << "";
    QTest::newRow("227") << 227u << "Torque amplification count" << "";
    QTest::newRow("228") << 228u << "Unknown attribute" << "";
    QTest::newRow("230") << 230u << "GMR head amplitude" << "";
    QTest::newRow("231") << 231u << "Unknown attribute" << "";
    QTest::newRow("240") << 240u << "Head flying hours" << "";
    QTest::newRow("250") << 250u << "Read error retry rate" << "(Better RAW Value LESS)";
}

void TestAttributeCatalogue::knownIds()
{
    QFETCH(quint32, id);
    QFETCH(QString, marker);
    QTEST(AttributeCatalogue::name(id), "name");

    const QString text = AttributeCatalogue::description(id);
    const QString indent = (id == 6 || id == 10) ? QStringLiteral(" ") : QStringLiteral("  ");
    QVERIFY2(text.startsWith(indent) && !text.at(indent.size()).isSpace(), qPrintable(text));
    if (marker.isEmpty()) {
        QVERIFY2(!text.contains(QLatin1String("(Better")), qPrintable(text));
    } else {
        // The marker is bold and is the last thing but closing tags.
        const qsizetype at = text.indexOf(QLatin1String("<B>") + marker);
        QVERIFY2(at > 0, qPrintable(text));
        const QString tail = text.mid(at + 3 + marker.size());
        QVERIFY2(tail.isEmpty() || tail == QLatin1String("</B>") || tail == QLatin1String("</B></p>"),
                 qPrintable(tail));
        for (const QString &other : kMarkers)
            QVERIFY(other == marker || !text.contains(other));
    }
}

void TestAttributeCatalogue::coverage()
{
    int named = 0;
    int described = 0;
    for (quint32 id = 0; id <= 255; ++id) {
        named += AttributeCatalogue::name(id) != QLatin1String("Unknown attribute");
        described += AttributeCatalogue::description(id) != QLatin1String(" Unknown attribute");
    }
    QCOMPARE(named, 41);
    QCOMPARE(described, 46);
}

void TestAttributeCatalogue::unknownIds_data()
{
    QTest::addColumn<quint32>("id");
    QTest::newRow("0") << 0u;
    QTest::newRow("14") << 14u;
    QTest::newRow("189") << 189u;
    QTest::newRow("229") << 229u;
    QTest::newRow("241") << 241u;
    QTest::newRow("255") << 255u;
    QTest::newRow("256") << 256u;
}

void TestAttributeCatalogue::unknownIds()
{
    QFETCH(quint32, id);
    QCOMPARE(AttributeCatalogue::name(id), QStringLiteral("Unknown attribute"));
    QCOMPARE(AttributeCatalogue::description(id), QStringLiteral(" Unknown attribute"));
}

// Whole texts where a tidy-up would be easy to make by mistake: spelling,
// quotes, tags left open or closed.
void TestAttributeCatalogue::texts_data()
{
    QTest::addColumn<quint32>("id");
    QTest::addColumn<QString>("text");

    QTest::newRow("thereis") << 2u << "  Overall (general) throughput performance of a hard disk drive. If the value of this attribute is decreasing thereis a high probability that there is a problem with your disk. <B>(Better RAW Value MORE)</B></p>";
    QTest::newRow("paragraph only") << 4u << "  Number of spindle start/stop cycles.</p>";
    QTest::newRow("quotes, no paragraph") << 5u << "  Count of reallocated sectors. When the hard drive finds a read/write/verification error, it marks this sector as \"reallocated\" and transfers data to a special reserved area (spare area). This process is also known as remapping and \"reallocated\" sectors are called remaps. This is why, on modern hard disks, \"bad blocks\" cannot be found while testing the surface - all bad blocks are hidden in reallocated sectors. However, the more sectors that are reallocated, the more read/write speed will decrease. <B>(Better RAW Value LESS)</B>";
    QTest::newRow("one space") << 6u << " Margin of a channel while reading data. The function of this attribute is not specified.";
    QTest::newRow("bold left open") << 13u << "  Uncorrected read errors reported to the operating system. If the value is non-zero, you should backup your data. <B>(Better RAW Value LESS)";
    QTest::newRow("ta a") << 190u << "  Airflow temperature on Western Digital HD (Same as Current internal temperature, but current value is 50 less.) Value is equal to (100 - temp Celsius) allowing manufacturer to set a minimum threshold which corresponds ta a maximum temperature on Seagate HD";
    QTest::newRow("Fequency") << 191u << "  Fequency of mistakes as a result of impact loads.";
    QTest::newRow("unstable") << 197u << "  Number of \"unstable\" sectors (waiting to be remapped). If the unstable sector is subsequently written or read successfully, this value is decreased and the sector is not remapped. Read errors on the sector will not remap the sector, it will only be remapped on a failed write attempt. This can be problematic to test because cached writes will not remap the sector, only direct I/O writes to the disk. <B>(Better RAW Value LESS)";
    QTest::newRow("described, not named") << 201u << "  Number of off-track errors. If non-zero, make a backup. <B>(Better RAW Value LESS)";
    QTest::newRow("thrashing") << 230u << "  Amplitude of \"thrashing\" (distance of repetitive forward/reverse head motion).";
}

void TestAttributeCatalogue::texts()
{
    QFETCH(quint32, id);
    QTEST(AttributeCatalogue::description(id), "text");
}

QTEST_GUILESS_MAIN(TestAttributeCatalogue)
#include "tst_attributecatalogue.moc"
