#include "device/TextLine.h"

#include <QTest>

class TestTextLine : public QObject
{
    Q_OBJECT

private slots:
    void oneLine_data()
    {
        QTest::addColumn<QString>("text");
        QTest::addColumn<QString>("line");

        QTest::newRow("empty") << QString() << QString();
        QTest::newRow("clean") << QStringLiteral("WDC WD10EZEX ~") << QStringLiteral("WDC WD10EZEX ~");
        QTest::newRow("line feed") << QStringLiteral("A\n2099") << QStringLiteral("A 2099");
        QTest::newRow("at both ends, each one") << QStringLiteral("\r\nab\t") + QChar(0) << QStringLiteral("  ab  ");
        // The edges of the C0, DEL and C1 ranges, and the first printable character after each.
        QTest::newRow("C0 edge") << QString(QChar(0x1F)) + QChar(0x20) << QStringLiteral("  ");
        QTest::newRow("DEL edge") << QString(QChar(0x7E)) + QChar(0x7F) << QStringLiteral("~ ");
        QTest::newRow("C1 edge") << QString(QChar(0x9F)) + QChar(0xA0) << QStringLiteral(" ") + QChar(0xA0);
    }
    void oneLine()
    {
        QFETCH(QString, text);
        QTEST(TextLine::oneLine(text), "line");
    }
};

QTEST_GUILESS_MAIN(TestTextLine)
#include "tst_textline.moc"
