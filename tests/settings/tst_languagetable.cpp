#include "settings/LanguageTable.h"

#include <QFile>
#include <QTemporaryDir>
#include <QtTest>

class TestLanguageTable : public QObject
{
    Q_OBJECT

private slots:
    // The texts come from resources compiled into the settings library; this test is an ordinary
    // executable linking it, so it also proves the resources survive static linking.
    void bundledFiles_data()
    {
        QTest::addColumn<int>("languageIndex");
        QTest::addColumn<QString>("name");
        QTest::newRow("English") << int(LanguageTable::English) << "English";
        QTest::newRow("Russian") << int(LanguageTable::Russian) << QString::fromUtf8("Русский");
        QTest::newRow("German") << int(LanguageTable::German) << "Deutsch";
        QTest::newRow("unknown index falls back to English") << 5 << "English";
    }
    void bundledFiles()
    {
        QFETCH(int, languageIndex);
        QFETCH(QString, name);
        QVERIFY(loadLanguage(languageIndex));
        QCOMPARE(languageTable().size(), int(Lang::EntryCount));
        QCOMPARE(languageText(Lang::LanguageName), name);
        for (int entry = 0; entry < Lang::EntryCount; ++entry)
            QVERIFY2(!languageText(entry).trimmed().isEmpty(), qPrintable(QStringLiteral("entry %1").arg(entry)));
        // Texts that other code builds on and that must not be translated away.
        QCOMPARE(languageText(Lang::Title), QStringLiteral("Korvane"));
        QCOMPARE(languageText(Lang::UnitCelsius) + languageText(Lang::UnitFahrenheit), QString::fromUtf8("°C°F"));
    }

    void lineCountRule()
    {
        QTemporaryDir dir;
        auto fileOf = [&](int count, const QByteArray &lineEnd) {
            QFile file(dir.filePath(QString::number(count)));
            if (!file.open(QIODevice::WriteOnly))
                return QString();
            for (int i = 0; i < count; ++i)
                file.write("line " + QByteArray::number(i) + " \xc3\xbc" + lineEnd);
            return file.fileName();
        };
        QVERIFY(loadLanguage(LanguageTable::English));
        QCOMPARE(languageText(Lang::LevelBase + 2), QStringLiteral("WARNING"));
        QCOMPARE(languageText(100000), QString());

        QVERIFY(!LanguageTable::loadFile(fileOf(106, "\n")));
        QVERIFY(!LanguageTable::loadFile(dir.filePath(QStringLiteral("missing"))));
        QCOMPARE(languageText(Lang::Title), QStringLiteral("Korvane")); // untouched
        QVERIFY(LanguageTable::loadFile(fileOf(107, "\r\n")));
        QCOMPARE(languageTable().size(), 107);
        QCOMPARE(languageText(106), QString::fromUtf8("line 106 ü")); // UTF-8, line end removed
        QVERIFY(LanguageTable::loadFile(fileOf(300, "\n")));
        QCOMPARE(languageTable().size(), 300);

        QCOMPARE(LanguageTable::loadAtStartup(LanguageTable::German), LanguageTable::StartupResult::Loaded);
        QCOMPARE(languageText(Lang::LanguageName), QStringLiteral("Deutsch"));
        QVERIFY(LanguageTable::startupMessage(LanguageTable::StartupResult::Loaded).isEmpty());
        QCOMPARE(LanguageTable::startupMessage(LanguageTable::StartupResult::LoadedDefault),
                 QStringLiteral("Invalid or corrupt the language file.\nDefault lanuage file will be loaded"));
        QCOMPARE(LanguageTable::startupMessage(LanguageTable::StartupResult::Failed),
                 QStringLiteral("Invalid or corrupt the language file.\nThe Application will close."));
    }
};

QTEST_GUILESS_MAIN(TestLanguageTable)
#include "tst_languagetable.moc"
