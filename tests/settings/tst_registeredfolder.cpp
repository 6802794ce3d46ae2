#include "settings/Autostart.h"
#include "settings/RegisteredFolder.h"

#include <QTest>

#include <optional>

namespace {

std::optional<QString> valueOf(bool read, const QString &text)
{
    return read ? std::optional<QString>(text) : std::nullopt;
}

} // namespace

class TestRegisteredFolder : public QObject
{
    Q_OBJECT
private slots:
    void fromRunValue_data()
    {
        QTest::addColumn<bool>("read");
        QTest::addColumn<QString>("value");
        QTest::addColumn<bool>("is64");
        QTest::addColumn<QString>("directory");
        QTest::newRow("no value: the module's folder")
            << false << QString() << true << QStringLiteral("C:/Program Files/Korvane/");
        QTest::newRow("64-bit, blanks in quotes")
            << true << QStringLiteral("\"D:\\My Tools\\Korvane\\Korvane64.exe\" hide") << true << QStringLiteral("D:/My Tools/Korvane/");
        QTest::newRow("32-bit") << true << QStringLiteral("\"D:\\K\\Korvane.exe\" hide") << false << QStringLiteral("D:/K/");
        QTest::newRow("any case") << true << QStringLiteral("\"D:\\K\\KORVANE64.exe\" hide") << true << QStringLiteral("D:/K/");
        QTest::newRow("without quotes") << true << QStringLiteral("D:\\K\\Korvane64.exe hide") << true << QStringLiteral("D:/K/");
        QTest::newRow("the first occurrence cuts")
            << true << QStringLiteral("\"D:\\korvane.exe copies\\Korvane.exe\" hide") << false << QStringLiteral("D:/");
        QTest::newRow("32-bit name, 64-bit build: kept whole")
            << true << QStringLiteral("\"D:\\K\\Korvane.exe\" hide") << true << QStringLiteral("D:/K/Korvane.exe hide");
        QTest::newRow("64-bit name, 32-bit build: kept whole")
            << true << QStringLiteral("\"D:\\K\\Korvane64.exe\" hide") << false << QStringLiteral("D:/K/Korvane64.exe hide");
        QTest::newRow("a path without the name")
            << true << QStringLiteral("\"D:\\Other\\other.exe\" hide") << true << QStringLiteral("D:/Other/other.exe hide");
        QTest::newRow("an empty value") << true << QString() << true << QString();
    }

    void fromRunValue()
    {
        QFETCH(bool, read);
        QFETCH(QString, value);
        QFETCH(bool, is64);
        QFETCH(QString, directory);
        const QString module = QStringLiteral("C:\\Program Files\\Korvane\\");
        QCOMPARE(RegisteredFolder::fromRunValue(module, valueOf(read, value), is64), directory);
    }

    void fromExecValue_data()
    {
        QTest::addColumn<bool>("read");
        QTest::addColumn<QString>("exec");
        QTest::addColumn<QString>("directory"); // empty: the module's folder stays
        QTest::newRow("no entry") << false << QString() << QString();
        QTest::newRow("ours, blanks in quotes")
            << true << Autostart::execLine(QStringLiteral("/opt/my tools/Korvane")) << QStringLiteral("/opt/my tools/");
        QTest::newRow("a folder named like the program")
            << true << Autostart::execLine(QStringLiteral("/srv/Korvane/korvane/Korvane")) << QStringLiteral("/srv/Korvane/korvane/");
        QTest::newRow("without quotes") << true << QStringLiteral("/opt/k/Korvane hide") << QStringLiteral("/opt/k/");
        QTest::newRow("another program") << true << QStringLiteral("\"/usr/bin/other\" hide") << QString();
        QTest::newRow("a program whose name holds ours") << true << QStringLiteral("/opt/k/Korvane-old hide") << QString();
        QTest::newRow("the name in another case") << true << QStringLiteral("/opt/k/korvane hide") << QString();
        QTest::newRow("a folder of that name") << true << QStringLiteral("\"/opt/Korvane/\" hide") << QString();
        QTest::newRow("a relative path") << true << QStringLiteral("Korvane hide") << QString();
        QTest::newRow("through a launcher") << true << QStringLiteral("env A=1 /opt/k/Korvane hide") << QString();
        QTest::newRow("an empty value") << true << QString() << QString();
    }

    void fromExecValue()
    {
        QFETCH(bool, read);
        QFETCH(QString, exec);
        QFETCH(QString, directory);
        const QString module = QStringLiteral("/usr/local/bin/");
        QCOMPARE(RegisteredFolder::fromExecValue(module, valueOf(read, exec)), directory.isEmpty() ? module : directory);
    }
};

QTEST_GUILESS_MAIN(TestRegisteredFolder)
#include "tst_registeredfolder.moc"
