#pragma once

// What Korvane's privileged disk helper and its callers say to each other over D-Bus: the names,
// and the records of the replies as a{sv} maps. Both sides build and read them here, so the two
// ends cannot drift apart.

#include "device/DriveBackend.h"

#include <QByteArray>
#include <QList>
#include <QVariantMap>

#include <cstdint>
#include <optional>
#include <string>

namespace HelperProtocol {

/// Bus name, object path and interface of the helper.
inline constexpr char kService[] = "org.korvane.Helper1";
inline constexpr char kObjectPath[] = "/org/korvane/Helper1";
inline constexpr char kInterface[] = "org.korvane.Helper1";

/// polkit actions: reading identity and SMART data, and reading sectors for the surface scan.
inline constexpr char kReadAction[] = "org.korvane.read-smart";
inline constexpr char kScanAction[] = "org.korvane.scan";

/// Error names of the helper's replies.
inline constexpr char kErrorNotAuthorized[] = "org.korvane.Helper1.Error.NotAuthorized";
inline constexpr char kErrorRefused[] = "org.korvane.Helper1.Error.Refused";
inline constexpr char kErrorFailed[] = "org.korvane.Helper1.Error.Failed";

/// The most bytes one sector read may ask for.
inline constexpr std::uint32_t kMaxReadBytes = 1u << 20;

/// A disk the helper found, with everything discovery asks of it before any ATA command.
struct Disk
{
    std::string path;
    int probe = -1;
    DiskGeometry geometry;
    std::uint64_t length = 0;
    std::int32_t number = -1;
    std::string descriptor;          ///< the storage device descriptor bytes; empty when the query failed
    bool hasSmartVersion = false;
    std::uint8_t smartVersion = 0;
    std::uint8_t smartRevision = 0;
};

/// A volume with the answers of the seam's volume queries.
struct Volume
{
    std::string name;
    bool fixed = false;
    bool hasSpace = false;
    VolumeSpace space;
    bool hasInformation = false;
    VolumeInformation information;
    bool hasNumber = false;
    std::int32_t number = -1;
};

/// Registers the list-of-maps type (aa{sv}) with Qt's D-Bus marshalling; call once per process.
void registerTypes();

/// A disk as an a{sv} map, and back; nullopt when a field is missing or out of range.
QVariantMap diskToMap(const Disk &disk);
std::optional<Disk> diskFromMap(const QVariantMap &map);

/// A volume as an a{sv} map, and back.
QVariantMap volumeToMap(const Volume &volume);
Volume volumeFromMap(const QVariantMap &map);

/// A mount point as an a{sv} map, and back.
QVariantMap mountToMap(const MountPoint &mount);
MountPoint mountFromMap(const QVariantMap &map);

/// The eight task-file registers as eight bytes, and back; false when \a bytes is not 8 long.
QByteArray registersToBytes(const AtaRegisters &registers);
bool registersFromBytes(const QByteArray &bytes, AtaRegisters &registers);

/// What an ATA command brought back, as an a{sv} map, and back into \a exchange (whose
/// registers and data it replaces); the map's "answered" says whether the path carried it.
QVariantMap exchangeToMap(const AtaExchange &exchange, bool answered);
bool exchangeFromMap(const QVariantMap &map, AtaExchange &exchange);

/// Reads a reply's list of maps, whichever way the bus handed it over.
QList<QVariantMap> mapList(const QVariant &value);

} // namespace HelperProtocol
