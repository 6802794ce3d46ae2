#include "DesktopNotifier.h"

#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>
#include <QVariantMap>

DesktopNotifier::DesktopNotifier(QObject *parent) : QObject(parent) {}

void DesktopNotifier::notify(const QString &title, const QString &text, HealthState level)
{
    QDBusMessage call = QDBusMessage::createMethodCall(
        QStringLiteral("org.freedesktop.Notifications"), QStringLiteral("/org/freedesktop/Notifications"),
        QStringLiteral("org.freedesktop.Notifications"), QStringLiteral("Notify"));
    QVariantMap hints;
    // The notification protocol defines the urgency hint as a byte; some servers ignore an int.
    hints.insert(QStringLiteral("urgency"), QVariant::fromValue<uchar>(level == HealthAlarm ? 2 : 1));
    hints.insert(QStringLiteral("desktop-entry"), QStringLiteral("korvane"));
    const QString icon = level == HealthAlarm ? QStringLiteral("dialog-error") : QStringLiteral("dialog-warning");
    // An alarm stays until the user closes it (0 means "never expires" to the service); a
    // warning goes after the desktop's default time (-1).
    const qint32 timeout = level == HealthAlarm ? 0 : -1;
    call << QStringLiteral("Korvane") << uint(0) << icon << title << text << QStringList() << hints << timeout;

    QDBusConnection bus = QDBusConnection::sessionBus();
    if (!bus.isConnected()) {
        emit failed(QStringLiteral("no session bus"));
        return;
    }
    auto *watcher = new QDBusPendingCallWatcher(bus.asyncCall(call), this);
    connect(watcher, &QDBusPendingCallWatcher::finished, this, [this](QDBusPendingCallWatcher *w) {
        const QDBusPendingReply<uint> reply = *w;
        if (reply.isError())
            emit failed(reply.error().message());
        else
            emit delivered(reply.value());
        w->deleteLater();
    });
}
