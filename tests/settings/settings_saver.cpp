// Saves the settings file named by its argument over and over until it is killed, each time
// with a new generation written into the first key and the last disk line, so a reader can tell
// a whole file from a mixed or cut one.
#include "settings/AppSettings.h"
#include "settings/SettingsFile.h"

#include <QList>

int main(int argc, char *argv[])
{
    if (argc != 2)
        return 2;
    const QString path = QString::fromLocal8Bit(argv[1]);
    QList<DiskRecord> disks(2000);
    for (qsizetype i = 0; i < disks.size(); ++i)
        disks[i].serial = QStringLiteral("SERIAL-%1-WITH-A-LONG-TAIL-TO-FILL-THE-FILE").arg(i);
    AppSettings settings;
    for (int generation = 1;; generation = generation % 1000 + 1) {
        settings.poll_time = generation;
        disks.last().powerOnUnit = generation;
        if (!SettingsFile::save(path, settings, disks))
            return 1;
    }
}
