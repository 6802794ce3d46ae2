#pragma once

#include "HelperDiskList.h"

#include <QByteArray>
#include <QDeadlineTimer>
#include <QHash>
#include <QDBusContext>
#include <QDBusMessage>
#include <QList>
#include <QObject>
#include <QThreadPool>
#include <QTimer>
#include <QVariantMap>

#include <chrono>
#include <functional>
#include <memory>

class DriveBackend;
class PolkitAuthority;

/// The helper's D-Bus object, org.korvane.Helper1: the platform seam's read-only operations on
/// the disks it found itself, each call authorised through polkit for the calling bus name.
/// Disk calls run on a small pool, so one hung disk holds up neither the bus nor other callers.
class HelperService : public QObject, protected QDBusContext
{
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.korvane.Helper1")
public:
    /// Serves \a backend's disks, asking \a authority; \a idle without calls ends the service.
    HelperService(std::shared_ptr<DriveBackend> backend, PolkitAuthority *authority,
                  std::chrono::milliseconds idle, QObject *parent = nullptr);
    /// Waits for the disk calls under way.
    ~HelperService() override;

signals:
    /// No call has come, and none has been under way, for the idle time.
    void idle();

public slots:
    /// The fixed disks with identity and geometry (aa{sv}, see HelperProtocol::diskToMap).
    QList<QVariantMap> ListDisks();
    /// One command of the fixed set on a listed disk over access path \a path; the exchange
    /// that came back (a{sv}, see HelperProtocol::exchangeToMap).
    QVariantMap AtaCommand(const QByteArray &disk, int path, const QByteArray &registers);
    /// \a length bytes of a listed disk from byte \a offset, read-only.
    QByteArray ReadSectors(const QByteArray &disk, qulonglong offset, uint length);
    /// Every volume (aa{sv}, see HelperProtocol::volumeToMap), and the mount points in \a mounts.
    QList<QVariantMap> Volumes(QList<QVariantMap> &mounts);

private:
    using Work = std::function<QDBusMessage(const QDBusMessage &call)>;

    void authorised(const QString &action, Work work);
    void run(const QDBusMessage &call, QDBusConnection bus, Work work);
    bool scanGranted(const QString &caller);
    void callStarted();
    void callEnded();

    std::shared_ptr<DriveBackend> m_backend;
    HelperDiskList m_disks;
    PolkitAuthority *m_authority;
    QTimer m_idle;
    int m_inFlight = 0;
    QHash<QString, QDeadlineTimer> m_scanGrants; // by unique bus name: until when the grant holds
    QThreadPool m_pool;
};
