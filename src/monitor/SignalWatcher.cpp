#include "SignalWatcher.h"

#include <QSocketNotifier>

#if defined(Q_OS_UNIX)
#include <csignal>
#include <fcntl.h>
#include <unistd.h>

namespace {

constexpr int kStopSignals[] = {SIGINT, SIGTERM, SIGHUP};

// The handler may only do async-signal-safe work: it writes one byte into a
// pipe whose other end the event loop watches. The byte stays in the pipe
// until the loop runs, so a signal that comes before it is not lost.
int s_pipe[2] = {-1, -1};

void onSignal(int)
{
    const char byte = 1;
    [[maybe_unused]] const auto written = ::write(s_pipe[1], &byte, 1);
}

} // namespace

SignalWatcher::SignalWatcher(QObject *parent)
    : QObject(parent)
{
    ::signal(SIGPIPE, SIG_IGN);
    if (::pipe2(s_pipe, O_CLOEXEC | O_NONBLOCK) != 0)
        return;
    m_notifier = new QSocketNotifier(s_pipe[0], QSocketNotifier::Read, this);
    connect(m_notifier, &QSocketNotifier::activated, this, [this] {
        char buffer[16];
        while (::read(s_pipe[0], buffer, sizeof buffer) > 0) {
        }
        emit stopRequested();
    });
    struct sigaction action = {};
    action.sa_handler = onSignal;
    sigemptyset(&action.sa_mask);
    action.sa_flags = SA_RESTART;
    for (int signal : kStopSignals)
        sigaction(signal, &action, nullptr);
}

SignalWatcher::~SignalWatcher()
{
    for (int signal : kStopSignals)
        ::signal(signal, SIG_DFL);
    delete m_notifier;
    ::close(s_pipe[0]);
    ::close(s_pipe[1]);
    s_pipe[0] = s_pipe[1] = -1;
}

#else

// Elsewhere the console's own Ctrl+C handling ends the process.
SignalWatcher::SignalWatcher(QObject *parent)
    : QObject(parent)
{
}

SignalWatcher::~SignalWatcher() = default;

#endif
