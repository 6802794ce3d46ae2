#include "device/DiskRecord.h"
#include "device/PowerOnTime.h"

#include <QTest>

class TestPowerOnTime : public QObject
{
    Q_OBJECT

private slots:
    void durationText_data()
    {
        QTest::addColumn<quint64>("value");
        QTest::addColumn<int>("unit");
        QTest::addColumn<quint64>("hours");
        QTest::addColumn<QString>("text");

        QTest::newRow("59 minutes") << quint64(59) << 2 << quint64(0) << "0 hours. (0 hours)";
        QTest::newRow("8760 hours") << quint64(8760) << 1 << quint64(8760) << "1 year 0 hours. (8760 hours)";
        QTest::newRow("9000 hours") << quint64(9000) << 1 << quint64(9000) << "1 year 10 days 0 hours. (9000 hours)";
        QTest::newRow("one of each") << quint64(8760 + 720 + 24 + 1) << 1 << quint64(9505)
                                     << "1 year 1 month 1 day 1 hour. (9505 hours)";
        QTest::newRow("two of each") << quint64(2 * (8760 + 720 + 24)) + 2 << 1 << quint64(19010)
                                     << "2 years 2 months 2 days 2 hours. (19010 hours)";
        QTest::newRow("119 minutes") << quint64(119) << 2 << quint64(1) << "1 hour. (1 hours)";
        QTest::newRow("48 hours of half-minutes") << quint64(48 * 120 + 119) << 3 << quint64(48)
                                                  << "2 days 0 hours. (48 hours)";
        QTest::newRow("25 hours of seconds") << quint64(25 * 3600 + 3599) << 4 << quint64(25)
                                             << "1 day 1 hour. (25 hours)";
        QTest::newRow("beyond 32 bits") << quint64(1099511627781ULL) << 1 << quint64(1099511627781ULL)
                                        << "125515026 years 21 hours. (1099511627781 hours)";
        QTest::newRow("unit 0") << quint64(9000) << 0 << quint64(0) << "Unknown";
        QTest::newRow("unit 5") << quint64(9000) << 5 << quint64(0) << "Unknown";
        QTest::newRow("unit -1") << quint64(9000) << -1 << quint64(0) << "Unknown";
    }

    void durationText()
    {
        QFETCH(quint64, value);
        QFETCH(int, unit);
        QTEST(PowerOnTime::toHours(value, unit), "hours");
        QTEST(PowerOnTime::durationText(value, unit), "text");
    }

    void workTimeLabel_data()
    {
        QTest::addColumn<int>("unit");
        QTest::addColumn<bool>("fixed");
        QTest::addColumn<QString>("label");

        QTest::newRow("confirmed hours") << 1 << true << "<B>Work Time:</B> 1 year 10 days 0 hours. (9000 hours)";
        QTest::newRow("guessed hours")
            << 1 << false << "<B>Work Time:</B> 1 year 10 days 0 hours. (9000 hours) <B>Verifying numbers...";
        QTest::newRow("confirmed minutes") << 2 << true << "<B>Work Time:</B> 6 days 6 hours. (150 hours)";
        QTest::newRow("no unit") << 0 << false << "<B>Work Time:</B> Not supported";
    }

    void workTimeLabel()
    {
        QFETCH(int, unit);
        QFETCH(bool, fixed);
        DiskRecord disk;
        disk.powerOnRaw = 9000;
        disk.powerOnRawAtStart = 1; // the label shows the latest count, not the first
        disk.powerOnUnit = unit;
        disk.powerOnUnitFixed = fixed;
        QTEST(PowerOnTime::workTimeLabel(disk), "label");
    }

    // Over the 125 s of the check a counter grows by about 0 hours, 2 minutes, 4 half-minutes or
    // 125 seconds.
    void unitFromGrowth_data()
    {
        QTest::addColumn<quint64>("growth");
        QTest::addColumn<int>("unit");

        QTest::newRow("0") << quint64(0) << 1;
        QTest::newRow("1") << quint64(1) << 1;
        QTest::newRow("2") << quint64(2) << 2;
        QTest::newRow("3") << quint64(3) << 2;
        QTest::newRow("4") << quint64(4) << 3;
        QTest::newRow("10") << quint64(10) << 3;
        QTest::newRow("11") << quint64(11) << 4;
        QTest::newRow("125") << quint64(125) << 4;
        QTest::newRow("beyond 32 bits") << (quint64(1) << 32) << 4;
    }

    void unitFromGrowth()
    {
        QFETCH(quint64, growth);
        QTEST(PowerOnTime::unitFromGrowth(growth), "unit");
    }
};

QTEST_GUILESS_MAIN(TestPowerOnTime)
#include "tst_powerontime.moc"
