#include "BackendFactory.h"

#include "simulated/SimulatedBackend.h"

#include <QDir>

#if defined(Q_OS_LINUX)
#include "linux/LinuxBackend.h"
#endif

QStringList simulatePathsFromEnvironment()
{
    const QString value = qEnvironmentVariable("KORVANE_SIMULATE");
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
