#include "settings/LanguageTable.h"

#include "TestEnv.h"

#include <QDirIterator>
#include <QFile>
#include <QRegularExpression>
#include <QTemporaryDir>
#include <QtTest>

class TestLanguageTable : public QObject
{
    Q_OBJECT

private slots:
    // Every entry the program uses is there in every language, and translated where a
    // translation is due: the same text is allowed only where the language says it so too. The
    // texts come from resources compiled into the settings library; this test is an ordinary
    // executable linking it, so it also proves the resources survive static linking.
    void translationsAreComplete_data()
    {
        QTest::addColumn<int>("languageIndex");
        QTest::addColumn<QString>("name");
        QTest::addColumn<QList<int>>("sameAsEnglish"); // {-1}: every entry
        const QList<int> everywhere = {Lang::UnitCelsius, Lang::UnitFahrenheit, Lang::Title, Lang::AttrIdColumn,
                                       Lang::SecurityStartTls};
        QTest::newRow("English") << int(LanguageTable::English) << "English" << QList<int>{-1};
        QTest::newRow("unknown index falls back to English") << 5 << "English" << QList<int>{-1};
        QTest::newRow("German") << int(LanguageTable::German) << "Deutsch"
                                << (everywhere + QList<int>{Lang::CelsiusName, Lang::FahrenheitName, Lang::EmailPage,
                                                            Lang::ColourNormal, Lang::Ok, Lang::SmtpPort, Lang::LevelOk,
                                                            Lang::LevelAlarm, Lang::AttrStatusColumn,
                                                            Lang::VolumesHeading, Lang::ColourCyan, Lang::ColourMagenta,
                                                            Lang::AboutVersion, Lang::BlockTitle, Lang::BlockLabel});
        QTest::newRow("Russian") << int(LanguageTable::Russian) << QString::fromUtf8("Русский") << everywhere;
    }
    void translationsAreComplete()
    {
        QFETCH(int, languageIndex);
        QFETCH(QList<int>, sameAsEnglish);
        QVERIFY(loadLanguage(LanguageTable::English));
        const QStringList english = languageTable();
        QVERIFY(loadLanguage(languageIndex));
        QTEST(languageText(Lang::LanguageName), "name");
        const QStringList translated = languageTable();
        QCOMPARE(translated.size(), int(Lang::EntryCount));
        static const QRegularExpression placeholder(QStringLiteral("%\\d+"));
        auto placeholders = [](const QString &text) {
            QStringList found;
            for (auto match = placeholder.globalMatch(text); match.hasNext();)
                found << match.next().captured();
            found.sort();
            return found;
        };
        for (int entry = 0; entry < Lang::EntryCount; ++entry) {
            const QString where = QStringLiteral("entry %1: %2").arg(entry).arg(translated.at(entry));
            QVERIFY2(!translated.at(entry).trimmed().isEmpty(), qPrintable(where));
            const bool same = sameAsEnglish == QList<int>{-1} || sameAsEnglish.contains(entry);
            QVERIFY2((translated.at(entry) == english.at(entry)) == same, qPrintable(where));
            // A lost "%1" drops a path or a name from a message; a lost "&" drops a menu's key.
            QCOMPARE(placeholders(translated.at(entry)), placeholders(english.at(entry)));
            QCOMPARE(translated.at(entry).count(QLatin1Char('&')), english.at(entry).count(QLatin1Char('&')));
        }
    }

    // A text written into a widget as a literal would stay English in every language.
    void windowTextsComeFromTheTable()
    {
        QDirIterator files(TestEnv::sourceDir() + QStringLiteral("/src/ui"), {QStringLiteral("*.cpp")});
        QVERIFY(files.hasNext());
        while (files.hasNext()) {
            QFile file(files.next());
            QVERIFY(file.open(QIODevice::ReadOnly));
            const QByteArray code = file.readAll();
            QVERIFY2(!code.contains(" tr(\"") && !code.contains("(tr(\""), qPrintable(file.fileName()));
        }
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
