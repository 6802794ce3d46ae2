#include "PolkitAuthority.h"

#include <QDBusArgument>
#include <QDBusMessage>
#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>
#include <QMap>

namespace {

// AllowUserInteraction: an agent may ask for a password where the action wants one.
constexpr uint kAllowUserInteraction = 1;
// Long enough for someone to type a password, short enough that a hung polkit is noticed.
constexpr int kCheckTimeoutMs = 5 * 60 * 1000;

// The caller is named by its unique bus name, not by a process id that could be reused between
// the call and the check.
QDBusArgument busNameSubject(const QString &busName)
{
    QDBusArgument subject;
    subject.beginStructure();
    subject << QStringLiteral("system-bus-name")
            << QVariantMap{{QStringLiteral("name"), QVariant::fromValue(busName)}};
    subject.endStructure();
    return subject;
}

QDBusArgument noDetails()
{
    QDBusArgument details;
    details.beginMap(QMetaType::fromType<QString>(), QMetaType::fromType<QString>());
    details.endMap();
    return details;
}

} // namespace

PolkitAuthority::PolkitAuthority(const QDBusConnection &bus, QObject *parent)
    : QObject(parent)
    , m_bus(bus)
{
}

void PolkitAuthority::check(const QString &busName, const QString &action, Done done)
{
    QDBusMessage call = QDBusMessage::createMethodCall(
        QStringLiteral("org.freedesktop.PolicyKit1"), QStringLiteral("/org/freedesktop/PolicyKit1/Authority"),
        QStringLiteral("org.freedesktop.PolicyKit1.Authority"), QStringLiteral("CheckAuthorization"));
    call << QVariant::fromValue(busNameSubject(busName)) << action << QVariant::fromValue(noDetails())
         << kAllowUserInteraction << QString();
    auto *watcher = new QDBusPendingCallWatcher(m_bus.asyncCall(call, kCheckTimeoutMs), this);
    connect(watcher, &QDBusPendingCallWatcher::finished, this, [watcher, action, done] {
        watcher->deleteLater();
        const QDBusMessage reply = watcher->reply();
        if (reply.type() != QDBusMessage::ReplyMessage || reply.arguments().isEmpty()) {
            done(false, QStringLiteral("polkit could not be asked about %1: %2").arg(action, reply.errorMessage()));
            return;
        }
        bool authorized = false;
        bool challenge = false;
        QMap<QString, QString> details;
        const QDBusArgument result = reply.arguments().constFirst().value<QDBusArgument>();
        result.beginStructure();
        result >> authorized >> challenge >> details;
        result.endStructure();
        if (authorized)
            done(true, {});
        else if (challenge)
            done(false, QStringLiteral("not authorised for %1: it needs authentication, and no authentication "
                                       "agent of the desktop session answered").arg(action));
        else
            done(false, QStringLiteral("not authorised for %1").arg(action));
    });
}
