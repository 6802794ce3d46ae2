#pragma once

#include <QChar>
#include <QString>

/// The size texts used throughout the interface.
namespace SizeText {

/// "1 234 567 bytes", "1 byte".
QString byteCount(quint64 count);
/// "1.5 KB", "2 KB", "1023 B"; a trailing decimal separator of the given kind is dropped.
QString shortSize(qint64 count, QChar systemDecimalSeparator);
/// shortSize with the system locale's decimal separator.
QString shortSize(qint64 count);

} // namespace SizeText
