#include "SmtpClient.h"

#include "SmtpMessage.h"

#include "settings/LanguageTable.h"

#include <QHostInfo>
#include <QMetaEnum>
#include <QSslCertificate>
#include <QSslCipher>
#include <QSslConfiguration>
#include <QSslSocket>

namespace {

// Dialogue states. 0..9 are the plain dialogue; their values are not its order.
enum State {
    Greeting = 0,
    AuthLogin = 1,      // user prompt
    EhloAuth = 2,       // reply to EHLO, AUTH LOGIN next
    Password = 3,       // password prompt
    MailFrom = 4,       // reply to EHLO or to the password
    RcptTo = 5,
    Data = 6,
    Message = 7,
    Quit = 8,
    Done = 9,
    EhloStartTls = 10,  // reply to the first EHLO when STARTTLS follows
    StartTlsReply = 11,
    Handshake = 12,
};

QString socketErrorName(QAbstractSocket::SocketError error)
{
    return QString::fromLatin1(QMetaEnum::fromType<QAbstractSocket::SocketError>().valueToKey(error));
}

QString protocolName(QSsl::SslProtocol protocol)
{
    switch (protocol) {
    case QSsl::TlsV1_3:
        return QStringLiteral("TLS 1.3");
    case QSsl::TlsV1_2:
        return QStringLiteral("TLS 1.2");
    default:
        return QStringLiteral("TLS");
    }
}

// The system's certificate store, plus the certificates SSL_CERT_FILE names, as other programs
// built on OpenSSL honour it: a private mail server's authority can be trusted without root.
QSslConfiguration tlsConfiguration()
{
    QSslConfiguration configuration = QSslConfiguration::defaultConfiguration();
    const QString extra = qEnvironmentVariable("SSL_CERT_FILE");
    if (!extra.isEmpty())
        configuration.addCaCertificates(QSslCertificate::fromPath(extra));
    return configuration;
}

} // namespace

SmtpClient::SmtpClient(QObject *parent)
    : QObject(parent)
    , m_socket(new QSslSocket(this))
{
    m_replyTimer.setSingleShot(true);
    m_replyTimer.setInterval(kReplyTimeoutMs);
    connect(&m_replyTimer, &QTimer::timeout, this, &SmtpClient::replyTimedOut);
    connect(m_socket, &QSslSocket::readyRead, this, &SmtpClient::readyRead);
    connect(m_socket, &QSslSocket::errorOccurred, this, &SmtpClient::displayError);
    connect(m_socket, &QSslSocket::encrypted, this, &SmtpClient::encrypted);
    connect(m_socket, &QSslSocket::sslErrors, this, [this](const QList<QSslError> &errors) { m_sslErrors = errors; });
}

SmtpClient::~SmtpClient()
{
    m_socket->disconnect(this);
    m_socket->abort();
}

void SmtpClient::sendNotification(int level, const QString &text)
{
    const SmtpParams params = SmtpParams::fromSettings(appSettings());
    const QString message = SmtpMessage::compose(params.from, params.to,
                                                 SmtpMessage::subject(level, languageTable()), text);
    start(params, SmtpMessage::withDegreeWords(message), false);
}

void SmtpClient::startTest(const SmtpParams &params)
{
    const QString body = QStringLiteral("Test\nTest");
    start(params, SmtpMessage::compose(params.from, params.to, SmtpMessage::testSubject(languageTable()), body),
          true);
}

void SmtpClient::start(const SmtpParams &params, const QString &message, bool test)
{
    m_inProgress = true;
    m_params = params;
    m_message = message;
    m_test = test;
    m_delivered = false;
    m_sslErrors.clear();
    m_state = Greeting;
    m_socket->abort();
    m_replyTimer.start();
    if (params.security == SmtpPlain) {
        m_socket->connectToHost(params.server, quint16(params.port));
        return;
    }
    if (!QSslSocket::supportsSsl()) {
        fail(QStringLiteral("SMTP error: TLS is not available on this system. Check Your SMTP Settings."),
             QStringLiteral(">> error: TLS is not available on this system"));
        return;
    }
    m_socket->setSslConfiguration(tlsConfiguration());
    if (params.security == SmtpTls)
        m_socket->connectToHostEncrypted(params.server, quint16(params.port));
    else
        m_socket->connectToHost(params.server, quint16(params.port));
}

void SmtpClient::encrypted()
{
    if (m_test) {
        const QSslCipher cipher = m_socket->sessionCipher();
        emit transcriptLine(QStringLiteral("-- %1, %2").arg(protocolName(m_socket->sessionProtocol()), cipher.name()));
    }
    // After STARTTLS the server forgets what it said before the handshake: greet it again.
    if (m_state == Handshake) {
        m_replyTimer.start();
        sendEhlo();
    }
}

bool SmtpClient::takeReply(QString &code)
{
    // A reply of several lines counts once its last line is in; a server that writes each line
    // on its own is read the same as one that sends the reply whole.
    while (m_socket->canReadLine()) {
        QString line = QString::fromUtf8(m_socket->readLine());
        while (line.endsWith(QLatin1Char('\n')) || line.endsWith(QLatin1Char('\r')))
            line.chop(1);
        if (m_test)
            emit transcriptLine(QStringLiteral(">> %1").arg(line));
        if (line.size() < 4 || line.at(3) != QLatin1Char('-')) {
            code = line.left(3);
            return true;
        }
    }
    return false;
}

void SmtpClient::readyRead()
{
    QString code;
    while (m_inProgress && takeReply(code)) {
        m_replyTimer.start();
        step(code);
    }
}

void SmtpClient::step(const QString &code)
{
    if (m_state == Done) {
        // Whatever the server says to QUIT, the message is with it.
        pass();
        return;
    }
    const bool prompt = m_state == AuthLogin || m_state == Password || m_state == Message;
    if (m_state == Handshake || !code.startsWith(QLatin1Char(prompt ? '3' : '2'))) {
        unexpectedReply();
        return;
    }
    if (m_state == Greeting) {
        sendEhlo();
        return;
    }
    if (m_state == StartTlsReply) {
        m_state = Handshake;
        m_socket->startClientEncryption();
        return;
    }
    if (m_state == Quit)
        m_delivered = true;
    const NextCommand next = nextCommand();
    if (next.state < 0) {
        unexpectedReply();
        return;
    }
    send(next.wire, next.shown);
    m_state = next.state;
}

SmtpClient::NextCommand SmtpClient::nextCommand() const
{
    auto line = [](const QString &command, int state) {
        return NextCommand{command + QStringLiteral("\r\n"), command, state};
    };
    auto base64 = [](const QString &text) { return QString::fromLatin1(text.toLatin1().toBase64()); };
    switch (m_state) {
    case EhloStartTls:
        return line(QStringLiteral("STARTTLS"), StartTlsReply);
    case EhloAuth:
        return line(QStringLiteral("AUTH LOGIN"), AuthLogin);
    case AuthLogin:
        return line(base64(m_params.user), Password);
    case Password:
        return line(base64(m_params.pass), MailFrom);
    case MailFrom:
        return line(QStringLiteral("MAIL FROM: <%1>").arg(m_params.from), RcptTo);
    case RcptTo:
        return line(QStringLiteral("RCPT TO: <%1>").arg(m_params.to), Data);
    case Data:
        return line(QStringLiteral("DATA"), Message);
    case Message:
        // The message ends with CR LF, so this dot completes the end-of-data line.
        return NextCommand{m_message + QStringLiteral(".\r\n"), m_message, Quit};
    case Quit:
        return line(QStringLiteral("QUIT"), Done);
    default:
        return NextCommand{};
    }
}

void SmtpClient::sendEhlo()
{
    const QString command = QStringLiteral("EHLO %1").arg(QHostInfo::localHostName());
    send(command + QStringLiteral("\r\n"), command);
    if (m_params.security == SmtpStartTls && !m_socket->isEncrypted())
        m_state = EhloStartTls;
    else
        m_state = m_params.auth ? EhloAuth : MailFrom;
}

void SmtpClient::send(const QString &command, const QString &shown)
{
    if (m_test)
        emit transcriptLine(QStringLiteral("<< %1").arg(shown));
    m_socket->write(command.toUtf8());
}

void SmtpClient::unexpectedReply()
{
    fail(QStringLiteral("SMTP error: Unexpected reply from SMTP server."),
         QStringLiteral("Unexpected reply from SMTP server."));
}

void SmtpClient::displayError(QAbstractSocket::SocketError socketError)
{
    if (!m_inProgress)
        return;
    if (m_delivered) {
        // Gone before saying goodbye, but after taking the message.
        pass();
        return;
    }
    QString reason;
    switch (socketError) {
    case QAbstractSocket::ConnectionRefusedError:
    case QAbstractSocket::RemoteHostClosedError:
    case QAbstractSocket::HostNotFoundError:
        reason = socketErrorName(socketError);
        break;
    case QAbstractSocket::SslHandshakeFailedError: {
        // Say why the server was not trusted; the attempt ends here, nothing is accepted silently.
        QStringList why;
        for (const QSslError &error : std::as_const(m_sslErrors))
            why << error.errorString();
        reason = socketErrorName(socketError) + QStringLiteral(": ")
                 + (why.isEmpty() ? m_socket->errorString() : why.join(QStringLiteral("; ")));
        break;
    }
    default:
        reason = m_socket->errorString();
        break;
    }
    fail(QStringLiteral("SMTP error: %1. Check Your SMTP Settings.").arg(reason),
         QStringLiteral(">> error: %1").arg(reason));
}

void SmtpClient::replyTimedOut()
{
    if (!m_inProgress)
        return;
    if (m_delivered) {
        // The server took the message and only the goodbye is missing.
        pass();
        return;
    }
    const int seconds = m_replyTimer.interval() / 1000;
    const QString wait = seconds > 0 ? QStringLiteral("%1 seconds").arg(seconds)
                                     : QStringLiteral("%1 ms").arg(m_replyTimer.interval());
    fail(QStringLiteral("SMTP error: No reply from SMTP server within %1. Check Your SMTP Settings.").arg(wait),
         QStringLiteral(">> error: no reply within %1").arg(wait));
}

void SmtpClient::pass()
{
    m_socket->abort();
    if (m_test)
        emit transcriptLine(QStringLiteral("Test passed."));
    end(true);
}

void SmtpClient::fail(const QString &eventText, const QString &testText)
{
    m_socket->abort();
    if (m_test)
        emit transcriptLine(testText);
    else
        emit failed(EventLine{EventLineKind::MailError, eventText});
    end(false);
}

void SmtpClient::end(bool delivered)
{
    m_replyTimer.stop();
    m_inProgress = false;
    m_state = Done;
    emit finished(delivered);
}
