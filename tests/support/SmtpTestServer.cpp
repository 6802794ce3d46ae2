#include "SmtpTestServer.h"

#include "TestEnv.h"

#include <QDir>
#include <QFile>
#include <QStandardPaths>

namespace {

// Debian's Python, where its aiosmtpd package lives; another python3 first on PATH may not see it.
const QString Python = QStringLiteral("/usr/bin/python3");

} // namespace

SmtpTestServer::~SmtpTestServer()
{
    if (m_process.state() == QProcess::NotRunning)
        return;
    m_process.closeWriteChannel();
    if (!m_process.waitForFinished(5000))
        m_process.kill();
    m_process.waitForFinished(1000);
}

QString SmtpTestServer::missingTools()
{
    if (QStandardPaths::findExecutable(QStringLiteral("openssl")).isEmpty())
        return QStringLiteral("openssl is not installed");
    if (QProcess::execute(Python, {QStringLiteral("-c"), QStringLiteral("import aiosmtpd")}) != 0)
        return QStringLiteral("python3-aiosmtpd is not installed");
    return QString();
}

bool SmtpTestServer::makeCertificate()
{
    // The address is in the certificate's names, as a client checks it against the host it dialled.
    const QStringList arguments{
        QStringLiteral("req"), QStringLiteral("-x509"), QStringLiteral("-newkey"), QStringLiteral("ec"),
        QStringLiteral("-pkeyopt"), QStringLiteral("ec_paramgen_curve:prime256v1"), QStringLiteral("-nodes"),
        QStringLiteral("-days"), QStringLiteral("1"), QStringLiteral("-subj"), QStringLiteral("/CN=127.0.0.1"),
        QStringLiteral("-addext"), QStringLiteral("subjectAltName=IP:127.0.0.1"), QStringLiteral("-keyout"),
        m_dir.filePath(QStringLiteral("key.pem")), QStringLiteral("-out"), certificateFile()};
    QProcess openssl;
    openssl.setProcessChannelMode(QProcess::ForwardedErrorChannel);
    openssl.start(QStringLiteral("openssl"), arguments);
    return openssl.waitForFinished(30000) && openssl.exitCode() == 0;
}

bool SmtpTestServer::start(Mode mode, const QString &auth)
{
    if (!m_dir.isValid() || !makeCertificate())
        return false;
    QDir(m_dir.path()).mkdir(QStringLiteral("mail"));
    static const char *const modes[] = {"plain", "starttls", "tls"};
    QStringList arguments{TestEnv::sourceDir() + QStringLiteral("/tests/support/smtp_server.py"),
                          QStringLiteral("--dir"), m_dir.filePath(QStringLiteral("mail")),
                          QStringLiteral("--mode"), QString::fromLatin1(modes[mode]),
                          QStringLiteral("--cert"), certificateFile(),
                          QStringLiteral("--key"), m_dir.filePath(QStringLiteral("key.pem"))};
    if (!auth.isEmpty())
        arguments << QStringLiteral("--auth") << auth;
    m_process.start(Python, arguments);
    if (!m_process.waitForStarted(10000))
        return false;
    while (!m_process.canReadLine() && m_process.waitForReadyRead(20000)) {
    }
    const QByteArray line = m_process.readLine().trimmed();
    if (!line.startsWith("PORT "))
        return false;
    m_port = quint16(line.mid(5).toUInt());
    return m_port != 0;
}

QList<QByteArray> SmtpTestServer::messages() const
{
    QList<QByteArray> found;
    for (int number = 1;; ++number) {
        QFile file(m_dir.filePath(QStringLiteral("mail/%1.eml").arg(number)));
        if (!file.open(QIODevice::ReadOnly))
            return found;
        found << file.readAll();
    }
}

QByteArray SmtpTestServer::log()
{
    m_log += m_process.readAllStandardError();
    return m_log;
}
