#pragma once

#include "device/DiskRecord.h"
#include "device/DriveBackend.h"

#include <QString>
#include <QThread>

#include <cstdint>
#include <mutex>
#include <optional>

/// First SMART read of one disk on a thread of its own.
///
/// The worker decodes into its own copy of the disk record and hands that copy
/// over when it reports with finishReadSMART; it never touches the shared disk
/// list. It owns the handle it opens and closes it itself, also when it
/// finishes long after the service has given up on it.
class SMART_thread : public QThread
{
    Q_OBJECT
public:
    /// \a backend must outlive the read, also one the service has abandoned.
    explicit SMART_thread(DriveBackend &backend, QObject *parent = nullptr);
    ~SMART_thread() override;

    /// Path the disk is opened with. Set before start().
    QString devicePath() const { return m_devicePath; }
    void setDevicePath(const QString &path) { m_devicePath = path; }
    /// Position of the disk in the disk list; also the drive number of the SMART commands. Set before start().
    int index() const { return m_index; }
    void setIndex(int index) { m_index = index; }
    /// The record the read starts from and decodes into. Set before start().
    void setDisk(const DiskRecord &disk) { m_disk = disk; }
    /// The record as the read left it; empty before the worker has reported and after the first call.
    std::optional<DiskRecord> takeResult();

    /// Issues one SMART data-in sub-command through the driver's SMART interface
    /// addressed to \a driveNumber; true, with the sector in \a data, when the
    /// call went through and the driver reported no error.
    static bool readSmartSector(DriveBackend &backend, DiskHandle handle, int driveNumber,
                                std::uint8_t features, Sector &data);

signals:
    /// The read of disk \a index is over; takeResult() has the record with whatever it could read.
    void finishReadSMART(int index);
    /// The drive has answered (or failed) its last command; the read cannot hang any more.
    void needStopTimer(int index);

public slots:
    /// Closes the disk handle if it is open. Only the worker itself calls it.
    void closeHeader();

protected:
    void run() override;

private:
    /// Ends the read: closes the handle, hands the record over and reports.
    void finish();

    DriveBackend &m_backend;
    QString m_devicePath;
    int m_index = -1;
    DiskHandle m_handle = kNoHandle;
    DiskRecord m_disk;
    std::mutex m_resultMutex;
    std::optional<DiskRecord> m_result; ///< guarded by m_resultMutex
};
