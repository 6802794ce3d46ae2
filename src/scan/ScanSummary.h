#pragma once

#include <QtGlobal>

/// How a surface scan ended, as the result text and the completion dialog report it.
struct ScanSummary
{
    bool stopped = false;      ///< the user (or a signal) stopped it
    bool openFailed = false;   ///< the disk could not be opened
    qint64 blocksScanned = 0;
    qint64 sectorsScanned = 0;
    qint64 badBlocks = 0;
    quint32 elapsedSeconds = 0; ///< from the start to the end, whole seconds
};
