#include "health/DesktopNotifier.h"

#include <QDBusArgument>
#include <QDBusConnection>
#include <QDBusVariant>
#include <QProcess>
#include <QSignalSpy>
#include <QStandardPaths>
#include <QTest>

namespace {

/// Stands in for the desktop's notification server and keeps what it was sent.
class FakeNotificationServer : public QObject
{
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.freedesktop.Notifications")
public:
    struct Received
    {
        QString app, icon, summary, body;
        QVariantMap hints;
        int timeout = 0;
    };
    QList<Received> received;

public slots:
    uint Notify(const QString &app, uint, const QString &icon, const QString &summary, const QString &body,
                const QStringList &, const QVariantMap &hints, int timeout)
    {
        received.append({app, icon, summary, body, hints, timeout});
        return uint(received.size());
    }
};

} // namespace

class TestDesktopNotifier : public QObject
{
    Q_OBJECT
    QProcess m_bus;

private slots:
    void initTestCase();
    void cleanupTestCase();
    void popUpsReachTheNotificationServer();
    void withoutAServerTheFailureIsReported();
};

void TestDesktopNotifier::initTestCase()
{
    // A private session bus, so the test never shows anything on a developer's desktop.
    const QString daemon = QStandardPaths::findExecutable(QStringLiteral("dbus-daemon"));
    if (daemon.isEmpty())
        QSKIP("dbus-daemon is not installed");
    m_bus.start(daemon, {QStringLiteral("--session"), QStringLiteral("--nofork"), QStringLiteral("--print-address")});
    QVERIFY(m_bus.waitForReadyRead(10000));
    const QByteArray address = m_bus.readLine().trimmed();
    qputenv("DBUS_SESSION_BUS_ADDRESS", address);
    QVERIFY(QDBusConnection::sessionBus().isConnected());
}

void TestDesktopNotifier::cleanupTestCase()
{
    m_bus.kill();
    m_bus.waitForFinished();
}

void TestDesktopNotifier::popUpsReachTheNotificationServer()
{
    QDBusConnection serverBus = QDBusConnection::connectToBus(qgetenv("DBUS_SESSION_BUS_ADDRESS"), QStringLiteral("server"));
    FakeNotificationServer server;
    QVERIFY(serverBus.registerObject(QStringLiteral("/org/freedesktop/Notifications"), &server,
                                     QDBusConnection::ExportAllSlots));
    QVERIFY(serverBus.registerService(QStringLiteral("org.freedesktop.Notifications")));

    DesktopNotifier notifier;
    QSignalSpy delivered(&notifier, &DesktopNotifier::delivered);
    notifier.notify(QStringLiteral("Alarm"), QStringLiteral("Disk 0 is failing"), HealthAlarm);
    notifier.notify(QStringLiteral("Warning"), QStringLiteral("Disk 1 runs hot"), HealthWarning);
    QTRY_COMPARE(delivered.size(), 2);

    QCOMPARE(server.received.size(), 2);
    const auto &alarm = server.received.at(0);
    QCOMPARE(alarm.app, QStringLiteral("Korvane"));
    QCOMPARE(alarm.summary, QStringLiteral("Alarm"));
    QCOMPARE(alarm.body, QStringLiteral("Disk 0 is failing"));
    // The urgency must arrive as a byte: servers ignore it in any other type.
    QCOMPARE(alarm.hints.value(QStringLiteral("urgency")).metaType(), QMetaType::fromType<uchar>());
    QCOMPARE(alarm.hints.value(QStringLiteral("urgency")).value<uchar>(), uchar(2));
    QCOMPARE(alarm.hints.value(QStringLiteral("desktop-entry")).toString(), QStringLiteral("korvane"));
    QCOMPARE(alarm.timeout, 0);
    const auto &warning = server.received.at(1);
    QCOMPARE(warning.hints.value(QStringLiteral("urgency")).value<uchar>(), uchar(1));
    QCOMPARE(warning.timeout, -1);

    serverBus.unregisterService(QStringLiteral("org.freedesktop.Notifications"));
    QDBusConnection::disconnectFromBus(QStringLiteral("server"));
}

void TestDesktopNotifier::withoutAServerTheFailureIsReported()
{
    DesktopNotifier notifier;
    QSignalSpy failed(&notifier, &DesktopNotifier::failed);
    notifier.notify(QStringLiteral("Alarm"), QStringLiteral("nobody listens"), HealthAlarm);
    QTRY_COMPARE(failed.size(), 1);
}

QTEST_GUILESS_MAIN(TestDesktopNotifier)
#include "tst_desktopnotifier.moc"
