#include "LanguageTable.h"

#include <QFile>
#include <QStringConverter>
#include <QTextStream>

namespace {

QStringList &table()
{
    static QStringList entries;
    return entries;
}

} // namespace

// The texts are compiled into this static library; make sure their registration is linked in and
// has run before the first lookup, whatever the executable's link order did with it. (Outside any
// namespace: the registration function is a global symbol.)
static void ensureResources()
{
    static const bool initialised = [] {
        Q_INIT_RESOURCE(languages);
        return true;
    }();
    Q_UNUSED(initialised);
}

QString LanguageTable::resourcePath(int languageIndex)
{
    switch (languageIndex) {
    case Russian:
        return QStringLiteral(":/new/prefix1/images/headers.ru");
    case German:
        return QStringLiteral(":/new/prefix1/images/headers.de");
    default:
        return QStringLiteral(":/new/prefix1/images/headers.en");
    }
}

bool LanguageTable::loadLanguage(int languageIndex)
{
    ensureResources();
    return loadFile(resourcePath(languageIndex));
}

bool LanguageTable::loadFile(const QString &path)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return false;
    QTextStream stream(&file);
    stream.setEncoding(QStringConverter::Utf8);
    stream.setAutoDetectUnicode(false);
    QStringList lines;
    while (!stream.atEnd())
        lines.append(stream.readLine());
    // Only the line count is checked: a shorter file would leave indexes the program uses unfilled.
    if (lines.size() < MinimumLines)
        return false;
    table() = lines;
    return true;
}

LanguageTable::StartupResult LanguageTable::loadAtStartup(int languageIndex)
{
    if (loadLanguage(languageIndex))
        return StartupResult::Loaded;
    if (loadLanguage(English))
        return StartupResult::LoadedDefault;
    return StartupResult::Failed;
}

QString LanguageTable::startupMessage(StartupResult result)
{
    switch (result) {
    case StartupResult::Loaded:
        break;
    case StartupResult::LoadedDefault:
        return QStringLiteral("Invalid or corrupt the language file.\nDefault lanuage file will be loaded");
    case StartupResult::Failed:
        return QStringLiteral("Invalid or corrupt the language file.\nThe Application will close.");
    }
    return QString();
}

const QStringList &LanguageTable::entries()
{
    return table();
}

QString LanguageTable::text(int entry)
{
    return table().value(entry);
}

const QStringList &languageTable()
{
    return LanguageTable::entries();
}

bool loadLanguage(int languageIndex)
{
    return LanguageTable::loadLanguage(languageIndex);
}

QString languageText(int entry)
{
    return LanguageTable::text(entry);
}
