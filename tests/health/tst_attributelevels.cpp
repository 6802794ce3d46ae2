#include "health/AttributeLevels.h"

#include <QTest>

using AttributeLevels::Moved;

class TestAttributeLevels : public QObject
{
    Q_OBJECT
private slots:
    void theOtherLevelFollows_data()
    {
        QTest::addColumn<bool>("lowerIsWorse");
        QTest::addColumn<bool>("warningMoved");
        QTest::addColumn<int>("warning");  // after the user's move
        QTest::addColumn<int>("critical"); // after the user's move
        QTest::addColumn<int>("warningAfter");
        QTest::addColumn<int>("criticalAfter");

        // Lower is worse: critical stays at or below warning.
        QTest::newRow("lower: critical up past warning") << true << false << 50 << 60 << 60 << 60;
        QTest::newRow("lower: warning to 0, below critical") << true << true << 0 << 30 << 0 << 0;
        QTest::newRow("lower: critical to 200") << true << false << 50 << 200 << 200 << 200;
        QTest::newRow("lower: apart") << true << true << 70 << 30 << 70 << 30;
        // Higher is worse: critical stays at or above warning.
        QTest::newRow("higher: warning up past critical") << false << true << 55 << 50 << 55 << 55;
        QTest::newRow("higher: critical to 0, below warning") << false << false << 40 << 0 << 0 << 0;
        QTest::newRow("higher: warning to 200") << false << true << 200 << 150 << 200 << 200;
        QTest::newRow("higher: apart") << false << false << 40 << 90 << 40 << 90;
    }

    void theOtherLevelFollows()
    {
        QFETCH(bool, lowerIsWorse);
        QFETCH(bool, warningMoved);
        QFETCH(int, warning);
        QFETCH(int, critical);
        const auto after = AttributeLevels::couple({warning, critical}, warningMoved ? Moved::Warning : Moved::Critical,
                                                   lowerIsWorse);
        QTEST(after.warning, "warningAfter");
        QTEST(after.critical, "criticalAfter");
    }
};

QTEST_GUILESS_MAIN(TestAttributeLevels)
#include "tst_attributelevels.moc"
