#include "PreferencesApply.h"

#include "Autostart.h"
#include "LanguageTable.h"
#include "SettingsStore.h"

#include <QDir>
#include <QFileInfo>

namespace {

// Where the start at logon is registered, as the user can look it up.
QString autostartPlace(bool folder)
{
#ifdef Q_OS_WIN
    Q_UNUSED(folder);
    return QStringLiteral("HKEY_LOCAL_MACHINE\\software\\Microsoft\\Windows\\CurrentVersion\\Run");
#else
    const QString entry = Autostart::entryPath();
    return QDir::toNativeSeparators(folder ? QFileInfo(entry).path() : entry);
#endif
}

} // namespace

namespace PreferencesApply {

QString autostartFailure(int code)
{
    switch (code) {
    case Autostart::Done:
        return QString();
    case Autostart::FolderUnavailable:
        return languageText(Lang::AutostartFolderFailed).arg(autostartPlace(true));
    case Autostart::WriteFailed:
        return languageText(Lang::AutostartWriteFailed).arg(autostartPlace(false));
    default:
        return languageText(Lang::AutostartRemoveFailed).arg(autostartPlace(false));
    }
}

PreferencesOutcome apply(AppSettings wanted, const QList<DiskRecord> &disks, const AutostartFunction &autostart)
{
    PreferencesOutcome outcome;
    outcome.refused = PreferencesCheck::problems(wanted);
    if (!outcome.refused.isEmpty())
        return outcome;

    SettingsStore &store = SettingsStore::instance();
    const AppSettings &held = appSettings();
    // The language first, so that whatever is said next is said in it.
    if (wanted.LanguageType != held.LanguageType && !store.setLanguage(wanted.LanguageType))
        outcome.warnings << languageText(Lang::LanguageLoadFailed) + QLatin1Char('\n')
                                + languageText(Lang::LanguageKept);
    // Only a registration that worked may be remembered as done.
    if (wanted.startup != held.startup) {
        const int code = autostart(wanted.startup);
        if (code != Autostart::Done) {
            wanted.startup = held.startup;
            outcome.warnings << autostartFailure(code);
        }
    }
    store.apply(wanted);
    outcome.applied = true;
    if (!store.save(disks))
        outcome.warnings << languageText(Lang::SettingsNotSaved)
                                .arg(QDir::toNativeSeparators(store.settingsFilePath()));
    return outcome;
}

PreferencesOutcome apply(const AppSettings &wanted, const QList<DiskRecord> &disks)
{
    return apply(wanted, disks, [](bool enable) { return Autostart::setAutostart(enable); });
}

} // namespace PreferencesApply
