#include "ProcessCount.h"

#include <QDir>
#include <QFile>

#ifdef Q_OS_WIN
#include "windows/ProcessSnapshot.h"
#endif

namespace {

// The kernel keeps at most 15 characters of a process name.
constexpr int kCommLength = 15;

QString processName(const QString &processDir)
{
    QFile comm(processDir + QStringLiteral("/comm"));
    if (!comm.open(QIODevice::ReadOnly))
        return {};
    return QString::fromLocal8Bit(comm.readLine(64)).trimmed();
}

} // namespace

int countProcesses(const QString &name, const QString &procRoot)
{
    const QString wanted = name.left(kCommLength).toUpper();
    const QStringList entries = QDir(procRoot).entryList(QDir::Dirs | QDir::NoDotAndDotDot);
    int count = 0;
    for (const QString &entry : entries) {
        bool isPid = false;
        entry.toUInt(&isPid);
        // A process that ended since the listing has no name any more and is not counted.
        if (isPid && processName(procRoot + QLatin1Char('/') + entry).toUpper() == wanted)
            ++count;
    }
    return count;
}

bool isProcessRunning(const QString &name)
{
#ifdef Q_OS_WIN
    return ProcessSnapshot::isProcessRunning(name.toStdWString());
#else
    return countProcesses(name) > 2;
#endif
}
