#pragma once

#include <QDBusConnection>
#include <QObject>
#include <QString>

#include <functional>

/// Asks polkit whether a caller on the bus may take an action, without blocking: an
/// administrator's password typed into the desktop's agent may take minutes.
class PolkitAuthority : public QObject
{
    Q_OBJECT
public:
    /// The answer: allowed, or the reason it is not (for the caller's error reply).
    using Done = std::function<void(bool allowed, const QString &refusal)>;

    /// Asks the authority on \a bus (the system bus; a private bus in tests).
    explicit PolkitAuthority(const QDBusConnection &bus, QObject *parent = nullptr);

    /// Checks \a action for the process behind the unique bus name \a busName, letting polkit
    /// ask the user; \a done is called on this object's thread with the answer.
    void check(const QString &busName, const QString &action, Done done);

private:
    QDBusConnection m_bus;
};
