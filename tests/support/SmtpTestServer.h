#pragma once

#include <QByteArray>
#include <QList>
#include <QProcess>
#include <QString>
#include <QTemporaryDir>

/// A real SMTP server (aiosmtpd) on 127.0.0.1, run by the test that owns this object and stopped
/// with it, that keeps every message it accepts.
class SmtpTestServer
{
public:
    /// How the server expects to be talked to.
    enum Mode { Plain, StartTls, Tls };

    /// Stops the server.
    ~SmtpTestServer();

    /// Why the server cannot run here (Python's aiosmtpd or openssl missing), or empty when it can.
    static QString missingTools();
    /// Starts the server; \a auth "USER:PASSWORD" makes it require that login. False when it did not come up.
    bool start(Mode mode, const QString &auth = QString());
    /// The port it listens on.
    quint16 port() const { return m_port; }
    /// The PEM file of its certificate: a throwaway authority for 127.0.0.1 (SSL_CERT_FILE trusts it).
    QString certificateFile() const { return m_dir.filePath(QStringLiteral("cert.pem")); }
    /// The data of every accepted message, in order of arrival, dots unstuffed.
    QList<QByteArray> messages() const;
    /// What the server printed on stderr so far (for failure messages).
    QByteArray log();

private:
    bool makeCertificate();

    QTemporaryDir m_dir;
    QProcess m_process;
    QByteArray m_log;
    quint16 m_port = 0;
};
