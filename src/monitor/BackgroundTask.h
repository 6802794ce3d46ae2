#pragma once

#include "DetachedThreads.h"

#include <QObject>
#include <QPointer>
#include <QThread>

#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <utility>

/// Runs one piece of work that may block in the kernel (discovery, a volume
/// refresh) on a thread of its own and hands its result over on the thread
/// of a context object.
///
/// Nobody ever waits for the thread: when the context is gone by the time the
/// work ends, the result is dropped; a thread still blocked when the program
/// ends is left behind. The thread deletes itself once it has finished.
namespace BackgroundTask {

/// The result slot shared by the worker and the receiver. The lock orders the
/// worker's writes before the receiver's reads in terms a race detector can
/// follow (the event queue's own locks are inside Qt, which it does not see).
template <typename T>
class Handover
{
public:
    /// Stores the worker's result.
    void put(T value)
    {
        std::lock_guard lock(m_mutex);
        m_value = std::move(value);
    }
    /// Takes the result once.
    std::optional<T> take()
    {
        std::lock_guard lock(m_mutex);
        return std::exchange(m_value, std::nullopt);
    }

private:
    std::mutex m_mutex;
    std::optional<T> m_value;
};

/// Starts \a work on a new thread; \a done gets its result on \a context's
/// thread unless \a context is destroyed first. Returns the thread, which is
/// null once it has deleted itself.
template <typename T>
QPointer<QThread> run(QObject *context, std::function<T()> work, std::function<void(T)> done)
{
    auto box = std::make_shared<Handover<T>>();
    QThread *thread = QThread::create([box, work = std::move(work)] { box->put(work()); });
    QObject::connect(thread, &QThread::finished, context, [box, done = std::move(done)] {
        if (std::optional<T> value = box->take())
            done(std::move(*value));
    });
    QObject::connect(thread, &QThread::finished, thread, &QObject::deleteLater);
    DetachedThreads::adopt(thread);
    thread->start();
    return thread;
}

} // namespace BackgroundTask
