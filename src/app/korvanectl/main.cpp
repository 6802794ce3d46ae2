#include "CtlOptions.h"
#include "InfoCommand.h"
#include "MonitorCommand.h"

#include <QCoreApplication>
#include <QTextStream>

int main(int argc, char *argv[])
{
    QCoreApplication app(argc, argv);
    QCoreApplication::setApplicationName(QStringLiteral("Korvane"));

    QString error;
    const auto options = CtlOptions::parse(app.arguments().mid(1), &error);
    if (!options) {
        QTextStream(stderr) << "korvanectl: " << error << "\n\n" << CtlOptions::usage();
        return 2;
    }
    if (options->command == QLatin1String("help")) {
        QTextStream(stdout) << CtlOptions::usage();
        return 0;
    }
    if (options->command == QLatin1String("info"))
        return InfoCommand::run(*options);
    if (options->command == QLatin1String("monitor"))
        return MonitorCommand::run(*options);
    return 2;
}
