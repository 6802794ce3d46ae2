// korvane-helper: started as root by the system bus when a Korvane program asks for
// org.korvane.Helper1, it reads the disks for callers that polkit lets through, and leaves
// after a minute without calls.
//
// The same file builds korvane-helper-testbed for the tests (KORVANE_HELPER_TESTBED): that
// one serves simulated disks on a bus named on its command line. The installed helper has no
// such option compiled in at all, so neither its arguments nor its environment can point it at
// other disks or another bus.

#include "device/helper/HelperProtocol.h"
#include "helper/HelperService.h"
#include "helper/PolkitAuthority.h"

#include <QCoreApplication>
#include <QDBusConnection>
#include <QTextStream>

#include <chrono>
#include <memory>

#ifdef KORVANE_HELPER_TESTBED
#include "device/simulated/SimulatedBackend.h"
#include <QCommandLineParser>
#else
#include "device/linux/LinuxBackend.h"
#endif

namespace {

struct Setup
{
    QDBusConnection bus{QString()};
    std::shared_ptr<DriveBackend> backend;
    std::chrono::milliseconds idle{60000};
};

#ifdef KORVANE_HELPER_TESTBED
bool setUp(const QCoreApplication &app, Setup &setup, QString &error)
{
    QCommandLineParser parser;
    const QCommandLineOption bus(QStringLiteral("bus"), QStringLiteral("Bus address."), QStringLiteral("address"));
    const QCommandLineOption simulate(QStringLiteral("simulate"), QStringLiteral("Disk files."),
                                      QStringLiteral("path"));
    const QCommandLineOption idle(QStringLiteral("idle-ms"), QStringLiteral("Idle time."), QStringLiteral("ms"));
    parser.addOptions({bus, simulate, idle});
    parser.process(app);
    setup.bus = QDBusConnection::connectToBus(parser.value(bus), QStringLiteral("korvane-helper"));
    QStringList errors;
    setup.backend = SimulatedBackend::load(parser.values(simulate), &errors);
    if (parser.isSet(idle))
        setup.idle = std::chrono::milliseconds(parser.value(idle).toInt());
    error = errors.join(QLatin1Char('\n'));
    return errors.isEmpty();
}
#else
bool setUp(const QCoreApplication &, Setup &setup, QString &)
{
    setup.bus = QDBusConnection::systemBus();
    setup.backend = std::make_shared<LinuxBackend>();
    return true;
}
#endif

} // namespace

int main(int argc, char *argv[])
{
    // A root process loads no plugins: none from the environment, none from Qt's own folder.
    QCoreApplication::setLibraryPaths({});
    QCoreApplication app(argc, argv);
    QTextStream err(stderr);
    HelperProtocol::registerTypes();

    Setup setup;
    QString error;
    if (!setUp(app, setup, error)) {
        err << "korvane-helper: " << error << '\n';
        return 2;
    }
    if (!setup.bus.isConnected()) {
        err << "korvane-helper: no bus: " << setup.bus.lastError().message() << '\n';
        return 1;
    }
    PolkitAuthority authority(setup.bus);
    HelperService service(setup.backend, &authority, setup.idle);
    if (!setup.bus.registerObject(QLatin1String(HelperProtocol::kObjectPath), &service, QDBusConnection::ExportAllSlots)
        || !setup.bus.registerService(QLatin1String(HelperProtocol::kService))) {
        err << "korvane-helper: cannot serve " << HelperProtocol::kService << ": "
            << setup.bus.lastError().message() << '\n';
        return 1;
    }
    // The name goes first, so that a call made from now on starts a new helper instead of
    // reaching one that is leaving.
    QObject::connect(&service, &HelperService::idle, &app, [&] {
        setup.bus.unregisterService(QLatin1String(HelperProtocol::kService));
        app.quit();
    });
    return app.exec();
}
