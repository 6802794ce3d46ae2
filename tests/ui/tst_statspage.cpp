#include "ui/graph_widget.h"
#include "ui/smart_stat.h"

#include "KorvaneImages.h"
#include "LogRules.h"
#include "settings/AppSettings.h"
#include "settings/LanguageTable.h"
#include "settings/SettingsStore.h"
#include "stats/EventsTableModel.h"
#include "stats/GeneratedLog.h"

#include <QComboBox>
#include <QLabel>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>

class TestStatsPage : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase()
    {
        initKorvaneImages();
        setDefaults({});
        QVERIFY(LanguageTable::loadLanguage(LanguageTable::English));
        QString error;
        QVERIFY2(SettingsStore::instance().setHomeFolder(m_home.path(), &error), qPrintable(error));
        // Around day 90 of the year, where one disk has its hour of ALARM.
        QVERIFY(GeneratedLog::write(SettingsStore::instance().eventLogPath(),
                                    {QDate(2026, 3, 25), QDate(2026, 4, 3), 3, 600, 4}));
    }

    void showsThePeriodsRecords()
    {
        smart_stat page;
        QSignalSpy done(&page, &smart_stat::readingDone);
        const QDate from(2026, 3, 30);
        const QDate to(2026, 4, 1);
        page.showPeriod(from, to);
        QVERIFY(done.wait(10000));
        const LogRules::Rows expected = LogRules::read(SettingsStore::instance().eventLogPath(), from, to);
        QCOMPARE(page.model()->rowCount(), expected.events.size());
        QCOMPARE(page.history().temperatureCount(), expected.temperatures.size());
        QCOMPARE(page.graph()->fromDay(), from);
        QCOMPARE(page.graph()->toDay(), to);

        auto *level = page.findChildren<QComboBox *>().at(1);
        level->setCurrentIndex(level->findData(3));
        QCOMPARE(page.model()->rowCount(), 6); // one hour of polls every ten minutes
        QCOMPARE(page.model()->index(0, EventsTableModel::TimeColumn).data().toString(), QStringLiteral("13:00:00"));
    }

    // A new period asked for while the last is being read: only the new one's rows are shown.
    void newPeriodReplacesTheOneBeingRead()
    {
        smart_stat page;
        QSignalSpy done(&page, &smart_stat::readingDone);
        page.showPeriod(QDate(2026, 3, 25), QDate(2026, 4, 3));
        page.showPeriod(QDate(2026, 3, 28), QDate(2026, 3, 28));
        QVERIFY(done.wait(10000));
        QTest::qWait(200);
        QCOMPARE(done.size(), 1);
        QCOMPARE(page.history().temperatureCount(), 3 * 144);
        QVERIFY(!page.isReading());
    }

    void saysWhenTheLogCannotBeRead()
    {
        QTemporaryDir empty;
        QString error;
        QVERIFY(SettingsStore::instance().setHomeFolder(empty.path(), &error));
        smart_stat page;
        QSignalSpy done(&page, &smart_stat::readingDone);
        page.readLog();
        QVERIFY(done.wait(10000));
        QVERIFY(SettingsStore::instance().setHomeFolder(m_home.path(), &error));
        bool told = false;
        for (const QLabel *label : page.findChildren<QLabel *>())
            told |= label->text().startsWith(QLatin1String("The event log cannot be read:"));
        QVERIFY(told);
    }

private:
    QTemporaryDir m_home;
};

QTEST_MAIN(TestStatsPage)
#include "tst_statspage.moc"
