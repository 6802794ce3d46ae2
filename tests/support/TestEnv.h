#pragma once

#include <QString>

/// Where tests find the source tree, the build tree and the shared test data.
namespace TestEnv {

/// The source tree (KORVANE_SOURCE_DIR).
QString sourceDir();
/// The build tree (KORVANE_BINARY_DIR).
QString binaryDir();
/// The folder of real SMART dumps, or empty when it is not there.
QString smartDumpDir();
/// The bundled demo disks.
QString demoDir();
/// Path of the korvanectl binary (KORVANECTL), or empty.
QString korvanectl();

} // namespace TestEnv
