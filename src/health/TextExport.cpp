#include "TextExport.h"

#include "device/WholeFile.h"
#include "settings/LanguageTable.h"

namespace TextExport {

FileChoice fileChoice(Kind kind)
{
    if (kind == Kind::EventLog)
        return {QStringLiteral("Save File"), QStringLiteral("Events.txt"), QStringLiteral("Event log info (*.txt)")};
    return {QStringLiteral("Save File"), QStringLiteral("SMARTinfo.txt"), QStringLiteral("SMART info (*.txt)")};
}

QByteArray eventsReport(const QStringList &lines)
{
    QByteArray report;
    for (const QString &line : lines)
        report += line.toLocal8Bit() + "\r\n";
    return report;
}

Outcome save(Kind kind, const QString &path, const QByteArray &report)
{
    const bool events = kind == Kind::EventLog;
    Outcome outcome;
    outcome.title = languageText(Lang::Title);
    // The box names the path only; why a write failed is not told.
    outcome.saved = WholeFile::write(path, report);
    if (outcome.saved)
        outcome.text = events ? QStringLiteral("Event log info file was saved like\n")
                              : QStringLiteral("SMART info file was saved like\n");
    else
        outcome.text = events ? QStringLiteral("Unable to create Event log info file\n")
                              : QStringLiteral("Unable to create SMART info file\n");
    outcome.text += path;
    return outcome;
}

} // namespace TextExport
