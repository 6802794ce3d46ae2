#pragma once

#include <string>

/// The folder of the running executable as the start-up code has always taken it. Plain C++
/// over Win32, no Qt.
namespace ModuleFolder {

/// The executable's folder from GetModuleFileNameW, up to and with its last "\", each UTF-16 unit
/// cut to its low byte: a path with characters outside Latin-1 comes back garbled, and the files
/// found through it are those the program has always used. Empty when the name cannot be read.
std::wstring lowByteDirectory();

} // namespace ModuleFolder
