#include "device/AttributeCatalogue.h"

#include <QtTest>

class TestAttributeCatalogue : public QObject
{
    Q_OBJECT

private slots:
    // Rules every entry keeps: how many IDs are known, the indent the description
    // pane relies on, and the bold direction marker as the last words.
    void wholeCatalogue()
    {
        int named = 0;
        int described = 0;
        for (quint32 id = 0; id <= 256; ++id) {
            named += AttributeCatalogue::name(id) != QLatin1String("Unknown attribute");
            const QString text = AttributeCatalogue::description(id);
            if (text == QLatin1String(" Unknown attribute"))
                continue;
            ++described;
            const QString indent = (id == 6 || id == 10) ? QStringLiteral(" ") : QStringLiteral("  ");
            QVERIFY2(text.startsWith(indent) && !text.at(indent.size()).isSpace(), qPrintable(text));
            const qsizetype marker = text.indexOf(QLatin1String("(Better"));
            if (marker < 0)
                continue;
            QCOMPARE(text.mid(marker - 3, 3), QStringLiteral("<B>"));
            const QString tail = text.mid(text.indexOf(QLatin1Char(')'), marker) + 1);
            QVERIFY2(tail.isEmpty() || tail == QLatin1String("</B>") || tail == QLatin1String("</B></p>"), qPrintable(text));
        }
        QCOMPARE(named, 41);
        QCOMPARE(described, 46);
    }

    // Whole texts where a tidy-up would be easy to make by mistake: spelling,
    // indent, tags left open or closed, IDs described but not named.
    void texts_data()
    {
        QTest::addColumn<quint32>("id");
        QTest::addColumn<QString>("name");
        QTest::addColumn<QString>("text");

        QTest::newRow("thereis") << 2u << "Throughput performance" << "  Overall (general) throughput performance of a hard disk drive. If the value of this attribute is decreasing thereis a high probability that there is a problem with your disk. <B>(Better RAW Value MORE)</B></p>";
        QTest::newRow("paragraph only") << 4u << "Start/Stop count" << "  Number of spindle start/stop cycles.</p>";
        QTest::newRow("one space") << 6u << "Read channel margin" << " Margin of a channel while reading data. The function of this attribute is not specified.";
        QTest::newRow("bold left open") << 13u << "Soft read error rate" << "  Uncorrected read errors reported to the operating system. If the value is non-zero, you should backup your data. <B>(Better RAW Value LESS)";
        QTest::newRow("Fequency") << 191u << "G-sense error rate" << "  Fequency of mistakes as a result of impact loads.";
        QTest::newRow("described, not named") << 201u << "Unknown attribute" << "  Number of off-track errors. If non-zero, make a backup. <B>(Better RAW Value LESS)";
        QTest::newRow("unknown") << 255u << "Unknown attribute" << " Unknown attribute";
    }

    void texts()
    {
        QFETCH(quint32, id);
        QTEST(AttributeCatalogue::name(id), "name");
        QTEST(AttributeCatalogue::description(id), "text");
    }
};

QTEST_GUILESS_MAIN(TestAttributeCatalogue)
#include "tst_attributecatalogue.moc"
