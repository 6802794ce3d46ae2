#pragma once

#include "device/simulated/SimulatedBackend.h"
#include "settings/LicenceLayer.h"
#include "monitor/DiskMonitor.h"
#include "ui/MainWindow.h"

#include <QApplication>
#include <QMessageBox>
#include <QSignalSpy>
#include <QStringList>
#include <QTimer>

#include <functional>
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

/// While it lives, answers every message box that comes up with OK and keeps what each said
/// (icon, title and text), so that a modal box does not stop a test.
class BoxAnswerer : public QObject
{
public:
    QList<QStringList> said;

    BoxAnswerer()
    {
        connect(&m_timer, &QTimer::timeout, this, [this] {
            if (auto *box = qobject_cast<QMessageBox *>(QApplication::activeModalWidget())) {
                said << QStringList{QString::number(box->icon()), box->windowTitle(), box->text()};
                box->accept();
            }
        });
        m_timer.start(10);
    }
    /// The texts of the boxes so far, in order.
    QStringList texts() const
    {
        QStringList texts;
        for (const QStringList &box : said)
            texts << box.last();
        return texts;
    }

private:
    QTimer m_timer;
};

/// Runs \a action, answering the message boxes it shows; what each said, in order.
inline QList<QStringList> answeringBoxes(const std::function<void()> &action)
{
    BoxAnswerer answerer;
    action();
    return answerer.said;
}
