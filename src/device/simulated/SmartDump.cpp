#include "SmartDump.h"

#include "device/LocalFile.h"

#include <QFile>

namespace {

// skdump refuses anything this large; a dump is four small sections.
constexpr qint64 kMaxDumpSize = 4096;

quint32 readBigEndian32(const uchar *p)
{
    return quint32(p[0]) << 24 | quint32(p[1]) << 16 | quint32(p[2]) << 8 | quint32(p[3]);
}

void appendSection(QByteArray &out, const char *tag, const QByteArray &payload)
{
    out.append(tag, 4);
    const quint32 n = quint32(payload.size());
    const char len[4] = {char(n >> 24), char(n >> 16), char(n >> 8), char(n)};
    out.append(len, 4);
    out.append(payload);
}

std::optional<SmartDump> failure(QString *error, const QString &why)
{
    if (error)
        *error = why;
    return std::nullopt;
}

QString tooLarge(qint64 size)
{
    return QStringLiteral("is %1 bytes long, too large for a SMART dump (at most %2 bytes)").arg(size).arg(kMaxDumpSize - 1);
}

// A section's tag as text, quoted; bytes that are not printable ASCII as \xNN.
QString sectionName(const QByteArray &tag)
{
    QString name;
    for (const char c : tag) {
        const uchar u = uchar(c);
        name += u >= 0x20 && u < 0x7F ? QString(QLatin1Char(c)) : QStringLiteral("\\x%1").arg(u, 2, 16, QLatin1Char('0'));
    }
    return QLatin1Char('"') + name + QLatin1Char('"');
}

// Stores one section of a known kind in \a dump (others are skipped); why it cannot be
// taken, or nothing.
QString takeSection(SmartDump &dump, const QByteArray &tag, const uchar *body, quint32 length)
{
    const bool status = tag == "SMST";
    std::optional<Sector> *sector = tag == "IDFY"   ? &dump.identify
                                    : tag == "SMDT" ? &dump.smartData
                                    : tag == "SMTH" ? &dump.thresholds
                                                    : nullptr;
    if (!status && !sector)
        return QString();
    const quint32 expected = status ? 4 : 512;
    if (length != expected)
        return QStringLiteral("section %1 is %2 bytes long; it must be %3").arg(sectionName(tag)).arg(length).arg(expected);
    if (status ? dump.healthy.has_value() : sector->has_value())
        return QStringLiteral("section %1 appears twice").arg(sectionName(tag));
    if (status) {
        dump.healthy = (body[0] | body[1] | body[2] | body[3]) != 0;
    } else {
        sector->emplace();
        std::copy(body, body + 512, (*sector)->begin());
    }
    return QString();
}

QByteArray sectorBytes(const Sector &s)
{
    return QByteArray(reinterpret_cast<const char *>(s.data()), int(s.size()));
}

} // namespace

std::optional<SmartDump> SmartDump::parse(const QByteArray &bytes, QString *error)
{
    const auto fail = [error](const QString &why) { return failure(error, why); };
    if (bytes.size() >= kMaxDumpSize)
        return fail(tooLarge(bytes.size()));

    SmartDump dump;
    const auto *b = reinterpret_cast<const uchar *>(bytes.constData());
    const qsizetype size = bytes.size();
    qsizetype pos = 0;
    while (pos < size) {
        if (size - pos < 8)
            return fail(QStringLiteral("ends inside a section header at byte %1").arg(pos));
        const QByteArray tag(bytes.constData() + pos, 4);
        const quint32 length = readBigEndian32(b + pos + 4);
        pos += 8;
        if (quint64(size - pos) < length)
            return fail(QStringLiteral("section %1 declares %2 bytes, but only %3 are left in the file")
                            .arg(sectionName(tag))
                            .arg(length)
                            .arg(size - pos));
        if (const QString why = takeSection(dump, tag, b + pos, length); !why.isEmpty())
            return fail(why);
        pos += length;
    }
    if (!dump.identify)
        return fail(QStringLiteral("has no IDENTIFY (IDFY) section"));
    return dump;
}

std::optional<SmartDump> SmartDump::load(const QString &path, QString *error)
{
    const auto fail = [error](const QString &why) { return failure(error, why); };
    // A FIFO would block the open; a device would be read as if it were a dump.
    if (const QString what = LocalFile::notRegular(path); !what.isEmpty())
        return fail(QStringLiteral("is %1").arg(what));
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return fail(file.errorString());
    if (file.size() >= kMaxDumpSize)
        return fail(tooLarge(file.size()));
    return parse(file.read(kMaxDumpSize), error);
}

QByteArray SmartDump::serialize() const
{
    QByteArray out;
    if (identify)
        appendSection(out, "IDFY", sectorBytes(*identify));
    if (healthy) {
        const char status[4] = {0, 0, 0, char(*healthy ? 1 : 0)};
        appendSection(out, "SMST", QByteArray(status, 4));
    }
    if (smartData)
        appendSection(out, "SMDT", sectorBytes(*smartData));
    if (thresholds)
        appendSection(out, "SMTH", sectorBytes(*thresholds));
    return out;
}
