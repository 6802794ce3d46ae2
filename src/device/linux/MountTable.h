#pragma once

// The kernel's table of mounts as /proc/self/mountinfo gives it.

#include <string>
#include <string_view>
#include <vector>

namespace MountTable {

/// One mount.
struct Mount
{
    unsigned major = 0;      ///< device number of the mounted file system
    unsigned minor = 0;
    std::string root;        ///< the directory of the file system mounted (usually "/")
    std::string mountPoint;  ///< where it is mounted, escapes resolved
    std::string fileSystem;  ///< file system type
    std::string source;      ///< the mounted device or source
};

/// The mounts of mountinfo text, in its order; malformed lines are skipped.
std::vector<Mount> parse(std::string_view text);
/// Resolves the octal escapes (\040 space, \011 tab, \012 newline, \134 backslash) of a field.
std::string unescape(std::string_view field);
/// The mounts of the mountinfo file at \a path; empty when it cannot be read.
std::vector<Mount> read(const std::string &path);

} // namespace MountTable
