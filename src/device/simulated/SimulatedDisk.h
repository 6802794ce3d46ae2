#pragma once

#include "ValueSchedule.h"
#include "device/DriveBackend.h"

#include <QList>
#include <QString>

#include <optional>
#include <string>
#include <vector>

/// A volume that lies on a simulated disk.
struct SimulatedVolume
{
    std::string label;
    std::string fileSystem = "NTFS";
    std::uint32_t serialNumber = 0;
    std::string root; ///< drive root such as "C:\\"; empty for a volume without one
    std::uint64_t totalBytes = 0;
    std::uint64_t freeBytes = 0;
};

/// An attribute slot whose values move from poll to poll.
/// Sectors that read slowly, as a weak spot of the surface does.
struct SlowSectors
{
    std::uint64_t first = 0;  ///< first sector, inclusive
    std::uint64_t last = 0;   ///< last sector, inclusive
    double latencyMs = 0;     ///< what a read touching them waits
};

struct ChangingAttribute
{
    int slot = 0;
    std::optional<ValueSchedule> current;
    std::optional<ValueSchedule> worst; ///< when absent, worst follows the lowest current seen
    std::optional<ValueSchedule> raw;
    quint8 worstBefore = 255;           ///< worst value recorded before the first poll
};

/// Platform queries a description can make fail, as bits.
enum SimulatedQuery : int {
    GeometryQuery = 1,
    LengthQuery = 2,
    DeviceNumberQuery = 4,
    DescriptorQuery = 8,
    SmartVersionQuery = 16,
};

/// One simulated disk: the sectors it answers with, its shape and volumes,
/// and how it misbehaves. Built once by the loader and read-only afterwards,
/// so any number of threads may use it; the poll count lives with the caller.
class SimulatedDisk
{
public:
    /// How a command is going to end.
    enum class Outcome {
        Refused, ///< the access path rejects the call itself
        Aborted, ///< the drive answers with its error bit set
        Data,    ///< the drive returns a sector
        Status,  ///< the drive returns its registers (SMART RETURN STATUS)
    };

    QString sourceFile;              ///< file the disk was described in, for messages
    QString dumpFile;                ///< canonical path of the dump it starts from, or empty
    std::optional<int> requestedNumber;
    int number = -1;                 ///< device number and probe index

    std::uint64_t sizeBytes = 0;
    DiskGeometry geometry;           ///< cylinders follow from the size
    bool removable = false;
    std::uint32_t busType = 11;      ///< STORAGE_BUS_TYPE: 3 ATA, 7 USB, 11 SATA
    std::string vendor;              ///< descriptor vendor text; empty for ATA disks
    std::vector<SimulatedVolume> volumes;

    bool openFails = false;
    bool scanLocked = false; ///< another program holds it for writing: the read-only open of the scan fails
    int firstPath = AtaPassThroughPath; ///< paths below this one refuse every command
    int failingQueries = 0;             ///< SimulatedQuery bits
    double hangSeconds = 0;             ///< a SMART READ DATA that hangs waits this long
    QList<quint64> hangPolls;           ///< polls that hang; empty means every poll
    std::vector<std::pair<std::uint64_t, std::uint64_t>> badSectors; ///< inclusive LBA ranges
    double readLatencyMs = 0;
    std::vector<SlowSectors> slowSectors;     ///< ranges that read slower than the rest
    std::optional<std::uint64_t> disappearsAt; ///< a read reaching this sector makes the disk vanish

    Sector identify{};
    std::optional<Sector> smartData;   ///< the sector at poll 0 before the changing slots are filled
    std::optional<Sector> thresholds;
    QList<ChangingAttribute> changing;
    bool smartSupported = true;
    bool smartEnabled = true;
    std::optional<bool> forcedHealthy; ///< a RETURN STATUS verdict the description fixes
    bool dumpFailing = false;          ///< the dump's saved RETURN STATUS said the drive fails

    /// Whether the query of kind \a query (a SimulatedQuery) fails.
    bool fails(int query) const { return (failingQueries & query) != 0; }
    /// Whether a SMART READ DATA answered as poll \a poll hangs first.
    bool hangsAt(quint64 poll) const;
    /// Whether any sector of the byte range lies in a bad range.
    bool hasBadSector(std::uint64_t offset, std::uint64_t length) const;
    /// Milliseconds a read of the byte range waits: the slowest range it touches, or the disk's own.
    double readLatencyFor(std::uint64_t offset, std::uint64_t length) const;
    /// Whether a read of the byte range reaches the sector at which the disk disappears.
    bool disappearsWith(std::uint64_t offset, std::uint64_t length) const;

    /// The SMART READ DATA sector answered at poll \a poll, checksum included.
    Sector smartDataAt(quint64 poll) const;
    /// What the drive's own SMART RETURN STATUS says after poll \a poll: false
    /// when a pre-failure attribute is at or below its threshold.
    bool healthyAt(quint64 poll) const;

    /// Writes the storage device descriptor into \a size bytes; the bytes written, or -1.
    int writeDescriptor(std::uint8_t *buffer, int size) const;

    /// Whether \a registers hold SMART READ DATA, the command that counts as a poll.
    static bool isSmartReadData(const AtaRegisters &registers);
    /// How the command in \a exchange ends on access path \a path.
    Outcome classify(int path, const AtaExchange &exchange) const;
    /// Fills \a exchange with the drive's answer the way access path \a path
    /// reports it; \a poll picks the SMART values.
    void complete(Outcome outcome, int path, AtaExchange &exchange, quint64 poll) const;
};
