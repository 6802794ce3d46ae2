#pragma once

#include "HealthState.h"

#include <QObject>
#include <QString>

/// Sends a pop-up straight to the desktop's notification service (org.freedesktop.Notifications
/// on the session bus), for desktops that have no tray to show Qt's balloon.
class DesktopNotifier : public QObject
{
    Q_OBJECT
public:
    /// A notifier on the session bus.
    explicit DesktopNotifier(QObject *parent = nullptr);

    /// Sends \a title and \a text; critical urgency for an alarm, normal otherwise. Never blocks.
    void notify(const QString &title, const QString &text, HealthState level);

signals:
    /// The service accepted a notification and gave it \a id.
    void delivered(uint id);
    /// No service took the notification; \a why is the bus's error text.
    void failed(const QString &why);
};
