#include "TestEnv.h"

#include <QDir>
#include <QFileInfo>
#include <QProcess>

namespace TestEnv {

QString sourceDir()
{
    return qEnvironmentVariable("KORVANE_SOURCE_DIR");
}

QString smartDumpDir()
{
    const QString dir = QDir(qEnvironmentVariable("KORVANE_TESTDATA")).filePath(QStringLiteral("smart-dumps"));
    return QFileInfo(dir).isDir() ? QDir::cleanPath(dir) : QString();
}

QString demoDir()
{
    return QDir(sourceDir()).filePath(QStringLiteral("resources/demo"));
}

QString korvanectl()
{
    return qEnvironmentVariable("KORVANECTL");
}

QProcessEnvironment ctlEnvironment()
{
    QProcessEnvironment env = QProcessEnvironment::systemEnvironment();
    env.remove(QStringLiteral("KORVANE_SIMULATE"));
    env.remove(QStringLiteral("KORVANE_HOME"));
    return env;
}

CtlRun runKorvanectl(const QStringList &arguments, const QProcessEnvironment &environment)
{
    QProcess process;
    process.setProcessEnvironment(environment);
    process.start(korvanectl(), arguments);
    if (!process.waitForFinished(60000)) {
        process.kill();
        process.waitForFinished();
        return {};
    }
    return {process.exitStatus() == QProcess::NormalExit ? process.exitCode() : -1,
            QString::fromUtf8(process.readAllStandardOutput()), QString::fromUtf8(process.readAllStandardError())};
}

} // namespace TestEnv
