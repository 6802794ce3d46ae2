#pragma once

#include "TestFiles.h"

#include "device/simulated/SimulatedBackend.h"

#include <QStringList>

#include <memory>

/// For tests: writes the disk description \a json to \a path and loads it as the only simulated
/// disk (sim://0). Stops the test program when the description is unusable.
inline std::shared_ptr<DriveBackend> simulatedDisk(const QString &path, const QByteArray &json)
{
    if (!TestFiles::write(path, json))
        qFatal("cannot write %s", qPrintable(path));
    QStringList errors;
    std::shared_ptr<DriveBackend> backend = SimulatedBackend::load({path}, &errors);
    if (!errors.isEmpty())
        qFatal("%s", qPrintable(errors.join(QLatin1Char('\n'))));
    return backend;
}
