#pragma once

#include "HealthState.h"

#include <QString>
#include <QStringList>

struct AppSettings;
struct DiskRecord;
struct SmartAttribute;

/// The texts a health evaluation produces: disk status paragraphs, Events Log lines, the event
/// text of pop-ups and e-mail, and the pieces of the tray summary. Which of them appear is
/// decided by the evaluation; this only words them.
namespace HealthTexts {

/// Unit shown after a temperature: language entry 1 for Celsius, 2 for Fahrenheit.
QString unitText(const AppSettings &settings, const QStringList &languageTable);

/// Status paragraph of a disk whose monitoring is off.
const QString &notMonitoringNote();
/// Status paragraph of a monitored disk without SMART data.
const QString &noSmartNote();
/// Status paragraph of a disk at the OK level.
const QString &everythingOkNote();

/// Name of an alert level in the alert texts: "ALARM" for ALARM, else "WARNING".
QString levelName(HealthState level);

/// Status paragraph of a temperature alert ("Temperature is WARNING").
QString temperatureParagraph(HealthState level);
/// Events Log line of a temperature alert; \a shown is the temperature in the display unit.
QString temperatureLogLine(const DiskRecord &disk, const QString &shown, const QString &unit);
/// Line of a temperature alert in the event text, with its line feed.
QString temperatureEventLine(HealthState level, const QString &shown, const QString &unit);

/// Status paragraph of an attribute alert ("Attribute 5 is ALARM").
QString attributeParagraph(HealthState level, const SmartAttribute &attribute);
/// Events Log line of an attribute alert, naming the attribute.
QString attributeLogLine(HealthState level, const DiskRecord &disk, const SmartAttribute &attribute);
/// Line of an attribute alert in the event text, with its line feed.
QString attributeEventLine(HealthState level, const SmartAttribute &attribute);

/// First line of a disk's block in the event text: "HD<index>(<model>) Health(<percentage>%)".
QString diskEventHead(int index, const DiskRecord &disk, int percentage);

/// Start of a disk's tray summary line: "HD<index>".
QString summaryHead(int index);
/// Temperature piece of a tray summary line: a blank, the temperature, the unit.
QString summaryTemperature(int shown, const QString &unit);
/// End of a tray summary line: the percentage, the level tag (OK, W, A) and a line feed.
QString summaryTail(int percentage, HealthState level);

/// Disk-tree icon of a disk level.
QString treeIcon(HealthState level);
/// Title of the pop-up at an overall level of WARNING or ALARM.
QString popUpTitle(HealthState level);

/// E-mail text when every disk is back to (or still at) OK.
QString allOkMail();
/// Events Log line when an e-mail is due but the SMTP server is not set.
QString noSmtpParams();
/// Events Log line when an e-mail is due while the previous one is still being sent.
QString mailInFlight();

} // namespace HealthTexts
