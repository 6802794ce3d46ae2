#pragma once

#include <QProcessEnvironment>
#include <QString>
#include <QStringList>

/// Where tests find the source tree, the programs they run and the shared test data.
namespace TestEnv {

/// The source tree (KORVANE_SOURCE_DIR).
QString sourceDir();
/// The folder of real SMART dumps, or empty when it is not there.
QString smartDumpDir();
/// The bundled demo disks.
QString demoDir();
/// Path of the korvanectl binary (KORVANECTL), or empty.
QString korvanectl();

/// What a run of korvanectl left behind.
struct CtlRun
{
    int exitCode = -1; ///< -1 when it did not end normally within a minute
    QString out;       ///< standard output, UTF-8
    QString err;       ///< standard error, UTF-8
};
/// The environment korvanectl runs in by default: no simulated disks or home folder from outside.
QProcessEnvironment ctlEnvironment();
/// Runs korvanectl with \a arguments in \a environment and waits for it to end.
CtlRun runKorvanectl(const QStringList &arguments, const QProcessEnvironment &environment = ctlEnvironment());

} // namespace TestEnv
