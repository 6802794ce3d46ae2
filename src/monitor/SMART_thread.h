#pragma once

#include "device/DiskRecord.h"
#include "device/DriveBackend.h"

#include <QString>
#include <QThread>

#include <cstdint>
#include <memory>
#include <mutex>
#include <optional>

/// One SMART read of one disk on a thread of its own: the first read (data and
/// thresholds, decoded into a copy of the disk record) or a re-read (the data
/// sector alone, handed over as bytes and decoded by the owner).
///
/// The worker never touches the shared disk list: it hands its result over when
/// it reports with finishReadSMART. It owns the handle it opens and closes it
/// itself, also when it finishes long after the service has given up on it, and
/// it keeps the backend alive for as long as it may still call into it.
class SMART_thread : public QThread
{
    Q_OBJECT
public:
    /// Which read run() makes.
    enum class Mode { FirstRead, ReRead };

    /// Reads through \a backend, which this worker keeps alive until it ends.
    explicit SMART_thread(std::shared_ptr<DriveBackend> backend, QObject *parent = nullptr);
    ~SMART_thread() override;

    /// Path the disk is opened with. Set before start().
    QString devicePath() const { return m_devicePath; }
    void setDevicePath(const QString &path) { m_devicePath = path; }
    /// Position of the disk in the disk list. Set before start().
    int index() const { return m_index; }
    void setIndex(int index) { m_index = index; }
    /// The drive number the SMART commands address: the list position for a first
    /// read, the low byte of the device number for a re-read. Set before start().
    void setDriveNumber(int number) { m_driveNumber = number; }
    /// The read to make; a first read unless set. Set before start().
    void setMode(Mode mode) { m_mode = mode; }
    /// The record a first read starts from and decodes into. Set before start().
    void setDisk(const DiskRecord &disk) { m_disk = disk; }

    /// First read: the record as the read left it; empty before the worker has reported and after the first call.
    std::optional<DiskRecord> takeResult();
    /// Re-read: the SMART data sector; empty when the read failed, before the report and after the first call.
    std::optional<Sector> takeSector();

    /// Issues one SMART data-in sub-command through the driver's SMART interface
    /// addressed to \a driveNumber; true, with the sector in \a data, when the
    /// call went through and the driver reported no error.
    static bool readSmartSector(DriveBackend &backend, DiskHandle handle, int driveNumber,
                                std::uint8_t features, Sector &data);

signals:
    /// The read of disk \a index is over; takeResult() or takeSector() has what it could read.
    void finishReadSMART(int index);
    /// The drive has answered (or failed) its last command; the read cannot hang any more.
    void needStopTimer(int index);

public slots:
    /// Closes the disk handle if it is open. Only the worker itself calls it.
    void closeHeader();

protected:
    void run() override;

private:
    void firstRead();
    void reRead();
    /// Ends the read: closes the handle, hands the result over and reports.
    void finish(std::optional<Sector> sector = std::nullopt);

    std::shared_ptr<DriveBackend> m_backend;
    QString m_devicePath;
    int m_index = -1;
    int m_driveNumber = -1;
    Mode m_mode = Mode::FirstRead;
    DiskHandle m_handle = kNoHandle;
    DiskRecord m_disk;
    std::mutex m_resultMutex;
    std::optional<DiskRecord> m_result; ///< guarded by m_resultMutex
    std::optional<Sector> m_sector;     ///< guarded by m_resultMutex
};
