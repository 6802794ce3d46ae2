// The window on the demo disks: time from start to a filled SMART table, resident memory when
// idle, processor time at one-minute polls, and memory over many fast polls.
//   bench_window [--cpu-minutes N] [--polls N]     (KORVANE_SIMULATE=resources/demo)
#include "ui/MainWindow.h"
#include "ui/SmartInfoPage.h"

#include "KorvaneImages.h"
#include "device/BackendFactory.h"
#include "health/SmartTableModel.h"
#include "monitor/DiskMonitor.h"
#include "settings/AppSettings.h"
#include "settings/FreeEdition.h"
#include "settings/LanguageTable.h"
#include "settings/SettingsStore.h"

#include <QApplication>
#include <QElapsedTimer>
#include <QFile>
#include <QStyleFactory>
#include <QTemporaryDir>
#include <QTextStream>
#include <QTimer>

#include <sys/resource.h>

namespace {

double residentMiB()
{
    QFile status(QStringLiteral("/proc/self/status"));
    if (!status.open(QIODevice::ReadOnly))
        return 0;
    for (const QByteArray &line : status.readAll().split('\n'))
        if (line.startsWith("VmRSS:"))
            return line.mid(6).trimmed().split(' ').first().toDouble() / 1024;
    return 0;
}

double cpuSeconds()
{
    rusage usage{};
    getrusage(RUSAGE_SELF, &usage);
    return usage.ru_utime.tv_sec + usage.ru_stime.tv_sec + (usage.ru_utime.tv_usec + usage.ru_stime.tv_usec) / 1e6;
}

void wait(int ms)
{
    QEventLoop loop;
    QTimer::singleShot(ms, &loop, &QEventLoop::quit);
    loop.exec();
}

int option(const QStringList &arguments, const QString &name, int fallback)
{
    const int at = arguments.indexOf(name);
    return at >= 0 && at + 1 < arguments.size() ? arguments.at(at + 1).toInt() : fallback;
}

} // namespace

int main(int argc, char *argv[])
{
    QElapsedTimer sinceStart;
    sinceStart.start();
    QApplication app(argc, argv);
    const QStringList arguments = QCoreApplication::arguments();
    QTextStream out(stdout);
    initKorvaneImages();
    QTemporaryDir home;
    QString error;
    SettingsStore::instance().setHomeFolder(home.path(), &error);
    setDefaults(QStyleFactory::keys());
    appSettings().poll_time = 1;
    appSettings().poll_period = 1;
    LanguageTable::loadLanguage(LanguageTable::English);

    QStringList errors;
    const FreeEdition licence;
    MainWindow window(createDriveBackend({}, &errors), licence);
    window.resize(900, 600);
    window.show();
    auto *table = window.findChild<SmartInfoPage *>()->model();
    while (table->rowCount() == 0 && sinceStart.elapsed() < 30000)
        QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents, 5);
    out << "start to filled SMART table: " << sinceStart.elapsed() << " ms\n";
    wait(3000);
    out << "idle resident memory: " << QString::number(residentMiB(), 'f', 1) << " MiB\n";
    out.flush();

    const int minutes = option(arguments, QStringLiteral("--cpu-minutes"), 0);
    if (minutes > 0) {
        const double before = cpuSeconds();
        wait(minutes * 60000);
        const double share = (cpuSeconds() - before) / (minutes * 60.0) * 100;
        out << "processor at 1-minute polls over " << minutes << " min: " << QString::number(share, 'f', 3)
            << " % of one core\n";
        out.flush();
    }

    const int polls = option(arguments, QStringLiteral("--polls"), 10000);
    int evaluations = 0; // a counter, not a spy: a spy keeps every result and would grow itself
    QObject::connect(window.monitor(), &DiskMonitor::evaluated, &app, [&evaluations] { ++evaluations; });
    window.monitor()->setSmartIntervalMs(10);
    double afterWarmUp = 0;
    while (evaluations < polls) {
        QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents, 50);
        if (afterWarmUp == 0 && evaluations >= polls / 10)
            afterWarmUp = residentMiB();
    }
    out << polls << " polls at 10 ms: resident " << QString::number(afterWarmUp, 'f', 1) << " MiB after "
        << polls / 10 << ", " << QString::number(residentMiB(), 'f', 1) << " MiB at the end\n";
    window.finishSession();
    return 0;
}
