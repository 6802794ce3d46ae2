#include "InfoCommand.h"

#include "DiskSession.h"
#include "TextReport.h"
#include "device/DiskJson.h"

#include <QJsonDocument>
#include <QTextStream>

namespace InfoCommand {

int run(const CtlOptions &options)
{
    QTextStream out(stdout);
    QTextStream err(stderr);

    bool filesRead = true;
    DriveBackend &backend = DiskSession::openBackend(options.simulate, &filesRead);

    const QList<DiskRecord> disks = DiskSession::discover(backend);

    if (options.json) {
        out << QJsonDocument(DiskJson::diskList(disks)).toJson(QJsonDocument::Indented);
    } else if (disks.isEmpty()) {
        out << "No fixed ATA disks found.\n";
    } else {
        for (int i = 0; i < disks.size(); ++i)
            out << (i ? "\n" : "") << TextReport::disk(disks.at(i), i) << '\n';
    }
    out.flush();

    const QStringList problems = DiskSession::accessProblems(backend);
    for (const QString &p : problems)
        err << "korvanectl: " << p << '\n';

    return filesRead ? 0 : 2;
}

} // namespace InfoCommand
