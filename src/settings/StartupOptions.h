#pragma once

#include <QStringList>

struct AppSettings;

/// Reads the command line into \a settings. Only the first argument counts, compared whole and
/// case-sensitively: "hide" starts in the tray, "-detlog" writes the detailed log. A second
/// argument is never looked at, so the two cannot be combined.
void applyArguments(AppSettings &settings, const QStringList &arguments);
