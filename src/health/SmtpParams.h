#pragma once

#include "settings/AppSettings.h"

#include <QString>

/// Where and how one e-mail goes: the SMTP settings, either the saved ones or the values typed
/// into the preferences dialog for a test.
struct SmtpParams
{
    QString from;     ///< sender address
    QString to;       ///< recipient address
    QString server;   ///< host name or address of the SMTP server
    int port = 2525;
    bool auth = false; ///< log in with AUTH LOGIN
    QString user;
    QString pass;
    int security = SmtpPlain; ///< a SmtpSecurity value

    /// The port to offer when the security changes to \a security: the usual port of that kind of
    /// connection when \a port is the usual port of another kind, else \a port as the user chose it.
    static int portFor(int security, int port)
    {
        const bool usual = port == 25 || port == 465 || port == 587 || port == 2525;
        if (!usual)
            return port;
        if (security == SmtpTls)
            return 465;
        if (port != 465)
            return port;
        return security == SmtpStartTls ? 587 : 2525;
    }

    /// The saved SMTP settings of \a settings.
    static SmtpParams fromSettings(const AppSettings &settings)
    {
        return {settings.SMTP_from, settings.SMTP_to,   settings.SMTP_server, settings.SMTP_port,
                settings.SMTP_auth, settings.SMTP_user, settings.SMTP_pass,   settings.SMTP_security};
    }
};
