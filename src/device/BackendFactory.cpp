#include "BackendFactory.h"

#include "simulated/SimulatedBackend.h"

#include <QDir>
#include <QFile>

#if defined(Q_OS_LINUX)
#include "linux/LinuxBackend.h"
#endif

QStringList simulatePathsFromEnvironment()
{
#ifdef Q_OS_WIN
    // The wide environment holds the names exactly as the file system does.
    const QString value = qEnvironmentVariable("KORVANE_SIMULATE");
#else
    // Bytes naming files: decoded the way file names are, so they name the file meant. Names
    // that are not valid in that encoding cannot be carried and are reported when loading.
    const QString value = QFile::decodeName(qgetenv("KORVANE_SIMULATE"));
#endif
    return value.split(QDir::listSeparator(), Qt::SkipEmptyParts);
}

std::unique_ptr<DriveBackend> createDriveBackend(const QStringList &simulatePaths, QStringList *errors)
{
    const QStringList paths = simulatePaths.isEmpty() ? simulatePathsFromEnvironment() : simulatePaths;
    if (!paths.isEmpty())
        return SimulatedBackend::load(paths, errors);
#if defined(Q_OS_LINUX)
    return std::make_unique<LinuxBackend>();
#else
    if (errors)
        errors->append(QStringLiteral("No disk access for this platform in this build; use --simulate."));
    return std::make_unique<SimulatedBackend>();
#endif
}
