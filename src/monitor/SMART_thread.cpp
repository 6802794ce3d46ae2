#include "SMART_thread.h"

#include "device/AtaCommands.h"
#include "device/SmartDecoder.h"

#include <utility>

SMART_thread::SMART_thread(std::shared_ptr<DriveBackend> backend, QObject *parent)
    : QThread(parent)
    , m_backend(std::move(backend))
{
}

SMART_thread::~SMART_thread()
{
    // The worker's last step is the hand-over under this lock; taking it here
    // orders everything the worker wrote before the object is freed, in terms
    // a race detector can follow as well.
    std::lock_guard lock(m_resultMutex);
}

std::optional<DiskRecord> SMART_thread::takeResult()
{
    std::lock_guard lock(m_resultMutex);
    return std::exchange(m_result, std::nullopt);
}

std::optional<Sector> SMART_thread::takeSector()
{
    std::lock_guard lock(m_resultMutex);
    return std::exchange(m_sector, std::nullopt);
}

bool SMART_thread::readSmartSector(DriveBackend &backend, DiskHandle handle, int driveNumber,
                                   std::uint8_t features, Sector &data)
{
    AtaExchange exchange;
    exchange.registers.features = features;
    exchange.registers.sectorCount = 0;
    exchange.registers.sectorNumber = 1;
    exchange.registers.cylinderLow = AtaCommands::kSmartKeyLow;
    exchange.registers.cylinderHigh = AtaCommands::kSmartKeyHigh;
    exchange.registers.driveHead = 0;
    exchange.registers.command = AtaCommands::kSmart;
    exchange.dataIn = true;
    // The SMART interface is asked directly rather than through the command
    // issuer: these reads must not fall back to other paths or made-up data.
    if (!backend.ataCommand(handle, SmartIoctlPath, driveNumber, exchange) || exchange.driverError != 0)
        return false;
    data = exchange.data;
    return true;
}

void SMART_thread::closeHeader()
{
    if (m_handle == kNoHandle)
        return;
    m_backend->closeDisk(m_handle);
    m_handle = kNoHandle;
}

void SMART_thread::finish(std::optional<Sector> sector)
{
    closeHeader();
    const int index = m_index;
    {
        std::lock_guard lock(m_resultMutex);
        if (m_mode == Mode::FirstRead)
            m_result = std::move(m_disk);
        else
            m_sector = sector;
    }
    // From here on the object may be freed by its owner: touch no member.
    emit finishReadSMART(index);
}

void SMART_thread::run()
{
    if (m_mode == Mode::FirstRead)
        firstRead();
    else
        reRead();
}

void SMART_thread::firstRead()
{
    m_handle = m_backend->openDisk(m_devicePath.toStdString());
    if (m_handle == kNoHandle) {
        emit needStopTimer(m_index);
        finish();
        return;
    }

    Sector data{};
    if (!readSmartSector(*m_backend, m_handle, m_driveNumber, AtaCommands::kSmartReadData, data)) {
        emit needStopTimer(m_index);
        finish();
        return;
    }

    Sector thresholds{};
    const bool haveThresholds =
        readSmartSector(*m_backend, m_handle, m_driveNumber, AtaCommands::kSmartReadThresholds, thresholds);
    // The drive has answered its last command either way.
    emit needStopTimer(m_index);
    if (!haveThresholds) {
        finish();
        return;
    }

    SmartDecoder::applyFirstRead(m_disk, data, thresholds);
    finish();
}

void SMART_thread::reRead()
{
    // Only the changing values are read again: no thresholds, no worst values.
    m_handle = m_backend->openDisk(m_devicePath.toStdString());
    Sector data{};
    const bool read = m_handle != kNoHandle
                      && readSmartSector(*m_backend, m_handle, m_driveNumber, AtaCommands::kSmartReadData, data);
    emit needStopTimer(m_index);
    finish(read ? std::optional<Sector>(data) : std::nullopt);
}
