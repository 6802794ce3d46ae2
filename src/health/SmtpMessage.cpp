#include "SmtpMessage.h"

#include "settings/LanguageTable.h"

namespace SmtpMessage {

namespace {

QString entry(const QStringList &table, int index)
{
    return table.value(index);
}

} // namespace

QString subject(int level, const QStringList &table)
{
    return entry(table, Lang::Title)
           + QStringLiteral(" [%1 %2]").arg(entry(table, Lang::MailStatus), entry(table, Lang::LevelBase + level));
}

QString testSubject(const QStringList &table)
{
    return entry(table, Lang::Title) + QStringLiteral(" Test");
}

QString compose(const QString &from, const QString &to, const QString &subject, const QString &body)
{
    QString message = QStringLiteral("From: ") + from + QStringLiteral("\nTo: ") + to + QStringLiteral("\nSubject: ")
                      + subject + QStringLiteral("\n\n") + body + QStringLiteral("\n");
    message.replace(QStringLiteral("\n"), QStringLiteral("\r\n"));
    // Only a line that is a lone dot is doubled: that is the one line that would end the data early.
    message.replace(QStringLiteral("\r\n.\r\n"), QStringLiteral("\r\n..\r\n"));
    return message;
}

QString withDegreeWords(QString text)
{
    text.replace(QStringLiteral("\u00b0F"), QStringLiteral(" Farengeit"));
    text.replace(QStringLiteral("\u00b0C"), QStringLiteral(" Celsius"));
    return text;
}

} // namespace SmtpMessage
