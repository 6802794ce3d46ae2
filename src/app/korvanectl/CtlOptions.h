#pragma once

#include <QByteArray>
#include <QDate>
#include <QList>
#include <QString>
#include <QStringList>

#include <optional>

/// What the command line asked for.
struct CtlOptions
{
    QString command;          ///< "info", "monitor", "scan", "history", "help" or "version"
    bool json = false;        ///< machine-readable output
    QString format = QStringLiteral("text"); ///< info: "text", "json" or "smartinfo"
    QString output;           ///< info: file to write the report to, whole or not at all
    QStringList simulate;     ///< --simulate paths, in the order given
    bool once = false;        ///< monitor: one evaluation, then exit
    int intervalSeconds = 0;  ///< monitor: poll interval; 0 = from the settings
    QString home;             ///< monitor, history: folder of the settings and event log
    QString disk;             ///< scan: index, serial or device path of a disk, or a file's path; history: a disk index or serial, empty = every disk
    qint64 fromSector = -1;   ///< scan: first sector; -1 = the disk's first
    qint64 toSector = -1;     ///< scan: last sector; -1 = the disk's last
    quint32 blockSize = 65536; ///< scan: bytes of the largest single read
    QDate from;               ///< history: first day; invalid = from the start of the log
    QDate to;                 ///< history: last day; invalid = to its end

    /// Parses the arguments as the process got them (without the program name); on failure
    /// returns nothing and puts the reason in \a error. Paths name the file the user named,
    /// whatever their encoding.
    static std::optional<CtlOptions> parse(const QList<QByteArray> &arguments, QString *error);
    /// The usage text.
    static QString usage();
};
