#include "device/DiskRecord.h"
#include "health/HealthEvaluator.h"
#include "health/MailNotifier.h"
#include "settings/AppSettings.h"
#include "settings/LanguageTable.h"

#include <QTest>

namespace {

QString paragraph(const QString &background, const QString &text)
{
    return QStringLiteral("<p style=\" margin-top:0px; margin-bottom:0px; margin-left:0px; margin-right:0px;"
                          "font-size:8pt;font-size:8pt; font-weight:400; font-style:normal; "
                          "text-decoration:none;color:#000000; background:#")
        + background + QStringLiteral("\">") + text + QStringLiteral("</p>");
}

QString alertParagraph(int level, const QString &text)
{
    return level == 3 ? paragraph(QStringLiteral("FD7471"),
                                  QStringLiteral("<img src=\":/new/prefix1/images/secure_red.png\" width=\"16\" height=\"16\">") + text)
                      : paragraph(QStringLiteral("F1F3A7"),
                                  QStringLiteral("<img src=\":/new/prefix1/images/secure_at.png\" width=\"16\" height=\"16\">") + text);
}

QString levelName(int level)
{
    return level == 3 ? QStringLiteral("ALARM") : QStringLiteral("WARNING");
}

SmartAttribute attr(quint32 id, quint32 current, quint32 threshold, qint64 raw = 0, bool performance = false)
{
    SmartAttribute a;
    a.id = id;
    a.name = id == 194 ? QStringLiteral("Temperature") : QStringLiteral("Attr%1").arg(id);
    a.current = current;
    a.threshold = threshold;
    a.raw = raw;
    a.performance = performance ? 1 : 0;
    return a;
}

SmartAttribute temperature(qint64 raw)
{
    return attr(194, 100, 0, raw);
}

DiskRecord disk(const QList<SmartAttribute> &attributes, const QString &model = QStringLiteral("WDC WD10"),
                const QString &serial = QStringLiteral("SER1"))
{
    DiskRecord d;
    d.model = model;
    d.serial = serial;
    d.smartState = 1;
    d.attributes = attributes;
    return d;
}

QStringList testLanguageTable()
{
    QStringList t;
    for (int i = 0; i < Lang::EntryCount; ++i)
        t.append(QStringLiteral("entry%1").arg(i));
    t[Lang::UnitCelsius] = QStringLiteral("°C");
    t[Lang::UnitFahrenheit] = QStringLiteral("°F");
    t[Lang::Title] = QStringLiteral("Korvane");
    return t;
}

AppSettings celsiusSettings()
{
    AppSettings s;
    s.temp_celsius = 0;
    s.extWarnTask = QStringLiteral("warn.sh");
    s.extCritTask = QStringLiteral("crit.sh");
    return s;
}

// E-mail switched on and the server fully set.
AppSettings mailSettings()
{
    AppSettings s = celsiusSettings();
    s.eml_notif_enable = true;
    s.SMTP_from = QStringLiteral("a@x");
    s.SMTP_to = QStringLiteral("b@x");
    s.SMTP_server = QStringLiteral("smtp.x");
    return s;
}

const QString kAllOk = QStringLiteral("All is OK.\nAll params of your disk(s) are in Normal condition.");

class FakeMail : public MailNotifier
{
public:
    bool sending = false;
    bool isSending() const override { return sending; }
    void sendNotification(int, const QString &) override {}
};

} // namespace

class TestHealthEvaluation : public QObject
{
    Q_OBJECT

private:
    QStringList m_lang = testLanguageTable();

    HealthEvaluation evaluateOnce(QList<DiskRecord> &disks, const AppSettings &s = celsiusSettings())
    {
        HealthEvaluator evaluator;
        return evaluator.checkHealthStatus(disks, s, m_lang);
    }

private slots:
    void attributeLevel_data()
    {
        QTest::addColumn<SmartAttribute>("attribute");
        QTest::addColumn<int>("level");
        QTest::addColumn<int>("lineKind"); // 0: no Events Log line

        QTest::newRow("floor 5 with threshold 0 is alarm") << attr(5, 5, 0) << 3 << 3;
        QTest::newRow("0 with threshold 0 is alarm") << attr(5, 0, 0) << 3 << 3;
        QTest::newRow("below threshold and floor: alarm only") << attr(5, 4, 50) << 3 << 3;
        QTest::newRow("6 above threshold 0 warns silently") << attr(5, 6, 0) << 2 << 0;
        QTest::newRow("8 above threshold 3 warns silently") << attr(5, 8, 3) << 2 << 0;
        QTest::newRow("10 above threshold 3 warns silently") << attr(5, 10, 3) << 2 << 0;
        QTest::newRow("11 above threshold 3 is fine") << attr(5, 11, 3) << 1 << 0;
        QTest::newRow("at threshold 30 warns") << attr(5, 30, 30) << 2 << 2;
        QTest::newRow("31 above threshold 30 is fine") << attr(5, 31, 30) << 1 << 0;
        QTest::newRow("performance attribute is ignored") << attr(5, 1, 50, 0, true) << 1 << 0;
    }

    void attributeLevel()
    {
        QFETCH(SmartAttribute, attribute);
        QFETCH(int, level);
        QFETCH(int, lineKind);

        QList<DiskRecord> disks{disk({attribute})};
        const HealthEvaluation r = evaluateOnce(disks);
        QCOMPARE(disks[0].healthState, level);
        QCOMPARE(int(r.overallLevel), level);
        if (level == 1)
            QCOMPARE(disks[0].note, paragraph(QStringLiteral("9AFE8B"),
                                              QStringLiteral("<img src=\":/new/prefix1/images/secure_apply.png\" "
                                                             "width=\"16\" height=\"16\">Everything is OK")));
        if (lineKind == 0) {
            QVERIFY(r.eventLines.isEmpty());
            return;
        }
        const QString name = levelName(lineKind);
        QCOMPARE(r.eventLines, (QList<EventLine>{{EventLineKind(lineKind),
                                                  QStringLiteral("Disk: WDC WD10  Serial: SER1 Param(Attr5) has reached %1 level").arg(name)}}));
        QCOMPARE(disks[0].note, alertParagraph(lineKind, QStringLiteral("Attribute 5 is ") + name));
        QCOMPARE(r.eventText, QStringLiteral("HD0(WDC WD10) Health(%1%)\n  Param(Attr5) has reached %2 level")
                                  .arg(disks[0].healthValue).arg(name));
    }

    void percentage_data()
    {
        QTest::addColumn<QList<quint32>>("currents");
        QTest::addColumn<int>("percent");
        QTest::newRow("255") << QList<quint32>{255} << 100;
        QTest::newRow("253") << QList<quint32>{253} << 100;
        QTest::newRow("201") << QList<quint32>{201} << 79;
        QTest::newRow("200") << QList<quint32>{200} << 100;
        QTest::newRow("150") << QList<quint32>{150} << 75;
        QTest::newRow("101") << QList<quint32>{101} << 50;
        QTest::newRow("100") << QList<quint32>{100} << 100;
        QTest::newRow("99") << QList<quint32>{99} << 99;
        QTest::newRow("lowest attribute wins") << QList<quint32>{200, 150, 253, 99} << 75;
    }

    void percentage()
    {
        QFETCH(QList<quint32>, currents);
        QFETCH(int, percent);
        DiskRecord d = disk({});
        for (quint32 c : currents)
            d.attributes.append(attr(1, c, 0));
        QList<DiskRecord> disks{d};
        const HealthEvaluation r = evaluateOnce(disks);
        QCOMPARE(disks[0].healthValue, percent);
        QCOMPARE(r.traySummary, QStringLiteral("KorvaneHD0 %1% OK").arg(percent));
    }

    void temperatureLevel_data()
    {
        QTest::addColumn<int>("celsius");
        QTest::addColumn<int>("warn");
        QTest::addColumn<int>("crit");
        QTest::addColumn<int>("level");
        QTest::newRow("below warning") << 54 << 55 << 70 << 1;
        QTest::newRow("at warning") << 55 << 55 << 70 << 2;
        QTest::newRow("below critical") << 69 << 55 << 70 << 2;
        QTest::newRow("at critical") << 70 << 55 << 70 << 3;
        QTest::newRow("own thresholds") << 44 << 40 << 45 << 2;
    }

    void temperatureLevel()
    {
        QFETCH(int, celsius);
        QFETCH(int, warn);
        QFETCH(int, crit);
        QFETCH(int, level);
        AppSettings s = celsiusSettings();
        s.warn_temp = warn;
        s.crit_temp = crit;
        QList<DiskRecord> disks{disk({temperature(celsius)})};
        const HealthEvaluation r = evaluateOnce(disks, s);
        QCOMPARE(disks[0].healthState, level);
        if (level == 1) {
            QVERIFY(r.eventLines.isEmpty());
            return;
        }
        QCOMPARE(r.eventLines, (QList<EventLine>{{EventLineKind(level),
                                                  QStringLiteral("Disk: WDC WD10  Serial: SER1  Temperature is %1°C").arg(celsius)}}));
        QCOMPARE(r.eventText, QStringLiteral("HD0(WDC WD10) Health(100%)\n  Temperature has reached %1 level (%2°C)")
                                  .arg(levelName(level)).arg(celsius));
        QCOMPARE(disks[0].note, alertParagraph(level, QStringLiteral("Temperature is ") + levelName(level)));
    }

    // The summary prints the temperature held before this poll; alerts use the new one.
    void summaryLagsOneEvaluationBehind()
    {
        HealthEvaluator evaluator;
        // Drives put extremes in the upper raw bytes: only the low 32 bits are the temperature.
        QList<DiskRecord> disks{disk({temperature(0x0014003200000028LL), attr(9, 100, 0, 0x100000005LL)})};
        HealthEvaluation r = evaluator.checkHealthStatus(disks, celsiusSettings(), m_lang);
        QCOMPARE(r.traySummary, QStringLiteral("KorvaneHD0 0°C 100% OK"));
        QCOMPARE(disks[0].temperature, 40);
        QCOMPARE(disks[0].powerOnRaw, quint64(0x100000005ULL));

        disks[0].attributes[0].raw = 61;
        AppSettings fahrenheit = celsiusSettings();
        fahrenheit.temp_celsius = 1;
        r = evaluator.checkHealthStatus(disks, fahrenheit, m_lang);
        QCOMPARE(r.traySummary, QStringLiteral("KorvaneHD0 104°F 100% W"));
        QCOMPARE(disks[0].temperature, 61);
        QCOMPARE(r.eventLines.at(0).text, QStringLiteral("Disk: WDC WD10  Serial: SER1  Temperature is 141°F"));
        QVERIFY(r.eventText.endsWith(QStringLiteral("(141°F)")));
    }

    // The temperature step looks at the disk level, not the temperature: an earlier failing
    // attribute is reported as a temperature warning too, and its paragraph goes in front.
    void earlierAttributeMakesTemperatureAlert()
    {
        QList<DiskRecord> disks{disk({attr(5, 30, 30), temperature(30), attr(10, 3, 0)})};
        const HealthEvaluation r = evaluateOnce(disks);
        QCOMPARE(disks[0].healthState, 3);
        QCOMPARE(disks[0].healthValue, 3);
        QCOMPARE(disks[0].note, alertParagraph(2, QStringLiteral("Temperature is WARNING"))
                                    + alertParagraph(2, QStringLiteral("Attribute 5 is WARNING"))
                                    + alertParagraph(3, QStringLiteral("Attribute 10 is ALARM")));
        const QList<EventLine> expected{
            {EventLineKind::Warning, QStringLiteral("Disk: WDC WD10  Serial: SER1 Param(Attr5) has reached WARNING level")},
            {EventLineKind::Warning, QStringLiteral("Disk: WDC WD10  Serial: SER1  Temperature is 30°C")},
            {EventLineKind::Alarm, QStringLiteral("Disk: WDC WD10  Serial: SER1 Param(Attr10) has reached ALARM level")},
        };
        QCOMPARE(r.eventLines, expected);
        QCOMPARE(r.eventText, QStringLiteral("HD0(WDC WD10) Health(3%)\n"
                                             "  Param(Attr5) has reached WARNING level\n"
                                             "  Temperature has reached WARNING level (30°C)\n"
                                             "  Param(Attr10) has reached ALARM level"));
    }

    void disksWithoutEvaluationKeepTheirLevel()
    {
        DiskRecord off = disk({attr(5, 1, 10)});
        off.monitored = false;
        off.healthState = 2;
        off.healthValue = 42;
        DiskRecord noSmart = disk({attr(5, 1, 10)});
        noSmart.smartState = 0;
        QList<DiskRecord> disks{off, noSmart};

        HealthEvaluator evaluator;
        const HealthEvaluation r = evaluator.checkHealthStatus(disks, mailSettings(), m_lang);
        QCOMPARE(disks[0].healthState, 2);
        QCOMPARE(disks[0].healthValue, 42);
        QCOMPARE(disks[1].healthState, 0);
        QCOMPARE(disks[0].note, paragraph(QStringLiteral("e8fffc"),
                                          QStringLiteral("<img src=\":/new/prefix1/images/harddisk_Stop.png\" "
                                                         "width=\"38\" height=\"16\">Not monitoring")));
        QCOMPARE(disks[1].note, paragraph(QStringLiteral("e8fffc"),
                                          QStringLiteral("<img src=\":/new/prefix1/images/harddisk_NoSMART.png\" "
                                                         "width=\"38\" height=\"16\">SMART not supported")));
        QCOMPARE(r.treeIcons, (QList<QString>{QString(), QString()}));
        QCOMPARE(int(r.overallLevel), 1);
        QCOMPARE(r.traySummary, QStringLiteral("Korvane"));
        QVERIFY(r.eventLines.isEmpty());
        QVERIFY(r.eventText.isEmpty());
        // The first evaluation is a change even with nothing to watch.
        QVERIFY(r.mail.has_value());
        QCOMPARE(r.mail->text, kAllOk);
    }

    void twoDisksGiveOneAlarmPopUpWithBothBlocks()
    {
        QList<DiskRecord> disks{
            disk({temperature(56), attr(5, 90, 10)}, QStringLiteral("Disk A"), QStringLiteral("A1")),
            disk({attr(5, 4, 10), temperature(30)}, QStringLiteral("Disk B"), QStringLiteral("B2")),
            disk({attr(5, 100, 10)}, QStringLiteral("Disk C"), QStringLiteral("C3")),
        };
        const HealthEvaluation r = evaluateOnce(disks);

        QCOMPARE(int(r.overallLevel), 3);
        QCOMPARE(r.treeIcons, (QList<QString>{QStringLiteral(":/new/prefix1/images/harddisk_Wrg.png"),
                                              QStringLiteral(":/new/prefix1/images/harddisk_Alr.png"),
                                              QStringLiteral(":/new/prefix1/images/harddisk_Ok.png")}));
        QCOMPARE(r.traySummary, QStringLiteral("KorvaneHD0 0°C 90% W\nHD1 0°C 4% A\nHD2 100% OK"));
        const QString events = QStringLiteral("HD0(Disk A) Health(90%)\n"
                                              "  Temperature has reached WARNING level (56°C)\n"
                                              "HD1(Disk B) Health(4%)\n"
                                              "  Param(Attr5) has reached ALARM level\n"
                                              "  Temperature has reached ALARM level (30°C)");
        QCOMPARE(r.eventText, events);
        QVERIFY(r.popUp.has_value());
        QCOMPARE(r.popUp->title, QStringLiteral("Alarm"));
        QCOMPARE(int(r.popUp->level), 3);
        QCOMPARE(r.popUp->text, events);
        QCOMPARE(r.externalTask, QStringLiteral("crit.sh"));
    }

    void popUpAndTaskRepeatWhileLevelLasts()
    {
        AppSettings s = celsiusSettings();
        HealthEvaluator evaluator;
        QList<DiskRecord> disks{disk({attr(5, 20, 20)})};
        for (int poll = 0; poll < 3; ++poll) {
            const HealthEvaluation r = evaluator.checkHealthStatus(disks, s, m_lang);
            QVERIFY(r.popUp.has_value());
            QCOMPARE(r.popUp->title, QStringLiteral("Warning"));
            QCOMPARE(int(r.popUp->level), 2);
            QCOMPARE(r.externalTask, QStringLiteral("warn.sh"));
        }

        s.pop_notif_enable = false;
        HealthEvaluation r = evaluator.checkHealthStatus(disks, s, m_lang);
        QVERIFY(!r.popUp.has_value());
        QCOMPARE(r.externalTask, QStringLiteral("warn.sh"));

        s.pop_notif_enable = true;
        disks[0].attributes[0].current = 100;
        r = evaluator.checkHealthStatus(disks, s, m_lang);
        QVERIFY(!r.popUp.has_value());
        QVERIFY(r.externalTask.isEmpty());
    }

    void mailGoesOutOnlyOnALevelChange()
    {
        HealthEvaluator evaluator;
        FakeMail mailer;
        QList<DiskRecord> disks{disk({attr(5, 100, 10)})};
        auto poll = [&](quint32 current) {
            disks[0].attributes[0].current = current;
            return evaluator.checkHealthStatus(disks, mailSettings(), m_lang, &mailer);
        };

        HealthEvaluation r = poll(100);
        QVERIFY(r.levelChanged);
        QCOMPARE(int(r.mail.value().level), 1);
        QCOMPARE(r.mail->text, kAllOk);
        QVERIFY(!poll(100).mail.has_value());

        r = poll(10);
        QCOMPARE(int(r.mail.value().level), 2);
        QCOMPARE(r.mail->text, r.eventText);
        QVERIFY(!poll(9).mail.has_value());
        QCOMPARE(int(poll(3).mail.value().level), 3);

        r = poll(100);
        QCOMPARE(int(r.mail.value().level), 1);
        QCOMPARE(r.mail->text, kAllOk);
        QVERIFY(r.eventLines.isEmpty());
    }

    // A notification that cannot go out is reported once and dropped: the level counts as sent.
    void mailThatCannotGoOutIsNotRetried()
    {
        AppSettings s = mailSettings();
        s.SMTP_server.clear();
        HealthEvaluator evaluator;
        FakeMail mailer;
        QList<DiskRecord> disks{disk({attr(5, 100, 10)})};

        HealthEvaluation r = evaluator.checkHealthStatus(disks, s, m_lang, &mailer);
        QVERIFY(!r.mail.has_value());
        QCOMPARE(r.eventLines, (QList<EventLine>{{EventLineKind::MailError,
                                                  QStringLiteral("Sending of the message is impossible. Need to set SMTP params")}}));
        s = mailSettings();
        r = evaluator.checkHealthStatus(disks, s, m_lang, &mailer);
        QVERIFY(!r.mail.has_value());
        QVERIFY(r.eventLines.isEmpty());

        mailer.sending = true;
        disks[0].attributes[0].current = 10;
        r = evaluator.checkHealthStatus(disks, s, m_lang, &mailer);
        QVERIFY(!r.mail.has_value());
        QCOMPARE(r.eventLines.last(),
                 (EventLine{EventLineKind::MailError,
                            QStringLiteral("Sending of the message is impossible. Previous E-Mail notification in progress...")}));
        mailer.sending = false;
        QVERIFY(!evaluator.checkHealthStatus(disks, s, m_lang, &mailer).mail.has_value());

        // With e-mail off the level is still tracked, so switching it on later sends nothing.
        s.eml_notif_enable = false;
        disks[0].attributes[0].current = 3;
        r = evaluator.checkHealthStatus(disks, s, m_lang, &mailer);
        QVERIFY(r.levelChanged && !r.mail.has_value());
        s.eml_notif_enable = true;
        QVERIFY(!evaluator.checkHealthStatus(disks, s, m_lang, &mailer).mail.has_value());
    }
};

QTEST_GUILESS_MAIN(TestHealthEvaluation)
#include "tst_healthevaluation.moc"
