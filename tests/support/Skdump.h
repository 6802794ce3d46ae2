#pragma once

#include <QByteArray>
#include <QList>
#include <QString>

/// libatasmart's skdump as a reference decoder of SMART dump files.
namespace Skdump {

/// One row of skdump's attribute table.
struct Row
{
    quint32 id = 0;
    QString value, worst, threshold; ///< as printed; "n/a" where skdump has none
    QByteArray raw;                  ///< the six raw bytes in storage order
};

/// What skdump says of one dump.
struct Report
{
    QString model, serial, firmware;
    QList<Row> rows;
};

/// Path of the skdump program, or empty when it is not installed.
QString program();
/// Runs `skdump --load=PATH` and parses its output; \a ok is false when it could not run.
Report load(const QString &dumpPath, bool *ok);
/// Parses skdump's text output.
Report parse(QString text);
/// An identity string the way skdump prints it: non-printable bytes as spaces, runs of spaces folded.
QString folded(const QString &s);
/// Whether a normalised byte matches what skdump printed ("n/a" stands for 0, 0xFE and 0xFF).
bool sameNormalised(const QString &shown, quint32 ours);

} // namespace Skdump
