#pragma once

#include "AppSettings.h"
#include "DiskSettings.h"

#include "device/DiskRecord.h"

#include <QByteArray>
#include <QList>
#include <QPair>
#include <QString>
#include <QStringList>

/// Reading and writing the settings file: a flat list of "key=value" lines followed by one
/// "disk[serial]=(monitored,unit)" line per disk, CR LF line ends, no sections.
class SettingsFile
{
public:
    /// Reads path into settings; diskSettings is cleared, then filled from the disk lines.
    /// Values out of range leave the held value; an empty string never clears one.
    /// False when nothing was read. \a error is set whenever the user should hear of it: path is
    /// not a regular file, cannot be read (other than by being absent: that is silent), or is
    /// longer than 1 MB, of which only the first MB is read (and true is returned).
    static bool load(const QString &path, AppSettings &settings, QList<DiskSettings> &diskSettings,
                     QString *error = nullptr);
    /// Parses file content as load() does (line ends may be LF or CR LF).
    static void parse(const QByteArray &content, AppSettings &settings, QList<DiskSettings> &diskSettings);
    /// The file content for settings and the disks present now, in the local 8-bit encoding;
    /// control characters and "=" in a serial are written as spaces, so it cannot set a key.
    static QByteArray render(const AppSettings &settings, const QList<DiskRecord> &disks);
    /// Writes render() to path through a temporary file and a rename, readable by its owner only.
    static bool save(const QString &path, const AppSettings &settings, const QList<DiskRecord> &disks);
    /// Applies the first entry whose serial equals disk.serial as render() writes it: its
    /// monitoring flag, and its attribute-9 unit only when both the entry's and the disk's unit
    /// are already known.
    static void applyDiskSettings(const QList<DiskSettings> &diskSettings, DiskRecord &disk);
    /// Each saved key (without "=") with its value as text, in the order the loader tests them, as it
    /// should read back:
    /// numbers in decimal, flags as 0 or 1, texts as they are.
    static QList<QPair<QString, QString>> fieldValues(const AppSettings &settings);
    /// The texts the loader looks for in a line ("poll_time=", ..., and "disk[" of the disk lines):
    /// a value holding one of them does not read back as it was written.
    static QStringList keyTexts();
};
