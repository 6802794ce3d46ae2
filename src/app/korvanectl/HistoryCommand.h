#pragma once

#include "CtlOptions.h"

/// `korvanectl history`: the warning and alarm records and the temperature samples of the
/// event log for a period, read by the statistics page's own reader, as text or JSON.
namespace HistoryCommand {

/// Reads the event log of the home folder and prints its rows. Returns 0, 1 when the log
/// cannot be read, 2 when the home folder will not do.
int run(const CtlOptions &options);

} // namespace HistoryCommand
