#pragma once

#include <QString>

/// What the health evaluation needs to know about the e-mail client: whether a message
/// is still in flight, and how to hand it a new one.
class MailNotifier
{
public:
    virtual ~MailNotifier() = default;

    /// True from sendNotification() until the server dialogue has ended, however it ended.
    virtual bool isSending() const = 0;
    /// Starts one notification for \a level (1 OK, 2 WARNING, 3 ALARM) with body \a text.
    virtual void sendNotification(int level, const QString &text) = 0;
};
