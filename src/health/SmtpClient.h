#pragma once

#include "EventLine.h"
#include "MailNotifier.h"
#include "SmtpParams.h"

#include <QAbstractSocket>
#include <QList>
#include <QObject>
#include <QSslError>
#include <QString>
#include <QTimer>

class QSslSocket;

/// The e-mail client: a minimal SMTP dialogue driven by the server's replies, plain, after
/// STARTTLS, or over TLS from the first byte. One message at a time; every way a dialogue can
/// fail ends it with one line (failed() for a notification, transcriptLine() for a test), and a
/// server that stops answering ends it after the reply timeout.
///
/// Lives on the thread that owns it (the GUI thread, or korvanectl's main thread).
class SmtpClient : public QObject, public MailNotifier
{
    Q_OBJECT
public:
    /// How long the client waits for a server reply before it gives up.
    static constexpr int kReplyTimeoutMs = 60000;

    /// An idle client.
    explicit SmtpClient(QObject *parent = nullptr);
    /// Drops a dialogue in progress without a word.
    ~SmtpClient() override;

    /// True from the start of a dialogue until it has ended, however it ended.
    bool isSending() const override { return m_inProgress; }
    /// Mails the notification for \a level (1 OK, 2 WARNING, 3 ALARM) with body \a text through the saved settings.
    void sendNotification(int level, const QString &text) override;
    /// Sends the test message through \a params, reporting every line of the dialogue by transcriptLine().
    void startTest(const SmtpParams &params);
    /// Waits \a ms for each reply instead of kReplyTimeoutMs (tests).
    void setReplyTimeoutMs(int ms) { m_replyTimer.setInterval(ms); }

signals:
    /// A notification could not be sent: a line of the mail-error kind for the Events Log.
    void failed(const EventLine &line);
    /// A line of the test transcript: ">> " replies, "<< " commands, "-- " connection facts, the verdict.
    void transcriptLine(const QString &line);
    /// The dialogue is over; \a delivered when the server took the message.
    void finished(bool delivered);

private slots:
    void readyRead();
    void displayError(QAbstractSocket::SocketError socketError);
    void encrypted();
    void replyTimedOut();

private:
    struct NextCommand
    {
        QString wire;   ///< the bytes to send, line end included
        QString shown;  ///< the same for the transcript
        int state = -1; ///< the state that waits for its reply; -1: none
    };

    void start(const SmtpParams &params, const QString &message, bool test);
    bool takeReply(QString &code);
    void step(const QString &code);
    NextCommand nextCommand() const;
    void sendEhlo();
    void send(const QString &command, const QString &shown);
    void unexpectedReply();
    void pass();
    void fail(const QString &eventText, const QString &testText);
    void end(bool delivered);

    QSslSocket *m_socket = nullptr;
    QTimer m_replyTimer;
    SmtpParams m_params;
    QString m_message;
    QList<QSslError> m_sslErrors;
    int m_state = 9;
    bool m_inProgress = false;
    bool m_test = false;
    bool m_delivered = false; ///< the server took the message; only the goodbye is left
};
