#include "device/DiskRecord.h"
#include "device/PowerOnTime.h"
#include "health/DiskPanelPlan.h"
#include "health/WindowTexts.h"
#include "settings/AppSettings.h"

#include <QTest>

namespace {

const QString images = QStringLiteral(":/new/prefix1/images/");

DiskRecord smartDisk(int level)
{
    DiskRecord d;
    d.smartState = 1;
    d.attributes = {SmartAttribute{}};
    d.hasTemperature = true;
    d.temperature = 40;
    d.healthState = level;
    d.healthValue = 87;
    d.powerOnUnit = 1;
    d.powerOnRaw = 9000;
    return d;
}

} // namespace

class TestDiskPanelPlan : public QObject
{
    Q_OBJECT
private slots:
    void eachStateHasItsIconsAndLabel_data()
    {
        QTest::addColumn<DiskRecord>("disk");
        QTest::addColumn<QString>("tree");
        QTest::addColumn<QString>("state");
        QTest::addColumn<QString>("label");
        QTest::addColumn<QString>("thermometer");

        QTest::newRow("ok") << smartDisk(1) << "harddisk_Ok.png" << "l_Drive_Ok.png" << "<B>Health Status: OK" << "";
        QTest::newRow("warning") << smartDisk(2) << "harddisk_Wrg.png" << "l_Drive_Wr.png"
                                 << "<B>Health Status: WARNING" << "";
        QTest::newRow("alarm") << smartDisk(3) << "harddisk_Alr.png" << "l_Drive_Al.png" << "<B>Health Status: ALARM"
                               << "";
        DiskRecord off = smartDisk(3);
        off.monitored = false;
        QTest::newRow("switched off wins over alarm") << off << "harddisk_Stop.png" << "l_Drive_St.png"
                                                      << "<B>Not Monitoring" << "term_not_mon.png";
        DiskRecord noSmart;
        noSmart.smartState = 0;
        QTest::newRow("no smart") << noSmart << "harddisk_NoSMART.png" << "l_Drive_Un.png" << "<B>SMART not supported"
                                  << "term_not_sup.png";
        DiskRecord cold = smartDisk(1);
        cold.hasTemperature = false;
        QTest::newRow("no temperature sensor") << cold << "harddisk_Ok.png" << "l_Drive_Ok.png"
                                               << "<B>Health Status: OK" << "term_not_sup.png";
    }
    void eachStateHasItsIconsAndLabel()
    {
        QFETCH(DiskRecord, disk);
        QFETCH(QString, tree);
        QFETCH(QString, state);
        QFETCH(QString, label);
        QFETCH(QString, thermometer);
        const DiskPanelPlan plan = DiskPanelPlan::forDisk(disk, AppSettings());
        QCOMPARE(plan.treeIcon, images + tree);
        QCOMPARE(plan.stateIcon, images + state);
        QCOMPARE(plan.healthLabel, label);
        QCOMPARE(plan.gaugeShown, thermometer.isEmpty());
        QCOMPARE(plan.thermometerIcon, thermometer.isEmpty() ? QString() : images + thermometer);
        // Only a disk read with SMART has a work time, and only it fills the table.
        const bool smart = plan.kind == DiskPanelPlan::Kind::Smart;
        QCOMPARE(plan.workTimeLabel, smart ? PowerOnTime::workTimeLabel(disk) : QString());
    }

    void temperatureFollowsTheDisplayUnit()
    {
        AppSettings settings;
        settings.temp_celsius = 0;
        DiskPanelPlan plan = DiskPanelPlan::forDisk(smartDisk(1), settings);
        QCOMPARE(plan.temperatureText + ' ' + plan.gaugeLabel, QStringLiteral("40 40°C"));
        settings.temp_celsius = 2; // any non-zero value means Fahrenheit
        plan = DiskPanelPlan::forDisk(smartDisk(1), settings);
        QCOMPARE(plan.temperatureText + ' ' + plan.gaugeLabel, QStringLiteral("104 104°F"));
        // The gauge always turns by the Celsius value.
        QCOMPARE(plan.temperatureCelsius, 40);

        DiskRecord cold = smartDisk(1);
        cold.hasTemperature = false;
        QCOMPARE(DiskPanelPlan::forDisk(cold, settings).temperatureText, QStringLiteral("Not supported"));
        QCOMPARE(DiskPanelPlan::discoveryTemperatureText(cold, settings), QStringLiteral("Not supported"));
        // A disk without SMART has nothing to put in the column, and a switched-off one keeps what it showed.
        QCOMPARE(DiskPanelPlan::discoveryTemperatureText(DiskRecord(), settings), QString());
        DiskRecord off = smartDisk(1);
        off.monitored = false;
        QCOMPARE(DiskPanelPlan::forDisk(off, settings).temperatureText, QString());
    }

    void windowLinesCarryTheTimeInIsoForm()
    {
        const QDateTime when(QDate(2026, 3, 7), QTime(9, 5, 2));
        QCOMPARE(WindowTexts::diskStatusHeading(when), QStringLiteral("Disk Status [Last Checked: 2026-03-07 09:05:02]"));
        QCOMPARE(WindowTexts::volumesHeading(when), QStringLiteral("Volumes [Last Checked: 2026-03-07 09:05:02]"));
        QCOMPARE(WindowTexts::sessionStartedLine(when), QStringLiteral("2026-03-07 09:05:02 Session started"));
        QVERIFY(WindowTexts::attributeLegendHtml().contains(QStringLiteral("Health/Perfomance attribute.") + QString(6, QChar(0xA0))));
    }
};

QTEST_APPLESS_MAIN(TestDiskPanelPlan)
#include "tst_diskpanelplan.moc"
