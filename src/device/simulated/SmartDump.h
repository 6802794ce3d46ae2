#pragma once

#include "device/Sector.h"

#include <QByteArray>
#include <QString>

#include <optional>

/// A disk saved in the skdump container format: tagged sections of IDENTIFY,
/// SMART status, SMART data and thresholds.
struct SmartDump
{
    std::optional<Sector> identify;
    std::optional<Sector> smartData;
    std::optional<Sector> thresholds;
    std::optional<bool> healthy; ///< from the SMART RETURN STATUS section

    /// Parses a whole file's bytes; on failure returns nothing and says why in \a error.
    static std::optional<SmartDump> parse(const QByteArray &bytes, QString *error = nullptr);
    /// Reads and parses a file; \a error names what is wrong.
    static std::optional<SmartDump> load(const QString &path, QString *error = nullptr);
    /// The container bytes of this dump (sections in the writer's order).
    QByteArray serialize() const;
};
