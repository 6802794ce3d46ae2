#include "PreferencesCheck.h"

#include "LanguageTable.h"
#include "SettingsFile.h"

#include <QHash>
#include <QRegularExpression>

namespace {

// The label the dialog shows for a key, without its trailing colon.
QString fieldLabel(const QString &key)
{
    static const QHash<QString, int> labels = {
        {QStringLiteral("poll_time"), Lang::CheckSmartEvery},
        {QStringLiteral("poll_period"), Lang::CheckSmartEvery},
        {QStringLiteral("time_check_space"), Lang::CheckSpaceEvery},
        {QStringLiteral("period_check_space"), Lang::CheckSpaceEvery},
        {QStringLiteral("show_temp"), Lang::ShowTrayTemperature},
        {QStringLiteral("temp_celsius"), Lang::ShowTemperatureIn},
        {QStringLiteral("disk_temp_show"), Lang::DiskLabel},
        {QStringLiteral("StyleType"), Lang::StyleLabel},
        {QStringLiteral("color_N"), Lang::ColourNormal},
        {QStringLiteral("color_W"), Lang::ColourWarning},
        {QStringLiteral("color_C"), Lang::ColourCritical},
        {QStringLiteral("SMTP_from"), Lang::SmtpFrom},
        {QStringLiteral("SMTP_to"), Lang::SmtpTo},
        {QStringLiteral("SMTP_server"), Lang::SmtpServer},
        {QStringLiteral("SMTP_port"), Lang::SmtpPort},
        {QStringLiteral("SMTP_user"), Lang::SmtpUser},
        {QStringLiteral("SMTP_pass"), Lang::SmtpPassword},
        {QStringLiteral("SMTP_auth"), Lang::SmtpAuth},
        {QStringLiteral("SMTP_security"), Lang::SmtpSecurityLabel},
        {QStringLiteral("pop_notif_enable"), Lang::PopupNotifications},
        {QStringLiteral("eml_notif_enable"), Lang::EmailNotifications},
        {QStringLiteral("startup"), Lang::StartAtLogon},
        {QStringLiteral("extWarnTask"), Lang::OnWarning},
        {QStringLiteral("extCritTask"), Lang::OnAlarm},
    };
    QString label = languageText(labels.value(key, -1));
    if (label.isEmpty())
        return key;
    while (label.endsWith(QLatin1Char(':')))
        label.chop(1);
    return label.trimmed();
}

// Why a text does not come back: the first cause found, or nothing when it is none of these.
QString reasonFor(const QString &value)
{
    for (const QChar c : value) {
        if (c.unicode() < 0x20 || c.unicode() > 0x7e)
            return languageText(Lang::ReasonAscii);
    }
    static const QStringList keys = SettingsFile::keyTexts();
    for (const QString &key : keys) {
        if (value.contains(key))
            return languageText(Lang::ReasonKeyText).arg(key);
    }
    static const QRegularExpression placeholder(QStringLiteral("%\\d+"));
    if (const auto match = placeholder.match(value); match.hasMatch())
        return languageText(Lang::ReasonPlaceholder).arg(match.captured());
    return QString();
}

} // namespace

namespace PreferencesCheck {

bool temperaturesValid(int warn, int crit)
{
    return warn >= 30 && warn <= 80 && crit <= 100 && crit > warn && crit >= 31;
}

QList<PreferencesProblem> problems(const AppSettings &wanted)
{
    QList<PreferencesProblem> found;
    if (!temperaturesValid(wanted.warn_temp, wanted.crit_temp))
        found.append({QStringLiteral("warn_temp"), languageText(Lang::TemperatureRule)});

    // A text holding a key, a placeholder or a character the file cannot carry is named with what
    // to change, also when it is another value that it spoils.
    const auto expected = SettingsFile::fieldValues(wanted);
    bool causeFound = false;
    for (const auto &[key, value] : expected) {
        if (const QString reason = reasonFor(value); !reason.isEmpty()) {
            found.append({key, languageText(Lang::FieldRefused).arg(fieldLabel(key)) + QLatin1Char(' ') + reason});
            causeFound = true;
        }
    }
    if (causeFound)
        return found;

    // Anything else that would not come back: read it back as the next start does, onto the defaults.
    AppSettings readBack;
    QList<DiskSettings> ignored;
    SettingsFile::parse(SettingsFile::render(wanted, {}), readBack, ignored);
    const auto actual = SettingsFile::fieldValues(readBack);
    for (qsizetype i = 0; i < expected.size(); ++i) {
        const QString &key = expected.at(i).first;
        const bool paired = key == QLatin1String("warn_temp") || key == QLatin1String("crit_temp");
        if (!paired && key != QLatin1String("LanguageType") && expected.at(i).second != actual.at(i).second)
            found.append({key, languageText(Lang::FieldRefused).arg(fieldLabel(key))});
    }
    return found;
}

} // namespace PreferencesCheck
