#pragma once

#include "DriveBackend.h"

#include <QString>
#include <QStringList>

/// What to tell the user about disks a backend saw but could not read, or does not read at all.
namespace AccessReport {

/// One line per disk that could not be read, then how \a program gets access, then one line
/// per disk of a kind the backend does not read; empty when there is nothing to tell.
QStringList lines(const DriveBackend &backend, const QString &program);

} // namespace AccessReport
