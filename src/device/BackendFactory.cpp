#include "BackendFactory.h"

#include "UserPath.h"
#include "simulated/SimulatedBackend.h"

#include <QDir>
#include <QFile>

#if defined(Q_OS_LINUX)
#include "helper/LinuxBackendChoice.h"
#elif defined(Q_OS_WIN)
#include "windows/WindowsBackend.h"
#endif

QStringList simulatePathsFromEnvironment()
{
#ifdef Q_OS_WIN
    // The wide environment holds the names exactly as the file system does.
    const QString value = qEnvironmentVariable("KORVANE_SIMULATE");
    return value.split(QDir::listSeparator(), Qt::SkipEmptyParts);
#else
    // Bytes naming files: each made into a path that names the file meant. One that cannot be
    // is passed on as Qt decodes it, and loading it says why it cannot be read.
    QStringList paths;
    for (const QByteArray &raw : qgetenv("KORVANE_SIMULATE").split(':')) {
        if (raw.isEmpty())
            continue;
        const QString path = UserPath::fromLocalBytes(raw, false, nullptr);
        paths << (path.isEmpty() ? QFile::decodeName(raw) : path);
    }
    return paths;
#endif
}

std::unique_ptr<DriveBackend> createDriveBackend(const QStringList &simulatePaths, QStringList *errors)
{
    const QStringList paths = simulatePaths.isEmpty() ? simulatePathsFromEnvironment() : simulatePaths;
    if (!paths.isEmpty())
        return SimulatedBackend::load(paths, errors);
    if (auto system = createSystemBackend(errors))
        return system;
    return std::make_unique<SimulatedBackend>();
}

std::unique_ptr<DriveBackend> createSystemBackend(QStringList *errors)
{
#if defined(Q_OS_LINUX)
    Q_UNUSED(errors);
    return LinuxBackendChoice::create();
#elif defined(Q_OS_WIN)
    Q_UNUSED(errors);
    return std::make_unique<WindowsBackend>();
#else
    if (errors)
        errors->append(QStringLiteral("No disk access for this platform in this build; use --simulate."));
    return nullptr;
#endif
}
