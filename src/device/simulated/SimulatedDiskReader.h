#pragma once

#include "SimulatedDisk.h"

#include <QString>

#include <optional>

/// Builds simulated disks from files: saved dumps and JSON descriptions
/// (format in docs/simulated-disks.md).
namespace SimulatedDiskReader {

/// A disk from a JSON description; on failure nothing, and \a error says what
/// is wrong and where (line and column, or the field).
std::optional<SimulatedDisk> readDescription(const QString &path, QString *error);
/// A disk from a saved dump, answering exactly the dump's sectors.
std::optional<SimulatedDisk> readDump(const QString &path, QString *error);
/// Whether the file starts with a dump section tag: how a folder tells dumps
/// from notes that have no file-name extension either.
bool looksLikeDump(const QString &path);

} // namespace SimulatedDiskReader
