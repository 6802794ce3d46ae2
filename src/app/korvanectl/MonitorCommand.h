#pragma once

#include "CtlOptions.h"

/// `korvanectl monitor`: evaluates the disks once per poll until stopped.
namespace MonitorCommand {

/// Runs until SIGINT or SIGTERM (or after one evaluation with --once); 0 on a clean end, 2 on bad files.
int run(const CtlOptions &options);

} // namespace MonitorCommand
