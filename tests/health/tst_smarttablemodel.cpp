#include "device/AttributeCatalogue.h"
#include "device/DiskRecord.h"
#include "health/SmartTableModel.h"
#include "settings/LanguageTable.h"

#include <QAbstractItemModelTester>
#include <QItemSelectionModel>
#include <QSignalSpy>
#include <QTest>

namespace {

SmartAttribute row(quint32 id, quint32 current, quint32 threshold, quint32 advisory = 0, quint32 performance = 0)
{
    SmartAttribute a;
    a.id = id;
    a.name = AttributeCatalogue::name(id);
    a.description = AttributeCatalogue::description(id);
    a.current = current;
    a.worst = current - 1;
    a.threshold = threshold;
    a.raw = 1000 + id;
    a.advisory = advisory;
    a.performance = performance;
    return a;
}

DiskRecord disk(const QList<SmartAttribute> &attributes)
{
    DiskRecord d;
    d.smartState = 1;
    d.attributes = attributes;
    return d;
}

QStringList columnTexts(const SmartTableModel &model, int r)
{
    QStringList texts;
    for (int c = 0; c < model.columnCount(); ++c)
        texts << model.index(r, c).data().toString();
    return texts;
}

} // namespace

class TestSmartTableModel : public QObject
{
    Q_OBJECT

    QStringList m_english;

private slots:
    void initTestCase()
    {
        QVERIFY(loadLanguage(LanguageTable::English));
        m_english = languageTable();
    }

    // The tester checks the model's invariants after every signal of a series of polls.
    void passesModelTester()
    {
        SmartTableModel model(m_english);
        QAbstractItemModelTester tester(&model, QAbstractItemModelTester::FailureReportingMode::QtTest);
        model.setDisk(disk({row(1, 100, 6), row(5, 100, 36), row(194, 40, 0)}));
        model.setDisk(disk({row(1, 99, 6), row(5, 5, 36), row(194, 41, 0)}));
        model.setDisk(disk({row(1, 99, 6), row(9, 90, 0)}));
        model.setTexts(m_english);
        model.setDisk(DiskRecord());
        model.setTexts(m_english);
        QCOMPARE(model.rowCount(), 0);
    }

    void rows_data()
    {
        QTest::addColumn<SmartAttribute>("attribute");
        QTest::addColumn<QStringList>("cells");
        QTest::addColumn<int>("category");
        QTest::addColumn<QString>("icon");

        using C = AttributeCatalogue::Category;
        QTest::newRow("health, OK")
            << row(5, 100, 36) << QStringList{"5", "Reallocated sector count", "100", "99", "36", "1005", "OK"}
            << int(C::Health) << "attr_health";
        SmartAttribute wide = row(5, 100, 36);
        wide.raw = 0x123456789ABCLL;
        QTest::newRow("health, all six raw bytes")
            << wide << QStringList{"5", "Reallocated sector count", "100", "99", "36", "20015998343868", "OK"}
            << int(C::Health) << "attr_health";
        QTest::newRow("health, at threshold")
            << row(5, 36, 36) << QStringList{"5", "Reallocated sector count", "36", "35", "36", "1005", "WARNING"}
            << int(C::Health) << "attr_health";
        QTest::newRow("health, floor")
            << row(1, 5, 0) << QStringList{"1", "Raw read error rate", "5", "4", "0", "1001", "ALARM"}
            << int(C::Health) << "attr_health";
        // The evaluation leaves performance rows out: no verdict however low they are.
        QTest::newRow("health/performance, not checked")
            << row(2, 3, 50, 0, 1)
            << QStringList{"2", "Throughput performance", "3", "2", "50", "1002", "NOT CHECKED"}
            << int(C::HealthPerformance) << "attr_h_p";
        QTest::newRow("information, silent warning")
            << row(194, 8, 0, 1, 0) << QStringList{"194", "Temperature", "8", "7", "0", "1194", "WARNING"}
            << int(C::Information) << "attr_info";
        QTest::newRow("performance, not checked")
            << row(8, 100, 0, 1, 1)
            << QStringList{"8", "Seek timer performance", "100", "99", "0", "1008", "NOT CHECKED"}
            << int(C::Performance) << "attr_perf";
    }
    void rows()
    {
        QFETCH(SmartAttribute, attribute);
        QFETCH(QStringList, cells);
        SmartTableModel model(m_english);
        model.setDisk(disk({row(9, 100, 0), attribute}));
        QCOMPARE(columnTexts(model, 1), cells);
        const int level = QStringList{"NOT CHECKED", "OK", "WARNING", "ALARM"}.indexOf(cells.last());
        for (int c = 0; c < SmartTableModel::ColumnCount; ++c) {
            const QModelIndex cell = model.index(1, c);
            QTEST(cell.data(SmartTableModel::CategoryRole).toInt(), "category");
            QTEST(cell.data(SmartTableModel::IconNameRole).toString(), "icon");
            QCOMPARE(cell.data(SmartTableModel::LevelRole).toInt(), level);
            QCOMPARE(cell.data(SmartTableModel::IdRole).toUInt(), attribute.id);
            QCOMPARE(cell.data(SmartTableModel::DescriptionRole).toString(), attribute.description);
            const bool number = c != SmartTableModel::NameColumn && c != SmartTableModel::StatusColumn;
            QCOMPARE(cell.data(Qt::TextAlignmentRole).toInt(), number ? int(Qt::AlignRight | Qt::AlignVCenter) : 0);
        }
    }

    // The evaluation does not look at these disks, so no row may claim a verdict.
    void unevaluatedDiskShowsNoVerdict()
    {
        DiskRecord off = disk({row(5, 3, 36), row(1, 100, 6)});
        off.monitored = false;
        DiskRecord unread = off;
        unread.monitored = true;
        unread.smartState = 0;
        SmartTableModel model(m_english);
        for (const DiskRecord &d : {off, unread}) {
            model.setDisk(d);
            const QModelIndex failing = model.index(0, SmartTableModel::StatusColumn);
            QCOMPARE(failing.data().toString(), QStringLiteral("NOT CHECKED"));
            QCOMPARE(failing.data(SmartTableModel::LevelRole), QVariant(0));
        }
    }

    // A poll changes values, not rows: the selection must survive it. Other rows reset.
    void pollKeepsSelection()
    {
        SmartTableModel model(m_english);
        QItemSelectionModel selection(&model);
        model.setDisk(disk({row(1, 100, 6), row(5, 100, 36), row(194, 40, 0)}));
        selection.setCurrentIndex(model.index(2, 0), QItemSelectionModel::ClearAndSelect | QItemSelectionModel::Rows);
        QSignalSpy resets(&model, &QAbstractItemModel::modelReset);
        QSignalSpy changes(&model, &QAbstractItemModel::dataChanged);

        model.setDisk(disk({row(1, 100, 6), row(5, 4, 36), row(194, 41, 0)}));
        QCOMPARE(resets.size(), 0);
        QCOMPARE(changes.size(), 1);
        QCOMPARE(selection.currentIndex().row(), 2);
        QVERIFY(selection.isRowSelected(2));
        QCOMPARE(model.index(1, SmartTableModel::StatusColumn).data().toString(), QStringLiteral("ALARM"));

        model.setDisk(disk({row(1, 100, 6), row(194, 41, 0), row(5, 4, 36)}));
        QCOMPARE(resets.size(), 1);
        QVERIFY(!selection.hasSelection());
    }

    void headersFollowTheLanguage()
    {
        SmartTableModel model(m_english);
        model.setDisk(disk({row(2, 3, 50, 0, 1)}));
        QStringList headers;
        for (int c = 0; c < model.columnCount(); ++c)
            headers << model.headerData(c, Qt::Horizontal).toString();
        QCOMPARE(headers, (QStringList{"ID", "Attribute", "Value", "Worst", "Threshold", "Raw Value", "Status"}));

        QStringList other = m_english;
        other[Lang::AttrStatusColumn] = QStringLiteral("Zustand");
        other[Lang::LevelBase] = QStringLiteral("NICHT GEPRÜFT");
        QSignalSpy headerChanges(&model, &QAbstractItemModel::headerDataChanged);
        QSignalSpy changes(&model, &QAbstractItemModel::dataChanged);
        model.setTexts(other);
        QCOMPARE(headerChanges.size(), 1);
        QCOMPARE(changes.size(), 1);
        QCOMPARE(model.headerData(SmartTableModel::StatusColumn, Qt::Horizontal).toString(), QStringLiteral("Zustand"));
        QCOMPARE(model.index(0, SmartTableModel::StatusColumn).data().toString(), QStringLiteral("NICHT GEPRÜFT"));
    }
};

QTEST_GUILESS_MAIN(TestSmartTableModel)
#include "tst_smarttablemodel.moc"
