#include "UserPath.h"

#include <cerrno>
#include <cstring>

#if defined(Q_OS_LINUX)
#include <fcntl.h>
#include <sys/stat.h>
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

QString notUtf8Text()
{
    return QStringLiteral("the name is not valid UTF-8 (shown with %1), so the file cannot be opened; rename it")
        .arg(QChar(QChar::ReplacementCharacter));
}

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
    auto fail = [&](const QString &why) {
        if (error)
            *error = QStringLiteral("%1: %2").arg(displayName(bytes), why);
        return QString();
    };
#if defined(Q_OS_LINUX)
    if (createFolder) {
        std::error_code ec;
        std::filesystem::create_directories(std::filesystem::path(bytes.toStdString()), ec);
    }
    // The descriptors stay open: the paths below are only valid while they are. The last
    // part of the name is kept as text where it can be, for whoever looks at its suffix.
    const qsizetype slash = bytes.lastIndexOf('/');
    const QByteArray base = bytes.mid(slash + 1);
    const QByteArray folder = slash < 0 ? QByteArray(".") : slash == 0 ? QByteArray("/") : bytes.left(slash);
    int fd = -1;
    QString rest;
    if (!base.isEmpty() && isValidUtf8(base)) {
        fd = ::open(folder.constData(), O_PATH | O_DIRECTORY | O_CLOEXEC);
        rest = QLatin1Char('/') + QString::fromUtf8(base);
    } else {
        struct stat info = {};
        if (::stat(bytes.constData(), &info) != 0)
            return fail(QString::fromLocal8Bit(std::strerror(errno)));
        // A folder is reached by its descriptor alone; a file's name is needed for its suffix.
        if (!S_ISDIR(info.st_mode))
            return fail(notUtf8Text());
        fd = ::open(bytes.constData(), O_PATH | O_DIRECTORY | O_CLOEXEC);
    }
    if (fd < 0)
        return fail(QString::fromLocal8Bit(std::strerror(errno)));
    return QStringLiteral("/proc/self/fd/%1").arg(fd) + rest;
#else
    Q_UNUSED(createFolder);
    return fail(notUtf8Text());
#endif
}

} // namespace UserPath
