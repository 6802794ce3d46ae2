#include "MonitorCommand.h"

#include "ConsoleOutput.h"
#include "CtlBackend.h"
#include "MonitorPrinter.h"
#include "monitor/SignalWatcher.h"

#include "health/SmtpClient.h"
#include "monitor/DiskMonitor.h"
#include "settings/AppSettings.h"
#include "settings/LanguageTable.h"
#include "settings/SettingsStore.h"

#include <QCoreApplication>
#include <QTextStream>
#include <QTimer>

namespace MonitorCommand {

namespace {

// The home folder, the settings and the language; false (with the reason on stderr) when the run cannot go on.
bool prepareSettings(const CtlOptions &options)
{
    QTextStream err(stderr);
    SettingsStore &store = SettingsStore::instance();
    QString error;
    const bool home = options.home.isEmpty() ? store.useHomeFromEnvironment(&error)
                                             : store.setHomeFolder(options.home, &error);
    if (!home) {
        err << "korvanectl: " << error << '\n';
        return false;
    }

    setDefaults({});
    QString message;
    store.load(&message);
    if (!message.isEmpty())
        err << "korvanectl: " << message << '\n';

    const auto language = LanguageTable::loadAtStartup(appSettings().LanguageType);
    if (language != LanguageTable::StartupResult::Loaded)
        err << "korvanectl: " << LanguageTable::startupMessage(language) << '\n';
    return language != LanguageTable::StartupResult::Failed;
}

// Once the first evaluation is out, and its e-mail, if one went, has been delivered or has failed
// (the client gives up on a silent server by itself).
void quitAfterFirstEvaluation(DiskMonitor &monitor)
{
    QObject::connect(&monitor, &DiskMonitor::evaluated, qApp, [&monitor] {
        if (!monitor.mailClient().isSending()) {
            QCoreApplication::quit();
            return;
        }
        QObject::connect(&monitor.mailClient(), &SmtpClient::finished, qApp, &QCoreApplication::quit);
    });
}

} // namespace

int run(const CtlOptions &options)
{
    // First of all, so that a stop request is honoured whenever it comes.
    SignalWatcher stopWatcher;
    if (!prepareSettings(options))
        return 2;

    bool filesRead = true;
    DiskMonitor monitor(CtlBackend::open(options.simulate, &filesRead));
    if (options.intervalSeconds > 0)
        monitor.setSmartIntervalMs(options.intervalSeconds * 1000);

    ConsoleOutput out;
    MonitorPrinter printer(monitor, out, options.json);
    QObject::connect(&stopWatcher, &SignalWatcher::stopRequested, qApp, &QCoreApplication::quit);
    QObject::connect(&out, &ConsoleOutput::closed, qApp, &QCoreApplication::quit);
    if (options.once)
        quitAfterFirstEvaluation(monitor);

    // Started from inside the event loop, which is then already there to take a stop request.
    QTimer::singleShot(0, &monitor, &DiskMonitor::start);
    QCoreApplication::exec();
    monitor.finish();
    return filesRead ? 0 : 2;
}

} // namespace MonitorCommand
