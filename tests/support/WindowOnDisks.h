#pragma once

#include "device/simulated/SimulatedBackend.h"
#include "settings/LicenceLayer.h"
#include "monitor/DiskMonitor.h"
#include "ui/MainWindow.h"

#include <QSignalSpy>
#include <QStringList>

#include <memory>

/// For window tests: the main window over the simulated disks of \a paths, 900 x 600 and shown;
/// discovery starts as in the program. Stops the test program when a description is unusable.
inline std::unique_ptr<MainWindow> windowOnDisks(const QStringList &paths, const LicenceLayer &licence)
{
    QStringList errors;
    std::shared_ptr<DriveBackend> backend = SimulatedBackend::load(paths, &errors);
    if (!errors.isEmpty())
        qFatal("%s", qPrintable(errors.join(QLatin1Char('\n'))));
    auto window = std::make_unique<MainWindow>(backend, licence);
    window->resize(900, 600);
    window->show();
    return window;
}

/// Waits for the next evaluation of \a window's monitor; false when none came within \a timeoutMs.
inline bool nextEvaluation(MainWindow &window, int timeoutMs = 20000)
{
    QSignalSpy evaluated(window.monitor(), &DiskMonitor::evaluated);
    return evaluated.wait(timeoutMs);
}
