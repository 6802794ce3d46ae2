#pragma once

// Plain C++ without Qt: the Windows registry code, which cross-compiles without Qt, returns these too.
namespace Autostart {

/// Result codes of setAutostart(), the same on every platform.
enum Result : int {
    Done = 0,
    FolderUnavailable = 101, ///< the entry's place (the autostart folder, the Run key) cannot be opened
    WriteFailed = 102,       ///< the entry cannot be written
    RemoveFailed = 103,      ///< there is no entry to remove, or it cannot be removed
};

} // namespace Autostart
