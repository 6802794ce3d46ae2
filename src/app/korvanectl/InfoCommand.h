#pragma once

#include "CtlOptions.h"

/// `korvanectl info`: discovery and the first SMART read of every disk, reported once.
namespace InfoCommand {

/// Runs the command; 0 when it ran, 2 when a simulated disk file could not be read.
int run(const CtlOptions &options);

} // namespace InfoCommand
