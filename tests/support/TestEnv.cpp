#include "TestEnv.h"

#include <QDir>
#include <QFileInfo>

namespace TestEnv {

QString sourceDir()
{
    return qEnvironmentVariable("KORVANE_SOURCE_DIR");
}

QString binaryDir()
{
    return qEnvironmentVariable("KORVANE_BINARY_DIR");
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

} // namespace TestEnv
