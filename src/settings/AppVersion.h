#pragma once

#include <QString>

/// The version of this build, as both programs print it for --version.
namespace AppVersion {

/// "0.1.0": the project version the build was configured with.
QString text();

} // namespace AppVersion
