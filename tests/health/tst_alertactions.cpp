#include "device/DiskRecord.h"
#include "health/ExternalTaskRunner.h"
#include "health/TemperatureDigits.h"
#include "health/TrayIconPlan.h"
#include "settings/AppSettings.h"

#include <QFile>
#include <QTemporaryDir>
#include <QTest>

namespace {

DiskRecord diskAt(int celsius, int level)
{
    DiskRecord d;
    d.smartState = 1;
    d.hasTemperature = true;
    d.temperature = celsius;
    d.healthState = level;
    return d;
}

struct StartCall
{
    QString program;
    QStringList arguments;
};

QString makeFile(const QTemporaryDir &dir, const QString &name, bool executable)
{
    const QString path = dir.filePath(name);
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly))
        qFatal("cannot create %s", qPrintable(path));
    file.write("#!/bin/sh\n");
    file.close();
    if (executable)
        file.setPermissions(file.permissions() | QFile::ExeOwner);
    return path;
}

} // namespace

class TestAlertActions : public QObject
{
    Q_OBJECT
private slots:
    void digitsSitInTheirCells()
    {
        // A single "1" sits in the middle: its two bars at x = 6 + 4.
        QCOMPARE(TemperatureDigits::strokes(QStringLiteral("1")),
                 (QList<QLine>{QLine(10, 0, 10, 4), QLine(10, 6, 10, 10)}));
        // Two characters: cells at 2 and 9. The minus takes the first and draws nothing.
        QCOMPARE(TemperatureDigits::strokes(QStringLiteral("-1")),
                 (QList<QLine>{QLine(13, 0, 13, 4), QLine(13, 6, 13, 10)}));
        // Three characters start at -1, so the first digit loses its left column.
        const QList<QLine> hot = TemperatureDigits::strokes(QStringLiteral("104"));
        QCOMPARE(hot.first(), QLine(3, 0, 3, 4));
        QCOMPARE(hot.at(2), QLine(5, 1, 5, 4));   // the 0 in the cell at 5
        QCOMPARE(hot.last(), QLine(12, 5, 14, 5)); // the bar of the 4 in the cell at 11
        // The irregular glyphs stay irregular: the top bar of 5 starts at 1, of 7 at 0.
        QVERIFY(TemperatureDigits::strokes(QStringLiteral("5")).contains(QLine(7, 0, 10, 0)));
        QVERIFY(TemperatureDigits::strokes(QStringLiteral("7")).contains(QLine(6, 0, 9, 0)));
        QCOMPARE(TemperatureDigits::strokes(QStringLiteral("8")).size(), 7);
        QVERIFY(TemperatureDigits::strokes(QString()).isEmpty());
    }

    void trayShowsTheChosenDiskInItsLevelColour()
    {
        AppSettings settings;
        settings.show_temp = true;
        settings.disk_temp_show = 1;
        settings.temp_celsius = 0;
        const QList<DiskRecord> disks{diskAt(30, HealthOk), diskAt(45, HealthWarning)};
        TrayIconPlan plan = TrayIconPlan::decide(disks, settings, HealthWarning, QStringLiteral("summary"));
        QVERIFY(!plan.empty && plan.temperatureMode);
        QCOMPARE(plan.digits, QStringLiteral("45"));
        QCOMPARE(plan.colour, Qt::yellow);
        QCOMPARE(plan.toolTip, QStringLiteral("summary"));

        settings.temp_celsius = 1;
        settings.color_W = 9;
        plan = TrayIconPlan::decide(disks, settings, HealthWarning, QString());
        QCOMPARE(plan.digits, QStringLiteral("113"));
        QCOMPARE(plan.colour, Qt::darkCyan);

        settings.disk_temp_show = 0;
        settings.color_N = 0;
        QCOMPARE(TrayIconPlan::decide(disks, settings, HealthOk, QString()).colour, Qt::white);
        const QList<DiskRecord> alarmed{diskAt(71, HealthAlarm)};
        QCOMPARE(TrayIconPlan::decide(alarmed, settings, HealthAlarm, QString()).colour, Qt::red);
        // The table ends at 15; settings past either end are light gray.
        QCOMPARE(QList({TrayIconPlan::colourOf(15), TrayIconPlan::colourOf(16), TrayIconPlan::colourOf(-1)}),
                 QList({Qt::darkGray, Qt::lightGray, Qt::lightGray}));
    }

    void trayFallsBackToTheStatusIcon_data()
    {
        QTest::addColumn<int>("change");
        QTest::addColumn<int>("overall");
        QTest::addColumn<QString>("icon");
        QTest::newRow("temperature off") << 0 << int(HealthOk) << "secure_apply.png";
        QTest::newRow("disk index past the list") << 1 << int(HealthWarning) << "secure_at.png";
        QTest::newRow("disk not monitored") << 2 << int(HealthAlarm) << "secure_red.png";
        QTest::newRow("no temperature attribute") << 3 << int(HealthOk) << "secure_apply.png";
        QTest::newRow("SMART not read") << 4 << int(HealthWarning) << "secure_at.png";
        QTest::newRow("before any evaluation") << 0 << int(HealthUnknown) << "";
    }

    void trayFallsBackToTheStatusIcon()
    {
        QFETCH(int, change);
        QFETCH(int, overall);
        QFETCH(QString, icon);
        AppSettings settings;
        settings.show_temp = change != 0;
        DiskRecord disk = diskAt(40, HealthOk);
        if (change == 1)
            settings.disk_temp_show = 1;
        disk.monitored = change != 2;
        disk.hasTemperature = change != 3;
        if (change == 4)
            disk.smartState = 0;
        const TrayIconPlan plan = TrayIconPlan::decide({disk}, settings, HealthState(overall), QStringLiteral("tip"));
        QVERIFY(!plan.empty);
        QVERIFY(!plan.temperatureMode);
        QCOMPARE(plan.statusIcon, icon.isEmpty() ? icon : QStringLiteral(":/new/prefix1/images/") + icon);
        QCOMPARE(plan.toolTip, QStringLiteral("tip"));
        // No disks: the tray is left as it is.
        QVERIFY(TrayIconPlan::decide({}, settings, HealthState(overall), QStringLiteral("tip")).empty);
    }

    void tasksStartTheFileTheSettingNames()
    {
        QTemporaryDir dir;
        QList<StartCall> calls;
        ExternalTaskRunner runner([&calls](const QString &program, const QStringList &arguments) {
            calls.append({program, arguments});
            return true;
        });
        QVERIFY(!runner.run(HealthWarning, QString()));
        QVERIFY(calls.isEmpty());

        // The whole setting is the file: a space is part of its name, not an argument.
        const QString script = makeFile(dir, QStringLiteral("on warning.sh"), true);
        QVERIFY(!runner.run(HealthWarning, script));
        QCOMPARE(calls.size(), 1);
        QCOMPARE(calls.at(0).program, script);
        QVERIFY(calls.at(0).arguments.isEmpty());

        const QString page = makeFile(dir, QStringLiteral("what to do.html"), false);
        QVERIFY(!runner.run(HealthAlarm, page));
        QCOMPARE(calls.at(1).program, QStringLiteral("xdg-open"));
        QCOMPARE(calls.at(1).arguments, QStringList{page});
    }

    void aFailingTaskIsReportedOnceUntilItStarts()
    {
        QTemporaryDir dir;
        bool starts = false;
        ExternalTaskRunner runner([&starts](const QString &, const QStringList &) { return starts; });
        const QString script = makeFile(dir, QStringLiteral("alarm.sh"), true);

        const auto first = runner.run(HealthAlarm, script);
        QVERIFY(first);
        QCOMPARE(first->kind, EventLineKind::MailError);
        QVERIFY2(first->text.contains(script) && first->text.contains(QStringLiteral("critical")),
                 qPrintable(first->text));
        QVERIFY(!runner.run(HealthAlarm, script)); // the next polls stay quiet

        const QString missing = dir.filePath(QStringLiteral("gone.sh"));
        const auto other = runner.run(HealthWarning, missing); // a new command is reported
        QVERIFY(other);
        QVERIFY2(other->text.contains(QStringLiteral("no such file")), qPrintable(other->text));

        starts = true;
        QVERIFY(!runner.run(HealthAlarm, script));
        starts = false;
        QVERIFY(runner.run(HealthAlarm, script)); // failing again after a start is news again
    }

    void overlongTasksAreRefused()
    {
        QTemporaryDir dir;
        int started = 0;
        ExternalTaskRunner runner([&started](const QString &, const QStringList &) { return ++started > 0; });
        const QString base = dir.path() + QLatin1Char('/');
        const QString longest = makeFile(dir, QString(127 - base.size(), QLatin1Char('a')), true);
        QCOMPARE(longest.size(), 127);
        QVERIFY(!runner.run(HealthWarning, longest));
        QCOMPARE(started, 1);

        const QString tooLong = makeFile(dir, QString(128 - base.size(), QLatin1Char('b')), true);
        const auto refused = runner.run(HealthWarning, tooLong);
        QVERIFY(refused);
        QVERIFY2(refused->text.contains(QStringLiteral("127")), qPrintable(refused->text));
        QCOMPARE(started, 1);
    }
};

QTEST_GUILESS_MAIN(TestAlertActions)
#include "tst_alertactions.moc"
