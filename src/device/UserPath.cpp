#include "UserPath.h"

#include <cerrno>
#include <cstring>

#if defined(Q_OS_LINUX)
#include <fcntl.h>
#include <filesystem>
#include <system_error>
#endif

namespace UserPath {

namespace {

// Length of the valid UTF-8 sequence at \a i, or 0 when there is none.
int sequenceLength(const QByteArray &bytes, qsizetype i)
{
    const auto byte = [&bytes](qsizetype at) { return quint8(bytes.at(at)); };
    const quint8 lead = byte(i);
    int length = 0;
    char32_t code = 0;
    if (lead < 0x80)
        return 1;
    if (lead >= 0xC2 && lead <= 0xDF)
        length = 2, code = lead & 0x1F;
    else if (lead >= 0xE0 && lead <= 0xEF)
        length = 3, code = lead & 0x0F;
    else if (lead >= 0xF0 && lead <= 0xF4)
        length = 4, code = lead & 0x07;
    else
        return 0;
    if (i + length > bytes.size())
        return 0;
    for (int k = 1; k < length; ++k) {
        if ((byte(i + k) & 0xC0) != 0x80)
            return 0;
        code = (code << 6) | (byte(i + k) & 0x3F);
    }
    // Overlong forms, surrogates and values past U+10FFFF are not text.
    const char32_t lowest[] = {0, 0, 0x80, 0x800, 0x10000};
    if (code < lowest[length] || (code >= 0xD800 && code <= 0xDFFF) || code > 0x10FFFF)
        return 0;
    return length;
}

bool isValidUtf8(const QByteArray &bytes)
{
    for (qsizetype i = 0; i < bytes.size();) {
        const int length = sequenceLength(bytes, i);
        if (length == 0)
            return false;
        i += length;
    }
    return true;
}

} // namespace

QString displayName(const QByteArray &bytes)
{
    QString out;
    for (qsizetype i = 0; i < bytes.size();) {
        const int length = sequenceLength(bytes, i);
        if (length == 0) {
            out += QStringLiteral("\\x%1").arg(quint8(bytes.at(i)), 2, 16, QLatin1Char('0'));
            ++i;
        } else {
            out += QString::fromUtf8(bytes.constData() + i, length);
            i += length;
        }
    }
    return out;
}

QString fromLocalBytes(const QByteArray &bytes, bool createFolder, QString *error)
{
    if (isValidUtf8(bytes))
        return QString::fromUtf8(bytes);
#if defined(Q_OS_LINUX)
    if (createFolder) {
        std::error_code ec;
        std::filesystem::create_directories(std::filesystem::path(bytes.toStdString()), ec);
    }
    // The descriptor stays open: the path below is only valid while it is.
    const int fd = ::open(bytes.constData(), O_PATH | O_CLOEXEC);
    if (fd >= 0)
        return QStringLiteral("/proc/self/fd/%1").arg(fd);
    if (error)
        *error = QStringLiteral("%1: %2").arg(displayName(bytes), QString::fromLocal8Bit(std::strerror(errno)));
#else
    if (error)
        *error = QStringLiteral("%1: the name is not valid UTF-8").arg(displayName(bytes));
#endif
    return QString();
}

} // namespace UserPath
