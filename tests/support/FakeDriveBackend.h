#pragma once

// A scriptable drive backend for tests of everything above the platform seam.
//
// Disks are scripted per probe index and live at "/fake/disk<probe>"; a probe
// with no script is absent (its open fails). A fresh script is a healthy fixed
// disk numbered by its probe index, whose descriptor query fails and whose
// every command path refuses. Every call is recorded in order. Calls may come
// from several threads (the SMART workers), so state sits behind one mutex;
// change scripts only while no call runs. Surface-scan reads always fail.

#include "device/DriveBackend.h"

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

    /// How one probe index behaves; an unset query value makes that query fail.
    struct Disk
    {
        bool opens = true;                            ///< false: openDisk fails
        std::optional<DiskGeometry> geometry;
        std::optional<std::uint64_t> length;
        std::optional<std::int32_t> deviceNumber;
        std::optional<std::vector<std::uint8_t>> descriptor;
        std::optional<std::pair<std::uint8_t, std::uint8_t>> smartVersion; ///< version, revision

        /// Sets the reply of \a path to \a command (matched by command byte and features).
        void setReply(int path, const AtaRegisters &command, const AtaReply &reply);
        /// Sets the reply of \a path to every command without a reply of its own.
        void setReply(int path, const AtaReply &reply);
        /// The reply the disk gives; refused when none is scripted.
        AtaReply replyFor(int path, const AtaRegisters &command) const;

    private:
        std::map<std::pair<int, int>, AtaReply> m_replies; // (path, command key); key -1: any command
    };

    /// One volume of the volume enumeration; an unset query value makes that query fail.
    struct Volume
    {
        std::string name;
        bool fixed = true;
        std::optional<VolumeSpace> space;
        std::optional<VolumeInformation> information;
        std::optional<std::int32_t> deviceNumber;
    };

    /// One recorded call; fields that the operation has no use for keep their defaults.
    struct Call
    {
        explicit Call(std::string name = {}) : operation(std::move(name)) {}

        std::string operation;          ///< the DriveBackend function name, e.g. "ataCommand"
        int probe = -1;                 ///< disk the path or handle belongs to; -1 for volumes and unknown handles
        int path = -1;                  ///< ataCommand: access path
        int probeIndex = -1;            ///< ataCommand: drive number passed down
        AtaRegisters registers;         ///< ataCommand: registers as sent
        bool dataIn = false;            ///< ataCommand: as sent
        std::uint8_t firstDataByte = 0; ///< ataCommand: data[0] as sent
        int size = 0;                   ///< deviceDescriptor: buffer size
    };

    /// Adds (or replaces) the script of \a probe with a healthy fixed disk, and returns it.
    Disk &addDisk(int probe);
    /// The script of \a probe, or nullptr.
    Disk *disk(int probe);

    std::vector<Volume> volumes;        ///< in enumeration order
    std::vector<MountPoint> mounts;     ///< as mountPoints() returns them

    /// Runs at every call, outside the lock, before the call is answered; may block.
    std::function<void(const Call &)> onCall;

    /// The calls so far of \a operation (all of them when empty), in order.
    std::vector<Call> calls(const std::string &operation = {}) const;
    /// The access path of every ataCommand call, in order.
    std::vector<int> ataPaths() const;
    /// Handles opened and not yet closed.
    int openHandleCount() const;
    /// Forgets the recorded calls.
    void clearCalls();

    /// A descriptor with the four strings after a 40-byte header; an empty string gets offset 0.
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
    bool geometry(DiskHandle h, DiskGeometry &out) override { return query("geometry", h, &Disk::geometry, out); }
    bool diskLength(DiskHandle h, std::uint64_t &out) override { return query("diskLength", h, &Disk::length, out); }
    bool deviceNumber(DiskHandle h, std::int32_t &out) override
    {
        return query("deviceNumber", h, &Disk::deviceNumber, out);
    }
    int deviceDescriptor(DiskHandle handle, std::uint8_t *buffer, int size) override;
    bool smartVersion(DiskHandle handle, std::uint8_t &version, std::uint8_t &revision) override;
    bool ataCommand(DiskHandle handle, int path, int probeIndex, AtaExchange &exchange) override;
    std::vector<std::string> volumeNames() override;
    bool isFixedVolume(const std::string &volumeName) override;
    bool volumeSpace(const std::string &v, VolumeSpace &out) override
    {
        return query("volumeSpace", v, &Volume::space, out);
    }
    bool volumeInformation(const std::string &v, VolumeInformation &out) override
    {
        return query("volumeInformation", v, &Volume::information, out);
    }
    bool volumeDeviceNumber(const std::string &v, std::int32_t &out) override
    {
        return query("volumeDeviceNumber", v, &Volume::deviceNumber, out);
    }
    std::vector<MountPoint> mountPoints() override;
    DiskHandle openForRead(const std::string &, bool) override { return kNoHandle; }
    std::int64_t readAt(DiskHandle, std::uint64_t, std::uint8_t *, std::uint32_t) override { return -1; }

private:
    // Records the call (the probe of \a handle filled in), runs onCall and
    // returns the script the call is about, or nullptr. The lock is held on return.
    const Disk *enter(Call call, DiskHandle handle, std::unique_lock<std::mutex> &lock);
    const Disk *find(const char *operation, DiskHandle handle, std::unique_lock<std::mutex> &lock)
    {
        return enter(Call(operation), handle, lock);
    }
    const Volume *find(const char *operation, const std::string &volumeName, std::unique_lock<std::mutex> &lock);

    // Hands a scripted value out; an unset one is a failing query.
    template <typename Key, typename Script, typename T>
    bool query(const char *operation, const Key &key, std::optional<T> Script::*field, T &out)
    {
        std::unique_lock lock(m_mutex);
        const Script *script = find(operation, key, lock);
        if (!script || !(script->*field))
            return false;
        out = *(script->*field);
        return true;
    }

    mutable std::mutex m_mutex;
    std::map<int, Disk> m_disks;
    std::map<DiskHandle, int> m_open;   // handle -> probe
    DiskHandle m_nextHandle = 100;
    std::vector<Call> m_calls;
};
