#include "CtlOptions.h"
#include "HistoryCommand.h"
#include "InfoCommand.h"
#include "MonitorCommand.h"
#include "ScanCommand.h"

#include "settings/AppVersion.h"

#include <QCoreApplication>
#include <QTextStream>

int main(int argc, char *argv[])
{
    QCoreApplication app(argc, argv);
    QCoreApplication::setApplicationName(QStringLiteral("Korvane"));
    QCoreApplication::setApplicationVersion(AppVersion::text());

    // The arguments as bytes: a path is not always valid text in the locale's encoding.
    QList<QByteArray> arguments;
    for (int i = 1; i < argc; ++i)
        arguments << QByteArray(argv[i]);

    QString error;
    const auto options = CtlOptions::parse(arguments, &error);
    if (!options) {
        QTextStream(stderr) << "korvanectl: " << error << "\n\n" << CtlOptions::usage();
        return 2;
    }
    if (options->command == QLatin1String("help")) {
        QTextStream(stdout) << CtlOptions::usage();
        return 0;
    }
    if (options->command == QLatin1String("version")) {
        QTextStream(stdout) << "korvanectl " << AppVersion::text() << '\n';
        return 0;
    }
    if (options->command == QLatin1String("info"))
        return InfoCommand::run(*options);
    if (options->command == QLatin1String("monitor"))
        return MonitorCommand::run(*options);
    if (options->command == QLatin1String("scan"))
        return ScanCommand::run(*options);
    if (options->command == QLatin1String("history"))
        return HistoryCommand::run(*options);
    return 2;
}
