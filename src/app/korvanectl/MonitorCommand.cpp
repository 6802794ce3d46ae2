#include "MonitorCommand.h"

#include "MonitorSession.h"
#include "SignalWatcher.h"
#include "DiskSession.h"
#include "settings/AppPaths.h"
#include "settings/AppSettings.h"
#include "settings/LanguageTable.h"

#include <QCoreApplication>
#include <QDir>
#include <QTextStream>
#include <QTimer>

#include <algorithm>
#include <limits>

namespace MonitorCommand {

int run(const CtlOptions &options)
{
    QTextStream err(stderr);
    if (!options.home.isEmpty()) {
        if (!QDir().mkpath(options.home)) {
            err << "korvanectl: cannot create the folder " << options.home << '\n';
            return 2;
        }
        qputenv(AppPaths::HomeVariable, QDir(options.home).absolutePath().toLocal8Bit());
    }

    setDefaults({});
    loadSettings();
    const auto language = LanguageTable::loadAtStartup(appSettings().LanguageType);
    if (language != LanguageTable::StartupResult::Loaded)
        err << "korvanectl: " << LanguageTable::startupMessage(language) << '\n';
    if (language == LanguageTable::StartupResult::Failed)
        return 2;

    bool filesRead = true;
    DriveBackend &backend = DiskSession::openBackend(options.simulate, &filesRead);

    SignalWatcher stopWatcher;
    MonitorSession session(backend, options);
    session.start();

    if (!options.once) {
        // The settings allow intervals longer than the timer can count (an
        // int of milliseconds, about 24.8 days); those poll at that longest.
        const qint64 interval = std::min<qint64>(options.intervalSeconds > 0 ? qint64(options.intervalSeconds) * 1000
                                                                             : appSettings().smartIntervalMs(),
                                                 std::numeric_limits<int>::max());
        QTimer timer;
        timer.setInterval(std::chrono::milliseconds(interval));
        QObject::connect(&timer, &QTimer::timeout, &session, &MonitorSession::poll);
        QObject::connect(&stopWatcher, &SignalWatcher::stopRequested, qApp, &QCoreApplication::quit);
        timer.start();
        QCoreApplication::exec();
    }
    session.finish();
    return filesRead ? 0 : 2;
}

} // namespace MonitorCommand
