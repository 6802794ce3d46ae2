#include "TestFiles.h"

#include "settings/Autostart.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <QTest>

#include <memory>
#include <optional>

class TestAutostart : public QObject
{
    Q_OBJECT
    std::unique_ptr<QTemporaryDir> m_configDir;
    QDir m_config;

    QByteArray entry() const
    {
        QFile file(Autostart::entryPath());
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
    }

private slots:
    void init()
    {
        // A fresh configuration folder per case, as XDG_CONFIG_HOME names it.
        m_configDir = std::make_unique<QTemporaryDir>();
        m_config.setPath(m_configDir->path());
        qputenv("XDG_CONFIG_HOME", m_config.path().toUtf8());
        QCOMPARE(Autostart::entryPath(), m_config.path() + QStringLiteral("/autostart/korvane.desktop"));
    }

    void enablingTwiceLeavesOneEntry()
    {
        QCOMPARE(Autostart::setAutostart(true, QStringLiteral("/opt/korvane/Korvane")), int(Autostart::Done));
        const QByteArray first = entry();
        QVERIFY(first.startsWith("[Desktop Entry]\n"));
        QVERIFY(first.contains("\nExec=\"/opt/korvane/Korvane\" hide\n"));
        QCOMPARE(Autostart::setAutostart(true, QStringLiteral("/opt/korvane/Korvane")), int(Autostart::Done));
        QCOMPARE(entry(), first);
        QCOMPARE(Autostart::registeredCommandLine(), std::optional<QString>(Autostart::execLine(QStringLiteral("/opt/korvane/Korvane"))));
        QCOMPARE(QDir(m_config.filePath(QStringLiteral("autostart"))).entryList(QDir::Files).size(), 1);
        QCOMPARE(Autostart::setAutostart(false, QString()), int(Autostart::Done));
        QVERIFY(!QFile::exists(Autostart::entryPath()));
        QCOMPARE(Autostart::registeredCommandLine(), std::nullopt);
    }

    void pathsKeepBlanksAndSpecialCharacters()
    {
        QCOMPARE(Autostart::execLine(QStringLiteral("/home/a b/Korvane")), QStringLiteral("\"/home/a b/Korvane\" hide"));
        // Within quotes " ` $ \ take a backslash, which the string level writes twice; % is doubled.
        QCOMPARE(Autostart::execLine(QStringLiteral("/x/\"q\"/$H/100%/Korvane")),
                 QStringLiteral("\"/x/\\\\\"q\\\\\"/\\\\$H/100%%/Korvane\" hide"));
    }

    void execArguments_data()
    {
        QTest::addColumn<QString>("exec");
        QTest::addColumn<QStringList>("arguments");
        const auto ours = [](const QString &executable) {
            return QStringList{executable, QStringLiteral("hide")};
        };
        for (const QString &path : {QStringLiteral("/home/a b/Korvane"), QStringLiteral("/x/\"q\"/`id`/$H/Korvane"),
                                    QStringLiteral("/x/back\\slash\\s/Korvane"), QStringLiteral("/x/100%/%%f/Korvane"),
                                    QStringLiteral("/x/tab\there/Korvane")})
            QTest::newRow(qPrintable(QStringLiteral("written: ") + path)) << Autostart::execLine(path) << ours(path);
        QTest::newRow("unquoted") << QStringLiteral("/opt/k/Korvane  hide ") << ours(QStringLiteral("/opt/k/Korvane"));
        // The string level comes first: its blank separates unless it is inside quotes.
        QTest::newRow("string escapes") << QStringLiteral("\"/opt/a\\sb/Korvane\"\\shide")
                                        << ours(QStringLiteral("/opt/a b/Korvane"));
        QTest::newRow("a string blank outside quotes") << QStringLiteral("/opt/a\\sb")
                                                       << QStringList{QStringLiteral("/opt/a"), QStringLiteral("b")};
        QTest::newRow("quotes inside an argument") << QStringLiteral("/opt/\"a b\"/Korvane hide")
                                                   << ours(QStringLiteral("/opt/a b/Korvane"));
        QTest::newRow("a quote left open") << QStringLiteral("\"/opt/k/Korvane hide") << QStringList();
    }

    void execArguments()
    {
        QFETCH(QString, exec);
        QFETCH(QStringList, arguments);
        QCOMPARE(Autostart::execArguments(exec), arguments);
    }

    void registeredCommandLine_data()
    {
        QTest::addColumn<QByteArray>("entry");
        QTest::addColumn<bool>("found");
        QTest::addColumn<QString>("exec");
        QTest::newRow("blanks around the sign")
            << QByteArray("[Desktop Entry]\r\nType=Application\r\n  Exec = \"/o/Korvane\" hide \r\n") << true
            << QStringLiteral("\"/o/Korvane\" hide");
        QTest::newRow("an action's Exec is not the entry's")
            << QByteArray("[Desktop Action a]\nExec=/x/a\n[Desktop Entry]\nExec=/o/Korvane hide\n[Desktop Action b]\nExec=/x/b\n")
            << true << QStringLiteral("/o/Korvane hide");
        QTest::newRow("keys that only start like it")
            << QByteArray("[Desktop Entry]\nExecStart=/x\nTryExec=/y\nExec=/o/Korvane hide\n") << true
            << QStringLiteral("/o/Korvane hide");
        QTest::newRow("no Exec") << QByteArray("[Desktop Entry]\nName=Korvane\n") << false << QString();
        QTest::newRow("an Exec outside the entry") << QByteArray("Exec=/o/Korvane hide\n[Other]\n") << false << QString();
    }

    void registeredCommandLine()
    {
        QFETCH(QByteArray, entry);
        QFETCH(bool, found);
        QFETCH(QString, exec);
        QVERIFY(QDir().mkpath(m_config.filePath(QStringLiteral("autostart"))));
        QVERIFY(TestFiles::write(Autostart::entryPath(), entry));
        QCOMPARE(Autostart::registeredCommandLine(), found ? std::optional<QString>(exec) : std::nullopt);
    }

    void failuresHaveTheirCodes()
    {
        QCOMPARE(Autostart::setAutostart(false, QString()), int(Autostart::RemoveFailed)); // there is no entry
        // The autostart folder's place is taken by a file.
        const QString blocker = m_config.filePath(QStringLiteral("autostart"));
        QVERIFY(TestFiles::write(blocker, {}));
        QCOMPARE(Autostart::setAutostart(true, QStringLiteral("/opt/Korvane")), int(Autostart::FolderUnavailable));
        QVERIFY(QFile::remove(blocker));
        // The entry's place is taken by a folder: it cannot be written, and nothing is left behind.
        QVERIFY(QDir().mkpath(Autostart::entryPath()));
        QCOMPARE(Autostart::setAutostart(true, QStringLiteral("/opt/Korvane")), int(Autostart::WriteFailed));
        QCOMPARE(QDir(m_config.filePath(QStringLiteral("autostart"))).entryList(QDir::Files), QStringList());
    }
};

QTEST_GUILESS_MAIN(TestAutostart)
#include "tst_autostart.moc"
