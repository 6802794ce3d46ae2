#include "IdentifyDecoder.h"

#include <algorithm>
#include <array>

namespace IdentifyDecoder {

namespace {

// Identity fields are short; anything longer than this is not a string field.
constexpr int kMaxStringLength = 64;

// Words 83, 84 and 87 only mean something when their top two bits read 01.
bool wordIsValid(std::uint16_t word)
{
    return (word & 0xC000) == 0x4000;
}

// Only the C white space set: drives pad with spaces, sometimes with control
// characters, and a Latin-1 no-break space is a real character here.
bool isPadding(QChar c)
{
    const char16_t u = c.unicode();
    return u == ' ' || u == '\t' || u == '\n' || u == '\v' || u == '\f' || u == '\r';
}

struct MinorVersion
{
    int major;
    const char *text;
};

// Word 81 of IDENTIFY, indexed by its value. Major -3 marks the two ATA-3
// draft revisions; major 0 means the row does not decide the version.
constexpr std::array<MinorVersion, 35> kMinorVersions = {{
    {0, "Device does not report version"},
    {1, "ATA-1 X3T9.2 781D prior to revision 4"},
    {1, "ATA-1 published, ANSI X3.221-1994"},
    {1, "ATA-1 X3T9.2 781D revision 4"},
    {2, "ATA-2 published, ANSI X3.279-1996"},
    {2, "ATA-2 X3T10 948D prior to revision 2k"},
    {-3, "ATA-3 X3T10 2008D revision 1"},
    {2, "ATA-2 X3T10 948D revision 2k"},
    {-3, "ATA-3 X3T10 2008D revision 0"},
    {2, "ATA-2 X3T10 948D revision 3"},
    {3, "ATA-3 published, ANSI X3.298-199x"},
    {3, "ATA-3 X3T10 2008D revision 6"},
    {3, "ATA-3 X3T13 2008D revision 7 and 7a"},
    {4, "ATA/ATAPI-4 X3T13 1153D revision 6"},
    {4, "ATA/ATAPI-4 T13 1153D revision 13"},
    {4, "ATA/ATAPI-4 X3T13 1153D revision 7"},
    {4, "ATA/ATAPI-4 T13 1153D revision 18"},
    {4, "ATA/ATAPI-4 T13 1153D revision 15"},
    {4, "ATA/ATAPI-4 published, ANSI NCITS 317-1998"},
    {5, "ATA/ATAPI-5 T13 1321D revision 3"},
    {4, "ATA/ATAPI-4 T13 1153D revision 14"},
    {5, "ATA/ATAPI-5 T13 1321D revision 1"},
    {5, "ATA/ATAPI-5 published, ANSI NCITS 340-2000"},
    {4, "ATA/ATAPI-4 T13 1153D revision 17"},
    {6, "ATA/ATAPI-6 T13 1410D revision 0"},
    {6, "ATA/ATAPI-6 T13 1410D revision 3a"},
    {7, "ATA/ATAPI-7 T13 1532D revision 1"},
    {6, "ATA/ATAPI-6 T13 1410D revision 2"},
    {6, "ATA/ATAPI-6 T13 1410D revision 1"},
    {0, "reserved"},
    {7, "ATA/ATAPI-7 T13 1532D revision 0"},
    {0, "reserved"},
    {0, "reserved"},
    {7, "ATA/ATAPI-7 T13 1532D revision 4a"},
    {6, "ATA/ATAPI-6 published, ANSI INCITS 361-2002"},
}};

} // namespace

QString decodeString(const Sector &identify, int offset, int length)
{
    if (offset < 0 || offset >= int(identify.size()) || length <= 0)
        return QString();
    length = std::min({length, kMaxStringLength, int(identify.size()) - offset});

    // Each word carries its first character in the high byte.
    QByteArray bytes;
    bytes.reserve(length);
    for (int i = 0; i + 1 < length; i += 2) {
        bytes.append(char(identify[offset + i + 1]));
        bytes.append(char(identify[offset + i]));
    }
    // A NUL ends the text, as in the C string the field was meant to be.
    const qsizetype nul = bytes.indexOf('\0');
    if (nul >= 0)
        bytes.truncate(nul);

    const QString text = QString::fromLatin1(bytes);
    qsizetype begin = 0;
    qsizetype end = text.size();
    while (begin < end && isPadding(text.at(begin)))
        ++begin;
    while (end > begin && isPadding(text.at(end - 1)))
        --end;
    return text.mid(begin, end - begin);
}

int smartSupported(const Sector &identify)
{
    if (!wordIsValid(sectorWord(identify, 83)))
        return -1;
    return sectorWord(identify, 82) & 1;
}

int smartEnabled(const Sector &identify)
{
    if (!wordIsValid(sectorWord(identify, 87)))
        return -1;
    return sectorWord(identify, 85) & 1;
}

QString minorVersionText(int minor)
{
    if (minor < 0 || minor >= int(kMinorVersions.size()))
        return QString();
    return QString::fromLatin1(kMinorVersions[minor].text);
}

AtaVersion ataVersion(const Sector &identify)
{
    const std::uint16_t majorWord = sectorWord(identify, 80);
    const std::uint16_t minor = sectorWord(identify, 81);
    if (majorWord == 0 || majorWord == 0xFFFF)
        return {-1, QString()};

    if (minor >= 1 && minor < kMinorVersions.size() && kMinorVersions[minor].major != 0)
        return {kMinorVersions[minor].major, minorVersionText(minor)};

    // The minor word did not decide: take the newest standard the major word
    // claims (bit n set = supports ATA-n).
    for (int bit = 15; bit >= 1; --bit) {
        if (majorWord & (1u << bit))
            return {bit, QString()};
    }
    return {1, QString()};
}

void applyIdentify(DiskRecord &disk, const Sector &identify)
{
    disk.smartSupported = smartSupported(identify);
    // A disk that does not say whether SMART is on still gets SMART commands.
    const int enabled = smartEnabled(identify);
    disk.smartEnabled = enabled == -1 ? 1 : enabled;

    // The storage descriptor was read first: its model and firmware win, but
    // the drive's own serial is the one the settings remember disks by.
    const QString model = decodeString(identify, kModelOffset, kModelLength);
    const QString serial = decodeString(identify, kSerialOffset, kSerialLength);
    const QString firmware = decodeString(identify, kFirmwareOffset, kFirmwareLength);
    if (disk.model.isEmpty())
        disk.model = model;
    if (!serial.isEmpty())
        disk.serial = serial;
    if (disk.firmware.isEmpty())
        disk.firmware = firmware;

    const AtaVersion version = ataVersion(identify);
    disk.ataMajorVersion = version.major;
    disk.ataStandardText = version.text;
}

} // namespace IdentifyDecoder
