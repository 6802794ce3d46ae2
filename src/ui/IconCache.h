#pragma once

#include <QIcon>
#include <QString>

/// Icons of the resources, made once per path and shared. An icon made from a file name keeps
/// its own pixmaps, so one made on every poll churns memory for as long as the program runs.
namespace IconCache {

/// The icon of \a path; GUI thread only.
QIcon icon(const QString &path);

} // namespace IconCache
