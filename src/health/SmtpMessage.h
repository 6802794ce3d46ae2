#pragma once

#include <QString>
#include <QStringList>

/// The text of the messages the e-mail client sends: headers, body, line ends and the dot rule.
namespace SmtpMessage {

/// "Korvane [Health status: WARNING]" for \a level 1..3, from the language table \a table.
QString subject(int level, const QStringList &table);
/// The subject of the preferences dialog's test message: the caption and " Test".
QString testSubject(const QStringList &table);
/// From, To and Subject headers, an empty line and \a body, with CR LF line ends and a line that
/// holds a single dot doubled.
QString compose(const QString &from, const QString &to, const QString &subject, const QString &body);
/// \a text with "°F" and "°C" spelt out, for mail readers that would garble the degree sign.
QString withDegreeWords(QString text);

} // namespace SmtpMessage
