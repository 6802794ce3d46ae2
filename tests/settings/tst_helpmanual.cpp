#include "settings/HelpManual.h"
#include "settings/LanguageTable.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <QTest>

class TestHelpManual : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase() { QVERIFY(LanguageTable::loadLanguage(LanguageTable::English)); }
    void onlyAReadableFileCounts_data()
    {
        QTest::addColumn<QString>("kind");
        QTest::newRow("file") << "file";
        QTest::newRow("folder of that name") << "folder";
        QTest::newRow("link to nothing") << "dangling";
    }

    void onlyAReadableFileCounts()
    {
        QFETCH(QString, kind);
        // A blank in the folder: the URL must still name the file, and the message the whole path.
        QTemporaryDir root;
        const QString dir = root.filePath(QStringLiteral("Korvane 1"));
        const QString manual = dir + QStringLiteral("/Korvane.pdf");
        QVERIFY(QDir().mkpath(dir));
        if (kind == QLatin1String("file"))
            QVERIFY(QFile(manual).open(QIODevice::WriteOnly));
        else if (kind == QLatin1String("folder"))
            QVERIFY(QDir().mkpath(manual));
        else
            QVERIFY(QFile::link(root.filePath(QStringLiteral("gone.pdf")), manual));

        const HelpManual::Decision help = HelpManual::decide(dir);
        QCOMPARE(help.path, manual);
        if (kind == QLatin1String("file")) {
            QCOMPARE(help.url.toLocalFile(), manual);
            QCOMPARE(help.message, QString());
        } else {
            QVERIFY(help.url.isEmpty());
            QCOMPARE(help.message, QStringLiteral("The user manual %1 is missing. Install Korvane again to get it back.")
                                       .arg(QDir::toNativeSeparators(manual)));
        }
    }

    // Installed under a prefix, the manual lives in share/doc/korvane; one beside the program wins.
    void anInstalledManualIsFound()
    {
        QTemporaryDir prefix;
        const QString bin = prefix.filePath(QStringLiteral("bin"));
        const QString installed = prefix.filePath(QStringLiteral("share/doc/korvane/Korvane.pdf"));
        QVERIFY(QDir().mkpath(bin) && QDir().mkpath(prefix.filePath(QStringLiteral("share/doc/korvane"))));
        QVERIFY(QFile(installed).open(QIODevice::WriteOnly));
        QCOMPARE(HelpManual::decide(bin).url.toLocalFile(), installed);
        QVERIFY(QFile(bin + QStringLiteral("/Korvane.pdf")).open(QIODevice::WriteOnly));
        QCOMPARE(HelpManual::decide(bin).url.toLocalFile(), bin + QStringLiteral("/Korvane.pdf"));
    }
};

QTEST_GUILESS_MAIN(TestHelpManual)
#include "tst_helpmanual.moc"
