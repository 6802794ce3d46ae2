#pragma once

#include "health/SmtpParams.h"

#include <QWidget>

#include <functional>

class QPlainTextEdit;
class QPushButton;
class SmtpClient;

/// The SMTP test of the preferences: a button that sends a test message through the values the
/// dialog holds now, the transcript of that dialogue, and a button to read about SMTP relays.
class SmtpTestPanel : public QWidget
{
    Q_OBJECT
public:
    /// Reads the server values from \a params when the test starts.
    explicit SmtpTestPanel(std::function<SmtpParams()> params, QWidget *parent = nullptr);

    /// The client the test talks through (tests shorten its reply timeout).
    SmtpClient &client() const { return *m_client; }
    /// Sets the texts of the language in force.
    void retranslate();

signals:
    /// A test has begun: the dialog waits for it.
    void testStarted();
    /// The test is over; \a passed when the server took the message.
    void testFinished(bool passed);

private:
    void startTest();

    std::function<SmtpParams()> m_params;
    SmtpClient *m_client = nullptr;
    QPushButton *m_test = nullptr;
    QPushButton *m_relay = nullptr;
    QPlainTextEdit *m_transcript = nullptr;
};
