#include "settings/Autostart.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <QTest>

#include <memory>

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
    void init();
    void enablingTwiceLeavesOneEntry();
    void disablingWithoutAnEntryFails();
    void pathsKeepBlanksAndSpecialCharacters();
    void failuresHaveTheirCodes();
};

void TestAutostart::init()
{
    // A fresh configuration folder per case, as XDG_CONFIG_HOME names it.
    m_configDir = std::make_unique<QTemporaryDir>();
    m_config.setPath(m_configDir->path());
    qputenv("XDG_CONFIG_HOME", m_config.path().toUtf8());
    QCOMPARE(Autostart::entryPath(), m_config.path() + QStringLiteral("/autostart/korvane.desktop"));
}

void TestAutostart::enablingTwiceLeavesOneEntry()
{
    QCOMPARE(Autostart::setAutostart(true, QStringLiteral("/opt/korvane/Korvane")), int(Autostart::Done));
    const QByteArray first = entry();
    QVERIFY(first.startsWith("[Desktop Entry]\n"));
    QVERIFY(first.contains("\nExec=\"/opt/korvane/Korvane\" hide\n"));
    QCOMPARE(Autostart::setAutostart(true, QStringLiteral("/opt/korvane/Korvane")), int(Autostart::Done));
    QCOMPARE(entry(), first);
    QCOMPARE(QDir(m_config.filePath(QStringLiteral("autostart"))).entryList(QDir::Files).size(), 1);
    QCOMPARE(Autostart::setAutostart(false, QString()), int(Autostart::Done));
    QVERIFY(!QFile::exists(Autostart::entryPath()));
}

void TestAutostart::disablingWithoutAnEntryFails()
{
    QCOMPARE(Autostart::setAutostart(false, QString()), int(Autostart::RemoveFailed));
}

void TestAutostart::pathsKeepBlanksAndSpecialCharacters()
{
    QCOMPARE(Autostart::execLine(QStringLiteral("/home/a b/Korvane")), QStringLiteral("\"/home/a b/Korvane\" hide"));
    // Within quotes " ` $ \ take a backslash, which the string level writes twice; % is doubled.
    QCOMPARE(Autostart::execLine(QStringLiteral("/x/\"q\"/$H/100%/Korvane")),
             QStringLiteral("\"/x/\\\\\"q\\\\\"/\\\\$H/100%%/Korvane\" hide"));
}

void TestAutostart::failuresHaveTheirCodes()
{
    // The autostart folder's place is taken by a file.
    QFile blocker(m_config.filePath(QStringLiteral("autostart")));
    QVERIFY(blocker.open(QIODevice::WriteOnly));
    blocker.close();
    QCOMPARE(Autostart::setAutostart(true, QStringLiteral("/opt/Korvane")), int(Autostart::FolderUnavailable));
    QVERIFY(blocker.remove());
    // The entry's place is taken by a folder: it cannot be written, and nothing is left behind.
    QVERIFY(QDir().mkpath(Autostart::entryPath()));
    QCOMPARE(Autostart::setAutostart(true, QStringLiteral("/opt/Korvane")), int(Autostart::WriteFailed));
    QCOMPARE(QDir(m_config.filePath(QStringLiteral("autostart"))).entryList(QDir::Files), QStringList());
}

QTEST_GUILESS_MAIN(TestAutostart)
#include "tst_autostart.moc"
