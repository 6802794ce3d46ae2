#include "CtlBackend.h"

#include "device/AccessReport.h"
#include "device/BackendFactory.h"

#include <QCoreApplication>

#include <QTextStream>

namespace CtlBackend {

std::shared_ptr<DriveBackend> open(const QStringList &simulatePaths, bool *filesRead)
{
    QStringList errors;
    std::shared_ptr<DriveBackend> backend = createDriveBackend(simulatePaths, &errors);
    QTextStream err(stderr);
    for (const QString &e : std::as_const(errors))
        err << "korvanectl: " << e << '\n';
    *filesRead = errors.isEmpty();
    return backend;
}

void reportAccess(const DriveBackend &backend)
{
    QTextStream err(stderr);
    for (const QString &line : AccessReport::lines(backend, QCoreApplication::applicationFilePath()))
        err << "korvanectl: " << line << '\n';
}

} // namespace CtlBackend
