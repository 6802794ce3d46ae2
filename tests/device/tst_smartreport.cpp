#include "device/DiskRecord.h"
#include "device/SmartReport.h"

#include <QTest>


namespace {

DiskRecord disk(const QString &model, const QList<SmartAttribute> &attributes)
{
    DiskRecord d;
    d.model = model;
    d.attributes = attributes;
    return d;
}

// Every field different, so that a swapped column shows.
SmartAttribute row(quint32 id, quint32 current, qint64 raw, quint32 worst, quint32 threshold)
{
    SmartAttribute a;
    a.id = id;
    a.current = current;
    a.raw = raw;
    a.worst = worst;
    a.threshold = threshold;
    return a;
}

} // namespace

class TestSmartReport : public QObject
{
    Q_OBJECT

private slots:
    void text_data()
    {
        QTest::addColumn<QList<DiskRecord>>("disks");
        QTest::addColumn<QByteArray>("report");

        QTest::newRow("no disks") << QList<DiskRecord>{} << QByteArray();
        QTest::newRow("disk without rows")
            << QList{disk(QStringLiteral("WDC WD10EZEX"), {})}
            << QByteArray("Device WDC WD10EZEX SMART Info (ID/Value/Raw Value/Worst/Treshold)\r\n"
                          "------------------------\r\n");
        QTest::newRow("two disks")
            << QList{disk(QStringLiteral("ST2000"), {row(1, 117, 0x123456789ABCLL, 99, 6), row(194, 36, 36, 52, 0)}),
                     disk(QStringLiteral("%1 Disk"), {row(9, 98, 1503, 97, 0)})}
            << QByteArray("Device ST2000 SMART Info (ID/Value/Raw Value/Worst/Treshold)\r\n"
                          "1 117 20015998343868 99 6\r\n"
                          "194 36 36 52 0\r\n"
                          "------------------------\r\n"
                          "Device %1 Disk SMART Info (ID/Value/Raw Value/Worst/Treshold)\r\n"
                          "9 98 1503 97 0\r\n"
                          "------------------------\r\n");
        QTest::newRow("line break in the model")
            << QList{disk(QStringLiteral("WDC\r\nWD10"), {})}
            << QByteArray("Device WDC  WD10 SMART Info (ID/Value/Raw Value/Worst/Treshold)\r\n"
                          "------------------------\r\n");
    }
    void text()
    {
        QFETCH(QList<DiskRecord>, disks);
        QTEST(SmartReport::text(disks), "report");
    }
};

QTEST_GUILESS_MAIN(TestSmartReport)
#include "tst_smartreport.moc"
