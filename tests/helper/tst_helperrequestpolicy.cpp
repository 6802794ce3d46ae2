#include "device/AtaCommandIssuer.h"
#include "helper/HelperRequestPolicy.h"

#include <QtTest>

class TestHelperRequestPolicy : public QObject
{
    Q_OBJECT
private slots:
    // What Korvane's own command issuer sends must pass on every path it tries, or the helper
    // would silently read no SMART data at all.
    void theIssuersCommandsPass()
    {
        using namespace AtaCommandIssuer;
        // The monitor's SMART reads (SMART_thread) leave the sector count at 0.
        AtaRegisters monitorRead = smartReadData();
        monitorRead.sectorCount = 0;
        for (const AtaRegisters &r : {identifyDevice(), identifyPacketDevice(), smartReadData(), smartReadThresholds(),
                                      smartReturnStatus(), monitorRead}) {
            for (const std::uint8_t device : {0x00, 0xA0, 0xB0}) {
                for (const int path : {0, 1, 2}) {
                    AtaRegisters sent = r;
                    sent.driveHead = device;
                    std::string refusal;
                    const auto exchange = HelperRequestPolicy::commandExchange(path, sent, refusal);
                    QVERIFY2(exchange, refusal.c_str());
                    QCOMPARE(exchange->registers.command, r.command);
                    QCOMPARE(exchange->registers.driveHead, device);
                    QCOMPARE(exchange->dataIn, r.features != AtaCommands::kSmartReturnStatus);
                }
            }
        }
    }

    // Every other command byte, and every other SMART sub-command, is refused.
    void nothingElsePasses()
    {
        int passed = 0;
        for (int command = 0; command < 256; ++command) {
            for (int features = 0; features < 256; ++features) {
                const AtaRegisters r{std::uint8_t(features), 1, 1, 0x4F, 0xC2, 0, std::uint8_t(command), 0};
                std::string refusal;
                if (HelperRequestPolicy::commandExchange(0, r, refusal))
                    ++passed;
                else
                    QVERIFY(!refusal.empty());
            }
        }
        QCOMPARE(passed, 3); // SMART READ DATA, READ THRESHOLDS and RETURN STATUS with the SMART key
    }

    void readRanges_data()
    {
        QTest::addColumn<quint64>("offset");
        QTest::addColumn<uint>("length");
        QTest::addColumn<bool>("allowed");
        const quint64 disk = 1 << 20;
        QTest::newRow("first sector") << 0ull << 512u << true;
        QTest::newRow("last sector") << disk - 512 << 512u << true;
        QTest::newRow("whole disk") << 0ull << uint(disk) << true;
        QTest::newRow("one past the end") << disk << 512u << false;
        QTest::newRow("across the end") << disk - 512 << 1024u << false;
        QTest::newRow("wrapping offset") << ~0ull - 511 << 1024u << false;
        QTest::newRow("odd length") << 0ull << 513u << false;
    }

    void readRanges()
    {
        QFETCH(quint64, offset);
        QFETCH(uint, length);
        QFETCH(bool, allowed);
        std::string refusal;
        QCOMPARE(HelperRequestPolicy::readAllowed(offset, length, 1 << 20, refusal), allowed);
        QCOMPARE(refusal.empty(), allowed);
    }
};

QTEST_GUILESS_MAIN(TestHelperRequestPolicy)
#include "tst_helperrequestpolicy.moc"
