#include "health/SmtpClient.h"
#include "settings/AppSettings.h"
#include "settings/LanguageTable.h"

#include "SmtpTestServer.h"

#include <QHostInfo>
#include <QSignalSpy>
#include <QTcpServer>
#include <QTcpSocket>
#include <QtTest>

namespace {

const QString Sender = QStringLiteral("kv@example.org");
const QString Recipient = QStringLiteral("admin@example.org");

// A server that answers from a script, shaping replies and packets as real servers rarely do.
class ScriptedServer : public QObject
{
public:
    QByteArray greeting = "220 ready\r\n";
    QByteArray ehloReply = "250-hello\r\n250 8BITMIME\r\n";
    int splitEhloAt = -1;   ///< send the EHLO reply in two packets, 50 ms apart, cut here
    QByteArray hangUpAfter; ///< close the connection when a command starts with this
    QByteArray received;    ///< every byte the client sent

    quint16 listen()
    {
        connect(&m_server, &QTcpServer::newConnection, this, [this] {
            m_client = m_server.nextPendingConnection();
            connect(m_client, &QTcpSocket::readyRead, this, [this] { answer(); });
            m_client->write(greeting);
        });
        m_server.listen(QHostAddress::LocalHost);
        return m_server.serverPort();
    }

private:
    void answer()
    {
        const QByteArray bytes = m_client->readAll();
        received += bytes;
        m_pending += bytes;
        if (m_inData) {
            if (!m_pending.endsWith("\r\n.\r\n"))
                return;
            m_inData = false;
            m_pending.clear();
            m_client->write("250 queued\r\n");
            return;
        }
        while (m_pending.contains("\r\n")) {
            const QByteArray line = m_pending.left(m_pending.indexOf("\r\n"));
            m_pending.remove(0, line.size() + 2);
            if (!hangUpAfter.isEmpty() && line.startsWith(hangUpAfter)) {
                m_client->disconnectFromHost();
                return;
            }
            reply(line);
        }
    }

    void reply(const QByteArray &line)
    {
        if (line.startsWith("EHLO") && splitEhloAt >= 0) {
            m_client->write(ehloReply.left(splitEhloAt));
            m_client->flush();
            QTimer::singleShot(50, m_client, [this] { m_client->write(ehloReply.mid(splitEhloAt)); });
        } else if (line.startsWith("EHLO")) {
            m_client->write(ehloReply);
        } else if (line.startsWith("DATA")) {
            m_inData = true;
            m_client->write("354 go ahead\r\n");
        } else if (line.startsWith("QUIT")) {
            m_client->write("221 bye\r\n");
        } else {
            m_client->write("250 ok\r\n");
        }
    }

    QTcpServer m_server;
    QTcpSocket *m_client = nullptr;
    QByteArray m_pending;
    bool m_inData = false;
};

void setServer(quint16 port, int security = SmtpPlain, const QString &login = QString())
{
    AppSettings &s = appSettings();
    s.SMTP_from = Sender;
    s.SMTP_to = Recipient;
    s.SMTP_server = QStringLiteral("127.0.0.1");
    s.SMTP_port = port;
    s.SMTP_security = security;
    s.SMTP_auth = !login.isEmpty();
    s.SMTP_user = login.section(QLatin1Char(':'), 0, 0);
    s.SMTP_pass = login.section(QLatin1Char(':'), 1);
}

// The texts of the failure lines a client reported.
QStringList failures(const QSignalSpy &spy)
{
    QStringList texts;
    for (const QList<QVariant> &signal : spy) {
        const auto line = signal.at(0).value<EventLine>();
        texts << (line.kind == EventLineKind::MailError ? line.text : QStringLiteral("wrong kind: ") + line.text);
    }
    return texts;
}

} // namespace

class TestSmtpClient : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase()
    {
        QVERIFY(loadLanguage(LanguageTable::English));
        m_missing = SmtpTestServer::missingTools();
    }

    void init()
    {
        qunsetenv("SSL_CERT_FILE");
        appSettings() = AppSettings();
    }

    // What reaches the recipient, in every kind of connection, with and without a login: the
    // headers, CR LF line ends, the lone dot kept, the degree signs spelt out.
    void deliversTheMessage_data()
    {
        QTest::addColumn<int>("mode");
        QTest::addColumn<QString>("login");
        QTest::newRow("plain") << int(SmtpTestServer::Plain) << QString();
        QTest::newRow("plain, login") << int(SmtpTestServer::Plain) << QStringLiteral("kv:s3cret");
        QTest::newRow("STARTTLS") << int(SmtpTestServer::StartTls) << QString();
        QTest::newRow("STARTTLS, login") << int(SmtpTestServer::StartTls) << QStringLiteral("kv:s3cret");
        QTest::newRow("TLS, login") << int(SmtpTestServer::Tls) << QStringLiteral("kv:s3cret");
    }
    void deliversTheMessage()
    {
        QFETCH(int, mode);
        QFETCH(QString, login);
        if (!m_missing.isEmpty())
            QSKIP(qPrintable(m_missing));
        SmtpTestServer server;
        QVERIFY2(server.start(SmtpTestServer::Mode(mode), login), server.log());
        qputenv("SSL_CERT_FILE", server.certificateFile().toLocal8Bit());
        setServer(server.port(), mode, login);

        SmtpClient client;
        QSignalSpy failed(&client, &SmtpClient::failed);
        QSignalSpy finished(&client, &SmtpClient::finished);
        client.sendNotification(2, QString::fromUtf8("Disk 0: 56\u00b0C\n.\n131\u00b0F"));
        QVERIFY(client.isSending());
        QTRY_VERIFY_WITH_TIMEOUT(!client.isSending(), 20000);
        QCOMPARE(failures(failed), QStringList());
        QCOMPARE(finished.size(), 1);
        QCOMPARE(finished.first().at(0).toBool(), true);
        QCOMPARE(server.messages(), QList<QByteArray>{"From: kv@example.org\r\nTo: admin@example.org\r\n"
                                                      "Subject: Korvane [Health status: WARNING]\r\n\r\n"
                                                      "Disk 0: 56 Celsius\r\n.\r\n131 Farengeit\r\n"});
    }

    // One line for each way a dialogue with a real server fails, and the client is free again.
    void failuresEndWithOneLine_data()
    {
        QTest::addColumn<int>("mode");
        QTest::addColumn<bool>("trusted");
        QTest::addColumn<QString>("login");
        QTest::addColumn<QString>("expected");
        const QString unexpected = QStringLiteral("SMTP error: Unexpected reply from SMTP server.");
        QTest::newRow("password refused") << int(SmtpTestServer::Plain) << true << QStringLiteral("kv:wrong")
                                          << unexpected;
        QTest::newRow("login missing") << int(SmtpTestServer::Plain) << true << QString() << unexpected;
        const QString untrusted = QStringLiteral("SMTP error: SslHandshakeFailedError: The certificate is "
                                                 "self-signed, and untrusted. Check Your SMTP Settings.");
        QTest::newRow("STARTTLS, untrusted") << int(SmtpTestServer::StartTls) << false << QString() << untrusted;
        QTest::newRow("TLS, untrusted") << int(SmtpTestServer::Tls) << false << QString() << untrusted;
        QTest::newRow("TLS spoken to a plain server")
            << int(SmtpTestServer::Plain) << true << QStringLiteral("tls") << QString();
    }
    void failuresEndWithOneLine()
    {
        QFETCH(int, mode);
        QFETCH(bool, trusted);
        QFETCH(QString, login);
        QFETCH(QString, expected);
        if (!m_missing.isEmpty())
            QSKIP(qPrintable(m_missing));
        SmtpTestServer server;
        QVERIFY2(server.start(SmtpTestServer::Mode(mode), QStringLiteral("kv:s3cret")), server.log());
        if (trusted)
            qputenv("SSL_CERT_FILE", server.certificateFile().toLocal8Bit());
        if (login == QLatin1String("tls"))
            setServer(server.port(), SmtpTls, QStringLiteral("kv:s3cret"));
        else
            setServer(server.port(), mode, login);

        SmtpClient client;
        client.setReplyTimeoutMs(5000);
        QSignalSpy failed(&client, &SmtpClient::failed);
        client.sendNotification(3, QStringLiteral("Disk 0 failing"));
        QTRY_VERIFY_WITH_TIMEOUT(!client.isSending(), 20000);
        QCOMPARE(failed.size(), 1);
        if (!expected.isEmpty())
            QCOMPARE(failures(failed).first(), expected);
        QVERIFY(failures(failed).first().startsWith(QLatin1String("SMTP error: ")));
        QCOMPARE(server.messages(), QList<QByteArray>());

        // Nothing is stuck: the next notification goes out once the settings are right.
        qputenv("SSL_CERT_FILE", server.certificateFile().toLocal8Bit());
        setServer(server.port(), mode, QStringLiteral("kv:s3cret"));
        client.sendNotification(1, QStringLiteral("All is OK."));
        QTRY_VERIFY_WITH_TIMEOUT(!client.isSending(), 20000);
        QCOMPARE(failed.size(), 1);
        QCOMPARE(server.messages().size(), 1);
    }

    void refusedConnection()
    {
        QTcpServer probe;
        QVERIFY(probe.listen(QHostAddress::LocalHost));
        const quint16 port = probe.serverPort();
        probe.close();
        setServer(port);
        SmtpClient client;
        QSignalSpy failed(&client, &SmtpClient::failed);
        client.sendNotification(2, QStringLiteral("x"));
        QTRY_VERIFY(!client.isSending());
        QCOMPARE(failures(failed),
                 QStringList{QStringLiteral("SMTP error: ConnectionRefusedError. Check Your SMTP Settings.")});
    }

    // Replies and packets shaped as real servers rarely shape them, and servers that go away.
    void scriptedServers_data()
    {
        QTest::addColumn<QByteArray>("greeting");
        QTest::addColumn<int>("splitEhloAt");
        QTest::addColumn<QByteArray>("hangUpAfter");
        QTest::addColumn<QString>("expected");
        QTest::newRow("two-line greeting in one packet") << QByteArray("220-first\r\n220 second\r\n") << -1
                                                         << QByteArray() << QString();
        QTest::newRow("EHLO reply cut after a continuation line") << QByteArray("220 hi\r\n") << 11 << QByteArray()
                                                                  << QString();
        QTest::newRow("EHLO reply cut inside a line") << QByteArray("220 hi\r\n") << 15 << QByteArray() << QString();
        QTest::newRow("closes after MAIL FROM")
            << QByteArray("220 hi\r\n") << -1 << QByteArray("MAIL")
            << QStringLiteral("SMTP error: RemoteHostClosedError. Check Your SMTP Settings.");
        QTest::newRow("never greets") << QByteArray() << -1 << QByteArray()
                                      << QStringLiteral("SMTP error: No reply from SMTP server within 300 ms. "
                                                        "Check Your SMTP Settings.");
    }
    void scriptedServers()
    {
        QFETCH(QByteArray, greeting);
        QFETCH(int, splitEhloAt);
        QFETCH(QByteArray, hangUpAfter);
        QFETCH(QString, expected);
        ScriptedServer server;
        server.greeting = greeting;
        server.splitEhloAt = splitEhloAt;
        server.hangUpAfter = hangUpAfter;
        setServer(server.listen());
        SmtpClient client;
        client.setReplyTimeoutMs(300);
        QSignalSpy failed(&client, &SmtpClient::failed);
        client.sendNotification(2, QStringLiteral("line\n.\n.hidden\n..two"));
        QTRY_VERIFY(!client.isSending());
        QCOMPARE(failures(failed), expected.isEmpty() ? QStringList() : QStringList{expected});
        if (!expected.isEmpty())
            return;
        // The exact dialogue: only a lone dot is doubled, other lines go as they are.
        const QByteArray host = QHostInfo::localHostName().toUtf8();
        QCOMPARE(server.received, "EHLO " + host + "\r\nMAIL FROM: <kv@example.org>\r\nRCPT TO: <admin@example.org>\r\n"
                                  "DATA\r\nFrom: kv@example.org\r\nTo: admin@example.org\r\n"
                                  "Subject: Korvane [Health status: WARNING]\r\n\r\n"
                                  "line\r\n..\r\n.hidden\r\n..two\r\n.\r\nQUIT\r\n");
    }

    // The preferences' test: every command and reply in the transcript, the encryption named.
    void testTranscript_data()
    {
        QTest::addColumn<int>("mode");
        QTest::addColumn<QStringList>("commands");
        const QString ehlo = QStringLiteral("<< EHLO ") + QHostInfo::localHostName();
        const QStringList login{QStringLiteral("<< AUTH LOGIN"), QStringLiteral("<< a3Y="), QStringLiteral("<< czNjcmV0")};
        const QStringList rest{QStringLiteral("<< MAIL FROM: <kv@example.org>"),
                               QStringLiteral("<< RCPT TO: <admin@example.org>"), QStringLiteral("<< DATA"),
                               QStringLiteral("<< From: kv@example.org\r\nTo: admin@example.org\r\n"
                                              "Subject: Korvane Test\r\n\r\nTest\r\nTest\r\n"),
                               QStringLiteral("<< QUIT")};
        QTest::newRow("plain") << int(SmtpTestServer::Plain) << (QStringList{ehlo} + login + rest);
        QTest::newRow("STARTTLS") << int(SmtpTestServer::StartTls)
                                  << (QStringList{ehlo, QStringLiteral("<< STARTTLS"), QStringLiteral("-- TLS 1.3"),
                                                  ehlo} + login + rest);
        QTest::newRow("TLS") << int(SmtpTestServer::Tls) << (QStringList{QStringLiteral("-- TLS 1.3"), ehlo} + login + rest);
    }
    void testTranscript()
    {
        QFETCH(int, mode);
        QFETCH(QStringList, commands);
        if (!m_missing.isEmpty())
            QSKIP(qPrintable(m_missing));
        SmtpTestServer server;
        QVERIFY2(server.start(SmtpTestServer::Mode(mode), QStringLiteral("kv:s3cret")), server.log());
        qputenv("SSL_CERT_FILE", server.certificateFile().toLocal8Bit());
        SmtpClient client;
        QSignalSpy lines(&client, &SmtpClient::transcriptLine);
        client.startTest({Sender, Recipient, QStringLiteral("127.0.0.1"), server.port(), true, QStringLiteral("kv"),
                          QStringLiteral("s3cret"), mode});
        QTRY_VERIFY_WITH_TIMEOUT(!client.isSending(), 20000);
        QStringList sent;
        for (const QList<QVariant> &line : lines) {
            const QString text = line.at(0).toString();
            // The cipher after the version depends on the OpenSSL build.
            if (!text.startsWith(QLatin1String(">> ")))
                sent << (text.startsWith(QLatin1String("-- ")) ? text.section(QLatin1Char(','), 0, 0) : text);
        }
        QCOMPARE(sent, commands + QStringList{QStringLiteral("Test passed.")});
        QVERIFY(lines.first().at(0).toString().startsWith(QLatin1String(mode == SmtpTestServer::Tls ? "-- " : ">> 220")));
        QCOMPARE(server.messages().size(), 1);
    }

private:
    QString m_missing;
};

QTEST_GUILESS_MAIN(TestSmtpClient)
#include "tst_smtpclient.moc"
