#include "Skdump.h"

#include <QProcess>
#include <QRegularExpression>
#include <QStandardPaths>

namespace Skdump {

QString program()
{
    return QStandardPaths::findExecutable(QStringLiteral("skdump"));
}

Report load(const QString &dumpPath, bool *ok)
{
    QProcess process;
    process.start(program(), {QStringLiteral("--load=") + dumpPath});
    *ok = process.waitForFinished(10000) && process.exitStatus() == QProcess::NormalExit;
    return parse(QString::fromLatin1(process.readAllStandardOutput()));
}

Report parse(QString text)
{
    Report out;
    // Bad values come wrapped in ANSI bold even when the output is no terminal.
    text.remove(QRegularExpression(QStringLiteral("\x1b\\[[0-9]*m")));
    const QRegularExpression identity(QStringLiteral("^(Model|Serial|Firmware): \\[(.*)\\]$"));
    // Pretty values may hold spaces or overflow their column; the raw field is
    // always 0x and twelve hex digits.
    const QRegularExpression row(
        QStringLiteral("^\\s*(\\d+)\\s+\\S+\\s+(\\S+)\\s+(\\S+)\\s+(\\S+)\\s+.*\\s0x([0-9a-f]{12})\\s"));
    for (const QString &line : text.split(QLatin1Char('\n'))) {
        if (const auto m = identity.match(line); m.hasMatch()) {
            const QString key = m.captured(1);
            (key == QLatin1String("Model") ? out.model : key == QLatin1String("Serial") ? out.serial : out.firmware) =
                m.captured(2);
        } else if (const auto m = row.match(line + QLatin1Char(' ')); m.hasMatch()) {
            out.rows.append({m.captured(1).toUInt(), m.captured(2), m.captured(3), m.captured(4),
                             QByteArray::fromHex(m.captured(5).toLatin1())});
        }
    }
    return out;
}

QString folded(const QString &s)
{
    QString out;
    for (QChar c : s) {
        const QChar printable = (c.unicode() >= 0x20 && c.unicode() < 0x7F) ? c : QLatin1Char(' ');
        if (printable == QLatin1Char(' ') && out.endsWith(QLatin1Char(' ')))
            continue;
        out.append(printable);
    }
    return out.trimmed();
}

bool sameNormalised(const QString &shown, quint32 ours)
{
    if (shown == QLatin1String("n/a"))
        return ours == 0 || ours == 0xFE || ours == 0xFF;
    return shown.toUInt() == ours;
}

} // namespace Skdump
