#include "SmartDump.h"

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

QByteArray sectorBytes(const Sector &s)
{
    return QByteArray(reinterpret_cast<const char *>(s.data()), int(s.size()));
}

} // namespace

std::optional<SmartDump> SmartDump::parse(const QByteArray &bytes, QString *error)
{
    auto fail = [error](const QString &why) -> std::optional<SmartDump> {
        if (error)
            *error = why;
        return std::nullopt;
    };
    if (bytes.size() >= kMaxDumpSize)
        return fail(QStringLiteral("too large for a SMART dump (%1 bytes)").arg(bytes.size()));

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
            return fail(QStringLiteral("section %1 runs past the end of the file").arg(QString::fromLatin1(tag.toHex())));
        const uchar *body = b + pos;

        auto take = [&](std::optional<Sector> &slot) -> bool {
            if (length != 512 || slot)
                return false;
            slot.emplace();
            std::copy(body, body + 512, slot->begin());
            return true;
        };
        bool ok = true;
        if (tag == "IDFY")
            ok = take(dump.identify);
        else if (tag == "SMDT")
            ok = take(dump.smartData);
        else if (tag == "SMTH")
            ok = take(dump.thresholds);
        else if (tag == "SMST") {
            ok = length == 4 && !dump.healthy;
            if (ok)
                dump.healthy = (body[0] | body[1] | body[2] | body[3]) != 0;
        }
        if (!ok)
            return fail(QStringLiteral("section %1 has the wrong length or appears twice").arg(QString::fromLatin1(tag)));
        pos += length;
    }
    if (!dump.identify)
        return fail(QStringLiteral("has no IDENTIFY (IDFY) section"));
    return dump;
}

std::optional<SmartDump> SmartDump::load(const QString &path, QString *error)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly)) {
        if (error)
            *error = file.errorString();
        return std::nullopt;
    }
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
