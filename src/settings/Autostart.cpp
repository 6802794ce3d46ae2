#include "Autostart.h"

#include "AppSettings.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QSaveFile>
#include <QStandardPaths>

namespace Autostart {

QString entryPath()
{
    return QStandardPaths::writableLocation(QStandardPaths::GenericConfigLocation)
        + QStringLiteral("/autostart/korvane.desktop");
}

QString execLine(const QString &executable)
{
    // Inside the quotes, four characters are escaped with a backslash; then the whole value is
    // a desktop-entry string, where a backslash is written twice and "%" starts a field code.
    QString quoted;
    for (const QChar c : executable) {
        if (c == QLatin1Char('"') || c == QLatin1Char('`') || c == QLatin1Char('$') || c == QLatin1Char('\\'))
            quoted += QLatin1Char('\\');
        quoted += c;
    }
    quoted.replace(QLatin1Char('\\'), QStringLiteral("\\\\"));
    quoted.replace(QLatin1Char('%'), QStringLiteral("%%"));
    return QStringLiteral("\"%1\" %2").arg(quoted, QStringLiteral("hide"));
}

int setAutostart(bool enable, const QString &executable)
{
    const QString path = entryPath();
    if (!enable)
        return QFile::exists(path) && QFile::remove(path) ? Done : RemoveFailed;
    if (!QDir().mkpath(QFileInfo(path).path()))
        return FolderUnavailable;
    // Written whole or not at all: a session manager must never read half an entry.
    QSaveFile file(path);
    if (!file.open(QIODevice::WriteOnly))
        return WriteFailed;
    const QString entry = QStringLiteral("[Desktop Entry]\n"
                                         "Type=Application\n"
                                         "Name=Korvane\n"
                                         "Comment=Watches the health of your hard disks\n"
                                         "Exec=%1\n"
                                         "Icon=korvane\n"
                                         "Terminal=false\n"
                                         "X-GNOME-Autostart-enabled=true\n")
                              .arg(execLine(executable));
    file.write(entry.toUtf8());
    return file.commit() ? Done : WriteFailed;
}

int setAutostart(bool enable)
{
    return setAutostart(enable, appSettings().executableDirectory + QStringLiteral("Korvane"));
}

} // namespace Autostart
