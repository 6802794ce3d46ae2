#pragma once

#include "CtlOptions.h"

/// korvanectl scan: the surface scan of one disk, its bad ranges as they are found, and the result.
namespace ScanCommand {

/// Runs the command; the exit code (0 no bad range, 1 bad ranges, 2 not scanned, 130 stopped).
int run(const CtlOptions &options);

} // namespace ScanCommand
