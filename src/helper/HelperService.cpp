#include "HelperService.h"

#include "HelperRequestPolicy.h"
#include "PolkitAuthority.h"
#include "device/helper/HelperProtocol.h"

#include <QDBusConnection>

namespace {

// Enough for a few hung disks without starving the others.
constexpr int kDiskThreads = 8;

QString fromBytes(const std::string &text)
{
    return QString::fromUtf8(text.data(), qsizetype(text.size()));
}

QDBusMessage errorReply(const QDBusMessage &call, const char *name, const QString &text)
{
    return call.createErrorReply(QLatin1String(name), text);
}

QDBusMessage unknownDisk(const QDBusMessage &call, const QByteArray &disk)
{
    return errorReply(call, HelperProtocol::kErrorRefused,
                      QStringLiteral("%1 is not a disk the helper found").arg(QString::fromUtf8(disk)));
}

QDBusMessage notOpened(const QDBusMessage &call, const QByteArray &disk)
{
    return errorReply(call, HelperProtocol::kErrorFailed,
                      QStringLiteral("%1 cannot be opened").arg(QString::fromUtf8(disk)));
}

} // namespace

HelperService::HelperService(std::shared_ptr<DriveBackend> backend, PolkitAuthority *authority,
                             std::chrono::milliseconds idle, QObject *parent)
    : QObject(parent)
    , m_backend(std::move(backend))
    , m_disks(*m_backend)
    , m_authority(authority)
{
    m_pool.setMaxThreadCount(kDiskThreads);
    m_idle.setSingleShot(true);
    m_idle.setInterval(idle);
    connect(&m_idle, &QTimer::timeout, this, [this] {
        if (m_inFlight == 0)
            emit this->idle();
    });
    m_idle.start();
}

HelperService::~HelperService()
{
    m_pool.waitForDone();
}

void HelperService::callStarted()
{
    ++m_inFlight;
    m_idle.start();
}

void HelperService::callEnded()
{
    --m_inFlight;
    m_idle.start();
}

// Authorisation comes before anything touches a disk, and the work then runs on the pool,
// which sends the reply itself: QDBusConnection::send is safe from any thread.
void HelperService::authorised(const QString &action, Work work)
{
    const QDBusMessage call = message();
    QDBusConnection bus = connection();
    setDelayedReply(true);
    callStarted();
    const bool scan = action == QLatin1String(HelperProtocol::kScanAction);
    if (scan && scanGranted(call.service()))
        return run(call, bus, std::move(work));
    m_authority->check(call.service(), action, [this, call, bus, work, scan](bool allowed, const QString &refusal) {
        if (!allowed) {
            bus.send(errorReply(call, HelperProtocol::kErrorNotAuthorized, refusal));
            callEnded();
            return;
        }
        if (scan)
            m_scanGrants.insert(call.service(), QDeadlineTimer(m_idle.intervalAsDuration()));
        run(call, bus, work);
    });
}

void HelperService::run(const QDBusMessage &call, QDBusConnection bus, Work work)
{
    m_pool.start([this, call, bus, work]() mutable {
        bus.send(work(call));
        QMetaObject::invokeMethod(this, &HelperService::callEnded, Qt::QueuedConnection);
    });
}

// A scan reads for hours in small pieces, and polkit keeps an administrator's password for five
// minutes: asked at every piece, it would ask for the password again in the middle of the scan.
// So a yes to the scan holds for the caller's connection (a unique bus name is never given to
// anyone else while the bus runs) for as long as its reads keep coming, and lapses after the
// same quiet time that ends the helper.
bool HelperService::scanGranted(const QString &caller)
{
    const auto it = m_scanGrants.find(caller);
    if (it == m_scanGrants.end())
        return false;
    if (it->hasExpired()) {
        m_scanGrants.erase(it);
        return false;
    }
    *it = QDeadlineTimer(m_idle.intervalAsDuration());
    return true;
}

QList<QVariantMap> HelperService::ListDisks()
{
    authorised(QLatin1String(HelperProtocol::kReadAction), [this](const QDBusMessage &call) {
        QList<QVariantMap> disks;
        for (const HelperProtocol::Disk &disk : m_disks.refresh())
            disks.append(HelperProtocol::diskToMap(disk));
        return call.createReply(QVariant::fromValue(disks));
    });
    return {};
}

QVariantMap HelperService::AtaCommand(const QByteArray &disk, int path, const QByteArray &registers)
{
    AtaRegisters requested;
    if (!HelperProtocol::registersFromBytes(registers, requested)) {
        sendErrorReply(QLatin1String(HelperProtocol::kErrorRefused),
                       QStringLiteral("the register block must be 8 bytes"));
        return {};
    }
    std::string refusal;
    const std::optional<AtaExchange> allowed = HelperRequestPolicy::commandExchange(path, requested, refusal);
    if (!allowed) {
        sendErrorReply(QLatin1String(HelperProtocol::kErrorRefused), fromBytes(refusal));
        return {};
    }
    const auto run = [this, disk, path, exchange = *allowed](const QDBusMessage &call) mutable {
        const auto found = m_disks.find(disk.toStdString());
        if (!found)
            return unknownDisk(call, disk);
        const DiskHandle handle = m_backend->openDisk(found->path);
        if (handle == kNoHandle)
            return notOpened(call, disk);
        const bool answered = m_backend->ataCommand(handle, path, found->probe, exchange);
        m_backend->closeDisk(handle);
        return call.createReply(HelperProtocol::exchangeToMap(exchange, answered));
    };
    authorised(QLatin1String(HelperProtocol::kReadAction), run);
    return {};
}

QByteArray HelperService::ReadSectors(const QByteArray &disk, qulonglong offset, uint length)
{
    authorised(QLatin1String(HelperProtocol::kScanAction), [this, disk, offset, length](const QDBusMessage &call) {
        const auto found = m_disks.find(disk.toStdString());
        if (!found)
            return unknownDisk(call, disk);
        std::string refusal;
        if (!HelperRequestPolicy::readAllowed(offset, length, found->length, refusal))
            return errorReply(call, HelperProtocol::kErrorRefused, fromBytes(refusal));
        const DiskHandle handle = m_backend->openForRead(found->path, false);
        if (handle == kNoHandle)
            return notOpened(call, disk);
        QByteArray data(qsizetype(length), '\0');
        auto *buffer = reinterpret_cast<std::uint8_t *>(data.data());
        const std::int64_t got = m_backend->readAt(handle, offset, buffer, length);
        m_backend->closeDisk(handle);
        if (got < 0)
            return errorReply(call, HelperProtocol::kErrorFailed, QStringLiteral("read error at byte %1").arg(offset));
        data.truncate(qsizetype(got));
        return call.createReply(data);
    });
    return {};
}

QList<QVariantMap> HelperService::Volumes(QList<QVariantMap> &)
{
    authorised(QLatin1String(HelperProtocol::kReadAction), [this](const QDBusMessage &call) {
        QList<QVariantMap> volumes;
        for (const HelperProtocol::Volume &volume : m_disks.volumes())
            volumes.append(HelperProtocol::volumeToMap(volume));
        QList<QVariantMap> mounts;
        for (const MountPoint &mount : m_backend->mountPoints())
            mounts.append(HelperProtocol::mountToMap(mount));
        return call.createReply({QVariant::fromValue(volumes), QVariant::fromValue(mounts)});
    });
    return {};
}
