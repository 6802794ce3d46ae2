#pragma once

#include <QByteArray>
#include <QString>
#include <QStringList>

/// The window's two text exports, "Save Event log info" and "Save SMART info": what the save
/// dialog offers, the Events Log report, the writing and what the user is told afterwards. The
/// SMART report itself is SmartReport::text().
namespace TextExport {

/// Which export.
enum class Kind { EventLog, SmartInfo };

/// What the file dialog of an export shows.
struct FileChoice
{
    QString caption;      ///< "Save File"
    QString proposedName; ///< "Events.txt" or "SMARTinfo.txt"
    QString filter;       ///< "Event log info (*.txt)" or "SMART info (*.txt)"
};

/// How an export ended, as the message box tells it.
struct Outcome
{
    bool saved = false; ///< written (an information box), else not (a critical one)
    QString title;      ///< the box's title
    QString text;       ///< the box's text, ending in the chosen path
};

/// The file dialog's caption, proposed name and filter for \a kind.
FileChoice fileChoice(Kind kind);

/// The Events Log report: each line in the order given, followed by CR LF, in the local 8-bit
/// encoding; empty for no lines.
QByteArray eventsReport(const QStringList &lines);

/// Writes \a report to \a path whole or not at all (a file already there stays as it was when
/// the write fails) and says what to tell the user.
Outcome save(Kind kind, const QString &path, const QByteArray &report);

} // namespace TextExport
