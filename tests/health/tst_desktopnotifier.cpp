#include "health/DesktopNotifier.h"

#include <QDBusArgument>
#include <QDBusConnection>
#include <QDBusVariant>
#include <QSignalSpy>
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
private slots:
    void initTestCase()
    {
        // CTest starts this test under dbus-run-session; on a desktop's own bus the fake server
        // could not take the name, and real pop-ups would appear.
        if (qEnvironmentVariableIntValue("KORVANE_PRIVATE_BUS") != 1)
            QSKIP("needs a private session bus: run it through ctest (dbus-run-session)");
        QVERIFY(QDBusConnection::sessionBus().isConnected());
    }

    void popUpsReachTheNotificationServer()
    {
        QDBusConnection serverBus = QDBusConnection::connectToBus(QDBusConnection::SessionBus, QStringLiteral("server"));
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

    void withoutAServerTheFailureIsReported()
    {
        DesktopNotifier notifier;
        QSignalSpy failed(&notifier, &DesktopNotifier::failed);
        notifier.notify(QStringLiteral("Alarm"), QStringLiteral("nobody listens"), HealthAlarm);
        QTRY_COMPARE(failed.size(), 1);
    }
};

QTEST_GUILESS_MAIN(TestDesktopNotifier)
#include "tst_desktopnotifier.moc"
