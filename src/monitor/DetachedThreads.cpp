#include "DetachedThreads.h"

#include <QSet>
#include <QThread>

namespace DetachedThreads {

namespace {

QSet<QThread *> &listed()
{
    // Never destroyed: threads may still be listed when static objects go away at exit.
    static auto *threads = new QSet<QThread *>;
    return *threads;
}

} // namespace

void adopt(QThread *thread)
{
    if (listed().contains(thread))
        return;
    listed().insert(thread);
    QObject::connect(thread, &QObject::destroyed, [thread] { listed().remove(thread); });
}

} // namespace DetachedThreads
