#include "device/DiskRecord.h"
#include "device/PowerOnTime.h"
#include "health/HealthRules.h"
#include "settings/AppSettings.h"

#include <QTest>

class TestHealthRules : public QObject
{
    Q_OBJECT

private slots:
    void attributePercentage_data();
    void attributePercentage();
    void attributeLevelAndAlert_data();
    void attributeLevelAndAlert();
    void temperatureLevel_data();
    void temperatureLevel();
    void trayColourIndex();
    void durationText_data();
    void durationText();
    void workTimeLabel_data();
    void workTimeLabel();
    void unitFromGrowth_data();
    void unitFromGrowth();
};

// Vendors scale to 253, 200 or 100; the edges of each scale are where a sign slips.
void TestHealthRules::attributePercentage_data()
{
    QTest::addColumn<quint32>("current");
    QTest::addColumn<int>("percent");

    QTest::newRow("253") << 253u << 100;
    QTest::newRow("255 above the scale") << 255u << 100;
    QTest::newRow("201 first on the 253 scale") << 201u << 79;
    QTest::newRow("200 last on the 200 scale") << 200u << 100;
    QTest::newRow("150") << 150u << 75;
    QTest::newRow("101 first on the 200 scale") << 101u << 50;
    QTest::newRow("100") << 100u << 100;
    QTest::newRow("99") << 99u << 99;
    QTest::newRow("0") << 0u << 0;
}

void TestHealthRules::attributePercentage()
{
    QFETCH(quint32, current);
    QTEST(HealthRules::attributePercentage(current), "percent");
}

void TestHealthRules::attributeLevelAndAlert_data()
{
    QTest::addColumn<quint32>("current");
    QTest::addColumn<quint32>("threshold");
    QTest::addColumn<int>("level");
    QTest::addColumn<int>("alert"); // 1: none

    QTest::newRow("5 with threshold 0: alarm") << 5u << 0u << 3 << 3;
    QTest::newRow("under threshold and floor: alarm") << 4u << 50u << 3 << 3;
    QTest::newRow("6 above threshold: silent warning") << 6u << 0u << 2 << 1;
    QTest::newRow("8 above threshold 3: silent warning") << 8u << 3u << 2 << 1;
    QTest::newRow("10 above threshold 3: silent warning") << 10u << 3u << 2 << 1;
    QTest::newRow("11 above threshold 3: fine") << 11u << 3u << 1 << 1;
    QTest::newRow("6 at threshold 6: warning") << 6u << 6u << 2 << 2;
    QTest::newRow("30 at threshold 30: warning") << 30u << 30u << 2 << 2;
    QTest::newRow("29 under threshold 30: warning") << 29u << 30u << 2 << 2;
    QTest::newRow("31 above threshold 30: fine") << 31u << 30u << 1 << 1;
}

void TestHealthRules::attributeLevelAndAlert()
{
    QFETCH(quint32, current);
    QFETCH(quint32, threshold);
    SmartAttribute a;
    a.current = current;
    a.threshold = threshold;
    QTEST(int(HealthRules::attributeLevel(a)), "level");
    QTEST(int(HealthRules::attributeAlert(a)), "alert");
    // The rules judge the values alone; leaving performance rows out is the caller's choice.
    a.performance = 1;
    QTEST(int(HealthRules::attributeLevel(a)), "level");
}

void TestHealthRules::temperatureLevel_data()
{
    QTest::addColumn<int>("warn");
    QTest::addColumn<int>("crit");
    QTest::addColumn<int>("celsius");
    QTest::addColumn<int>("level");

    QTest::newRow("below warning") << 40 << 45 << 39 << 1;
    QTest::newRow("at warning") << 40 << 45 << 40 << 2;
    QTest::newRow("below critical") << 40 << 45 << 44 << 2;
    QTest::newRow("at critical") << 40 << 45 << 45 << 3;
    QTest::newRow("below zero") << 40 << 45 << -5 << 1;
    QTest::newRow("critical set below warning") << 50 << 45 << 46 << 3;
}

void TestHealthRules::temperatureLevel()
{
    QFETCH(int, warn);
    QFETCH(int, crit);
    QFETCH(int, celsius);
    AppSettings s;
    s.warn_temp = warn;
    s.crit_temp = crit;
    s.temp_celsius = 1; // limits and values stay Celsius whatever the display unit
    QTEST(int(HealthRules::temperatureLevel(celsius, s)), "level");
}

void TestHealthRules::trayColourIndex()
{
    AppSettings s;
    s.color_N = 7;
    s.color_W = 9;
    s.color_C = 11;
    const QList<int> byLevel{7, 7, 9, 11};
    for (int level = 0; level < byLevel.size(); ++level)
        QCOMPARE(HealthRules::trayColourIndex(level, s), byLevel.at(level));
}

void TestHealthRules::durationText_data()
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

void TestHealthRules::durationText()
{
    QFETCH(quint64, value);
    QFETCH(int, unit);
    QTEST(PowerOnTime::toHours(value, unit), "hours");
    QTEST(PowerOnTime::durationText(value, unit), "text");
}

void TestHealthRules::workTimeLabel_data()
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

void TestHealthRules::workTimeLabel()
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
void TestHealthRules::unitFromGrowth_data()
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

void TestHealthRules::unitFromGrowth()
{
    QFETCH(quint64, growth);
    QTEST(PowerOnTime::unitFromGrowth(growth), "unit");
}

QTEST_GUILESS_MAIN(TestHealthRules)
#include "tst_healthrules.moc"
