#include "device/DiskRecord.h"
#include "health/HealthEvaluator.h"
#include "health/MailNotifier.h"
#include "settings/AppSettings.h"
#include "settings/LanguageTable.h"

#include <QTest>

namespace {

QString paragraph(const QString &background, const QString &image, const QString &text)
{
    return QStringLiteral("<p style=\" margin-top:0px; margin-bottom:0px; margin-left:0px; margin-right:0px;"
                          "font-size:8pt;font-size:8pt; font-weight:400; font-style:normal; "
                          "text-decoration:none;color:#000000; background:#%1\"><img src=\":/new/prefix1/images/%2\" ")
               .arg(background, image)
        + text + QStringLiteral("</p>");
}

QString levelName(int level)
{
    return level == 3 ? QStringLiteral("ALARM") : QStringLiteral("WARNING");
}

QString alertParagraph(int level, const QString &text)
{
    return paragraph(level == 3 ? QStringLiteral("FD7471") : QStringLiteral("F1F3A7"),
                     level == 3 ? QStringLiteral("secure_red.png") : QStringLiteral("secure_at.png"),
                     QStringLiteral("width=\"16\" height=\"16\">") + text);
}

SmartAttribute attr(quint32 id, quint32 current, quint32 threshold, qint64 raw = 0, quint32 performance = 0)
{
    SmartAttribute a;
    a.id = id;
    a.name = id == 194 ? QStringLiteral("Temperature") : QStringLiteral("Attr%1").arg(id);
    a.current = current;
    a.threshold = threshold;
    a.raw = raw;
    a.performance = performance;
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

// Celsius, a task per level, and optionally e-mail with the server fully set.
AppSettings settings(bool mail = false)
{
    AppSettings s;
    s.temp_celsius = 0;
    s.extWarnTask = QStringLiteral("warn.sh");
    s.extCritTask = QStringLiteral("crit.sh");
    s.eml_notif_enable = mail;
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

    QStringList m_lang;
    HealthEvaluator m_evaluator;
    FakeMail m_mailer;

    HealthEvaluation evaluate(QList<DiskRecord> &disks, const AppSettings &s = settings())
    {
        return m_evaluator.checkHealthStatus(disks, s, m_lang, &m_mailer);
    }

private slots:
    void initTestCase()
    {
        QVERIFY(loadLanguage(LanguageTable::English));
        m_lang = languageTable();
    }
    void init()
    {
        m_evaluator = HealthEvaluator();
        m_mailer.sending = false;
    }

    // Temperature rows run against a warning of 40 and a critical of 45.
    void diskLevel_data()
    {
        QTest::addColumn<QList<SmartAttribute>>("attributes");
        QTest::addColumn<int>("level");
        QTest::addColumn<bool>("alert"); // an Events Log line, a status paragraph and an event block
        QTest::addColumn<int>("percent");

        QTest::newRow("floor 5 with threshold 0 is alarm") << QList{attr(5, 5, 0)} << 3 << true << 5;
        QTest::newRow("below threshold and floor: alarm only") << QList{attr(5, 4, 50)} << 3 << true << 4;
        QTest::newRow("8 above threshold 3 warns silently") << QList{attr(5, 8, 3)} << 2 << false << 8;
        QTest::newRow("10 above threshold 3 warns silently") << QList{attr(5, 10, 3)} << 2 << false << 10;
        QTest::newRow("11 above threshold 3 is fine") << QList{attr(5, 11, 3)} << 1 << false << 11;
        QTest::newRow("at threshold 30 warns") << QList{attr(5, 30, 30)} << 2 << true << 30;
        QTest::newRow("31 above threshold 30 is fine") << QList{attr(5, 31, 30)} << 1 << false << 31;
        QTest::newRow("performance attribute is ignored") << QList{attr(5, 1, 50, 0, 1)} << 1 << false << 100;
        QTest::newRow("below warning temperature") << QList{temperature(39)} << 1 << false << 100;
        QTest::newRow("at warning temperature") << QList{temperature(40)} << 2 << true << 100;
        QTest::newRow("at critical temperature") << QList{temperature(45)} << 3 << true << 100;
        // Vendors scale the normalised value to 100, 200 or 253.
        QTest::newRow("253 of 253") << QList{attr(1, 253, 0)} << 1 << false << 100;
        QTest::newRow("201 of 253") << QList{attr(1, 201, 0)} << 1 << false << 79;
        QTest::newRow("200 of 200") << QList{attr(1, 200, 0)} << 1 << false << 100;
        QTest::newRow("150 of 200") << QList{attr(1, 150, 0)} << 1 << false << 75;
        QTest::newRow("100 of 100") << QList{attr(1, 100, 0)} << 1 << false << 100;
        QTest::newRow("99 of 100") << QList{attr(1, 99, 0)} << 1 << false << 99;
        QTest::newRow("lowest attribute wins")
            << QList{attr(1, 200, 0), attr(2, 150, 0), attr(3, 253, 0), attr(4, 99, 0)} << 1 << false << 75;
    }
    void diskLevel()
    {
        QFETCH(QList<SmartAttribute>, attributes);
        QFETCH(int, level);
        QFETCH(bool, alert);
        QFETCH(int, percent);
        AppSettings s = settings();
        s.warn_temp = 40;
        s.crit_temp = 45;
        QList<DiskRecord> disks{disk(attributes)};
        const HealthEvaluation r = evaluate(disks, s);
        QCOMPARE(disks[0].healthState, level);
        QCOMPARE(disks[0].healthValue, percent);
        const bool hot = attributes[0].id == 194;
        QCOMPARE(r.traySummary, QStringLiteral("KorvaneHD0 %1%2% %3")
                                    .arg(hot ? QStringLiteral("0°C ") : QString())
                                    .arg(percent)
                                    .arg(QStringList{"OK", "W", "A"}.at(level - 1)));
        if (level == 1)
            QCOMPARE(disks[0].note, paragraph(QStringLiteral("9AFE8B"), QStringLiteral("secure_apply.png"),
                                              QStringLiteral("width=\"16\" height=\"16\">Everything is OK")));
        if (!alert) {
            QVERIFY(r.eventLines.isEmpty());
            return;
        }
        const QString name = levelName(level);
        const QString shown = QString::number(attributes[0].raw) + QStringLiteral("°C");
        const QString logLine = hot ? QStringLiteral("  Temperature is ") + shown
                                    : QStringLiteral(" Param(Attr5) has reached %1 level").arg(name);
        QCOMPARE(r.eventLines,
                 (QList<EventLine>{{EventLineKind(level), QStringLiteral("Disk: WDC WD10  Serial: SER1") + logLine}}));
        QCOMPARE(disks[0].note, alertParagraph(level, (hot ? QStringLiteral("Temperature is ")
                                                           : QStringLiteral("Attribute 5 is ")) + name));
        QCOMPARE(r.eventText, QStringLiteral("HD0(WDC WD10) Health(%1%)\n  ").arg(percent)
                                  + (hot ? QStringLiteral("Temperature has reached %1 level (%2)").arg(name, shown)
                                         : QStringLiteral("Param(Attr5) has reached %1 level").arg(name)));
    }

    // The summary prints the temperature held before this poll; alerts use the new one.
    void summaryLagsOneEvaluationBehind()
    {
        // Drives put extremes in the upper raw bytes: only the low 32 bits are the temperature.
        QList<DiskRecord> disks{disk({temperature(0x0014003200000028LL), attr(9, 100, 0, 0x100000005LL)})};
        HealthEvaluation r = evaluate(disks);
        QCOMPARE(r.traySummary, QStringLiteral("KorvaneHD0 0°C 100% OK"));
        QCOMPARE(disks[0].temperature, 40);
        QCOMPARE(disks[0].powerOnRaw, quint64(0x100000005ULL));

        disks[0].attributes[0].raw = 61;
        AppSettings fahrenheit = settings();
        fahrenheit.temp_celsius = 1;
        r = evaluate(disks, fahrenheit);
        QCOMPARE(r.traySummary, QStringLiteral("KorvaneHD0 104°F 100% W"));
        QCOMPARE(r.eventLines.at(0).text, QStringLiteral("Disk: WDC WD10  Serial: SER1  Temperature is 141°F"));
        QVERIFY(r.eventText.endsWith(QStringLiteral("(141°F)")));
    }

    // The temperature step looks at the disk level, not the temperature: an earlier failing
    // attribute is reported as a temperature warning too, and its paragraph goes in front.
    void earlierAttributeMakesTemperatureAlert()
    {
        QList<DiskRecord> disks{disk({attr(5, 30, 30), temperature(30), attr(10, 3, 0)})};
        const HealthEvaluation r = evaluate(disks);
        QCOMPARE(disks[0].healthState, 3);
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

    void severalDisksGiveOneAlarmPopUpWithBothBlocks()
    {
        QList<DiskRecord> disks{
            disk({temperature(56), attr(5, 90, 10)}, QStringLiteral("Disk A"), QStringLiteral("A1")),
            disk({attr(5, 4, 10), temperature(30)}, QStringLiteral("Disk B"), QStringLiteral("B2")),
            disk({attr(5, 100, 10)}, QStringLiteral("Disk C"), QStringLiteral("C3")),
            disk({attr(5, 1, 10)}), // not monitored: keeps its level
            disk({attr(5, 1, 10)}), // without SMART data
        };
        disks[3].monitored = false;
        disks[3].healthState = 2;
        disks[4].smartState = 0;
        const HealthEvaluation r = evaluate(disks);
        QCOMPARE(r.treeIcons, (QList<QString>{QStringLiteral(":/new/prefix1/images/harddisk_Wrg.png"),
                                              QStringLiteral(":/new/prefix1/images/harddisk_Alr.png"),
                                              QStringLiteral(":/new/prefix1/images/harddisk_Ok.png"), QString(),
                                              QString()}));
        QCOMPARE(r.traySummary, QStringLiteral("KorvaneHD0 0°C 90% W\nHD1 0°C 4% A\nHD2 100% OK"));
        const QString events = QStringLiteral("HD0(Disk A) Health(90%)\n"
                                              "  Temperature has reached WARNING level (56°C)\n"
                                              "HD1(Disk B) Health(4%)\n"
                                              "  Param(Attr5) has reached ALARM level\n"
                                              "  Temperature has reached ALARM level (30°C)");
        QCOMPARE(r.eventText, events);
        QCOMPARE(r.popUp.value().title, QStringLiteral("Alarm"));
        QCOMPARE(int(r.popUp->level), 3);
        QCOMPARE(r.popUp->text, events);
        QCOMPARE(r.externalTask, QStringLiteral("crit.sh"));

        QCOMPARE(disks[3].healthState, 2);
        QCOMPARE(disks[4].healthState, 0);
        QCOMPARE(disks[3].note, paragraph(QStringLiteral("e8fffc"), QStringLiteral("harddisk_Stop.png"),
                                          QStringLiteral("width=\"38\" height=\"16\">Not monitoring")));
        QCOMPARE(disks[4].note, paragraph(QStringLiteral("e8fffc"), QStringLiteral("harddisk_NoSMART.png"),
                                          QStringLiteral("width=\"38\" height=\"16\">SMART not supported")));
        QList<DiskRecord> none;
        QCOMPARE(evaluate(none).traySummary, QStringLiteral("Korvane"));
    }

    // One disk over a series of polls. Pop-up and task repeat on every evaluation while the level
    // lasts; e-mail goes out only on a change, and one that cannot go out is reported once and
    // dropped: the level counts as sent.
    void notificationsOverSeveralPolls()
    {
        enum Mail { Off, On, NoServer, Busy };
        const char *noServer = "Sending of the message is impossible. Need to set SMTP params";
        const char *busy = "Sending of the message is impossible. Previous E-Mail notification in progress...";
        struct Poll
        {
            quint32 current;
            Mail mail;
            int mailLevel; // of the e-mail handed out; 0 none
            const char *popUp;
            const char *task;
            const char *mailError;
        };
        const Poll polls[] = {
            {100, NoServer, 0, "", "", noServer}, {100, On, 0, "", "", ""},
            {10, Busy, 0, "Warning", "warn.sh", busy}, {10, On, 0, "Warning", "warn.sh", ""},
            {9, On, 0, "Warning", "warn.sh", ""}, {3, On, 3, "Alarm", "crit.sh", ""},
            {3, On, 0, "Alarm", "crit.sh", ""}, {100, On, 1, "", "", ""},
            {10, On, 2, "Warning", "warn.sh", ""},
            // The level is tracked with e-mail off, so switching it on later sends nothing.
            {3, Off, 0, "Alarm", "crit.sh", ""}, {3, On, 0, "Alarm", "crit.sh", ""},
        };
        QList<DiskRecord> disks{disk({attr(5, 100, 10)})};
        for (const Poll &poll : polls) {
            disks[0].attributes[0].current = poll.current;
            AppSettings s = settings(poll.mail != Off);
            if (poll.mail == NoServer)
                s.SMTP_server.clear();
            m_mailer.sending = poll.mail == Busy;
            const HealthEvaluation r = evaluate(disks, s);
            QCOMPARE(r.mail ? int(r.mail->level) : 0, poll.mailLevel);
            if (r.mail)
                QCOMPARE(r.mail->text, poll.mailLevel == 1 ? kAllOk : r.eventText);
            QCOMPARE(r.popUp ? r.popUp->title : QString(), QLatin1String(poll.popUp));
            QCOMPARE(r.externalTask, QLatin1String(poll.task));
            QStringList errors;
            for (const EventLine &line : r.eventLines)
                errors << (line.kind == EventLineKind::MailError ? line.text : QString());
            QCOMPARE(errors.join(QString()), QLatin1String(poll.mailError));
        }
        AppSettings quiet = settings();
        quiet.pop_notif_enable = false;
        const HealthEvaluation r = evaluate(disks, quiet);
        QVERIFY(!r.popUp.has_value());
        QCOMPARE(r.externalTask, QStringLiteral("crit.sh"));
    }

    // Model and serial come from the disk: a control character in them must not split or
    // forge an Events Log line.
    void eventLinesStayOnOneLine()
    {
        QList<DiskRecord> disks{disk({temperature(60), attr(5, 5, 0)}, QStringLiteral("WDC\rWD10"),
                                     QStringLiteral("A\n2099"))};
        const HealthEvaluation r = evaluate(disks);
        const QList<EventLine> expected{
            {EventLineKind::Warning, QStringLiteral("Disk: WDC WD10  Serial: A 2099  Temperature is 60°C")},
            {EventLineKind::Alarm,
             QStringLiteral("Disk: WDC WD10  Serial: A 2099 Param(Attr5) has reached ALARM level")},
        };
        QCOMPARE(r.eventLines, expected);
    }
};

QTEST_GUILESS_MAIN(TestHealthEvaluation)
#include "tst_healthevaluation.moc"
