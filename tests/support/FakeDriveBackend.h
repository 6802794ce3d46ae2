#pragma once

// A scriptable drive backend for tests of everything above the platform seam.
//
// Disks are scripted per probe index; a probe with no script is absent (its
// open fails). A fresh script is a healthy fixed disk whose device number is
// its probe index, whose descriptor query fails and whose every command path
// refuses; tests change only what they are about. Volumes and mount points are
// plain lists. Every call is recorded in order, so a test can check what was
// asked, in which order, and that handles were closed.
//
// Calls may come from several threads at once (the SMART workers); the fake
// guards its state with one mutex. Change scripts only while no call runs.

#include "device/DriveBackend.h"

#include <cstdint>
#include <functional>
#include <map>
#include <mutex>
#include <optional>
#include <string>
#include <utility>
#include <vector>

class FakeDriveBackend : public DriveBackend
{
public:
    /// What one access path answers to one command.
    struct AtaReply
    {
        bool accepted = true;                         ///< false: the call is refused
        std::optional<Sector> data;                   ///< written into the buffer; unset leaves it as sent
        std::optional<std::uint32_t> bytesReturned;   ///< unset: 512 for a data-in command, else 0
        std::uint8_t driverError = 0;                 ///< the SMART interface's error byte
        std::optional<AtaRegisters> registers;        ///< returned registers (sets registersReturned)

        /// A refused call.
        static AtaReply refused();
        /// A clean transfer of \a sector.
        static AtaReply sector(const Sector &sector);
    };

    /// How one probe index behaves.
    struct Disk
    {
        std::string path;                             ///< empty: "/fake/disk<probe>"
        bool opens = true;                            ///< false: openDisk and openForRead fail
        std::optional<DiskGeometry> geometry;         ///< unset: the query fails
        std::optional<std::uint64_t> length;          ///< unset: the query fails
        std::optional<std::int32_t> deviceNumber;     ///< unset: the query fails
        std::optional<std::vector<std::uint8_t>> descriptor; ///< bytes returned; unset: the query fails
        std::optional<std::pair<std::uint8_t, std::uint8_t>> smartVersion; ///< version, revision
        /// Byte ranges [first, second) whose reads fail in readAt.
        std::vector<std::pair<std::uint64_t, std::uint64_t>> unreadable;

        /// Sets the reply of \a path to the command in \a command (matched by
        /// command byte and features).
        void setReply(int path, const AtaRegisters &command, const AtaReply &reply);
        /// Sets the reply of \a path to every command without a reply of its own.
        void setReply(int path, const AtaReply &reply);
        /// The reply the disk gives; refused when none is scripted.
        AtaReply replyFor(int path, const AtaRegisters &command) const;

    private:
        std::map<std::pair<int, int>, AtaReply> m_replies; // (path, command key); key -1: any command
    };

    /// One volume of the volume enumeration.
    struct Volume
    {
        std::string name;
        bool fixed = true;
        std::optional<VolumeSpace> space;             ///< unset: the query fails
        std::optional<VolumeInformation> information; ///< unset: the query fails
        std::optional<std::int32_t> deviceNumber;     ///< unset: the query fails
    };

    /// One recorded call; fields that the operation has no use for keep their defaults.
    struct Call
    {
        std::string operation;          ///< the DriveBackend function name, e.g. "ataCommand"
        int probe = -1;                 ///< disk the path or handle belongs to; -1 for volumes and unknown handles
        DiskHandle handle = kNoHandle;
        std::string argument;           ///< disk path or volume name
        int path = -1;                  ///< ataCommand: access path
        int probeIndex = -1;            ///< ataCommand: drive number passed down
        AtaRegisters registers;         ///< ataCommand: registers as sent
        bool dataIn = false;            ///< ataCommand: as sent
        std::uint8_t firstDataByte = 0; ///< ataCommand: data[0] as sent
        int size = 0;                   ///< deviceDescriptor: buffer size; readAt: length
        std::uint64_t offset = 0;       ///< readAt: byte offset
    };

    /// Adds (or replaces) the script of \a probe with a healthy 1000-cylinder
    /// fixed disk numbered \a probe, and returns it for further scripting.
    Disk &addDisk(int probe);
    /// The script of \a probe, or nullptr.
    Disk *disk(int probe);

    std::vector<Volume> volumes;        ///< in enumeration order
    std::vector<MountPoint> mounts;     ///< as mountPoints() returns them

    /// Runs at every call, outside the lock, before the call is answered; may block.
    std::function<void(const Call &)> onCall;

    /// Every call so far, in order.
    std::vector<Call> calls() const;
    /// The calls of one operation, in order.
    std::vector<Call> calls(const std::string &operation) const;
    /// The access path of every ataCommand call, in order.
    std::vector<int> ataPaths() const;
    /// Handles opened and not yet closed.
    int openHandleCount() const;
    /// Forgets the recorded calls.
    void clearCalls();

    /// A descriptor with the four strings after a 40-byte header; an empty
    /// string gets offset 0 (no string).
    static std::vector<std::uint8_t> makeDescriptor(const std::string &vendor, const std::string &product,
                                                    const std::string &revision, const std::string &serial);
    /// Overwrites the string offset at header position \a field (12, 16, 20 or 24).
    static void setDescriptorOffset(std::vector<std::uint8_t> &descriptor, int field, std::uint32_t offset);
    /// An IDENTIFY sector with the strings stored as a drive stores them (space
    /// padded, byte pairs swapped), ATA-6, SMART supported and enabled.
    static Sector makeIdentify(const std::string &model, const std::string &serial, const std::string &firmware);

    std::string diskPath(int probe) const override;
    DiskHandle openDisk(const std::string &path) override;
    void closeDisk(DiskHandle handle) override;
    bool geometry(DiskHandle handle, DiskGeometry &out) override;
    bool diskLength(DiskHandle handle, std::uint64_t &bytes) override;
    bool deviceNumber(DiskHandle handle, std::int32_t &number) override;
    int deviceDescriptor(DiskHandle handle, std::uint8_t *buffer, int size) override;
    bool smartVersion(DiskHandle handle, std::uint8_t &version, std::uint8_t &revision) override;
    bool ataCommand(DiskHandle handle, int path, int probeIndex, AtaExchange &exchange) override;
    std::vector<std::string> volumeNames() override;
    bool isFixedVolume(const std::string &volumeName) override;
    bool volumeSpace(const std::string &volumeName, VolumeSpace &out) override;
    bool volumeInformation(const std::string &volumeName, VolumeInformation &out) override;
    bool volumeDeviceNumber(const std::string &volumeName, std::int32_t &number) override;
    std::vector<MountPoint> mountPoints() override;
    DiskHandle openForRead(const std::string &path, bool directIo) override;
    std::int64_t readAt(DiskHandle handle, std::uint64_t offset, std::uint8_t *buffer,
                        std::uint32_t length) override;

private:
    // Records the call, runs onCall, and returns the script of the disk the
    // call is about (nullptr for unknown handles). The lock is held on return.
    const Disk *enter(Call call, std::unique_lock<std::mutex> &lock);
    const Disk *onHandle(const char *operation, DiskHandle handle, std::unique_lock<std::mutex> &lock);
    DiskHandle open(const char *operation, const std::string &path);
    const Volume *volume(const char *operation, const std::string &name, std::unique_lock<std::mutex> &lock);
    std::string pathOf(int probe) const;

    mutable std::mutex m_mutex;
    std::map<int, Disk> m_disks;
    std::map<DiskHandle, int> m_open;   // handle -> probe
    DiskHandle m_nextHandle = 100;
    std::vector<Call> m_calls;
};
