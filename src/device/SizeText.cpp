#include "SizeText.h"

#include <QLocale>

#ifdef Q_OS_WIN
#include "windows/SystemLocale.h"
#endif

namespace SizeText {

QString byteCount(quint64 count)
{
    const QString digits = QString::number(count);
    QString grouped;
    grouped.reserve(digits.size() + digits.size() / 3);
    for (qsizetype i = 0; i < digits.size(); ++i) {
        if (i > 0 && (digits.size() - i) % 3 == 0)
            grouped.append(QLatin1Char(' '));
        grouped.append(digits.at(i));
    }
    grouped.append(count == 1 ? QLatin1String(" byte") : QLatin1String(" bytes"));
    return grouped;
}

QString shortSize(qint64 count, QChar systemDecimalSeparator)
{
    constexpr qint64 kKilo = 1024;
    constexpr qint64 kMega = kKilo * 1024;
    constexpr qint64 kGiga = kMega * 1024;
    constexpr qint64 kTera = kGiga * 1024;

    if (count < kKilo)
        return QStringLiteral("%1 B").arg(count);

    qint64 divisor = kTera;
    QLatin1String unit("TB");
    if (count < kMega) {
        divisor = kKilo;
        unit = QLatin1String("KB");
    } else if (count < kGiga) {
        divisor = kMega;
        unit = QLatin1String("MB");
    } else if (count < kTera) {
        divisor = kGiga;
        unit = QLatin1String("GB");
    }

    // Formatted without locale (always a point), but the dangling separator
    // is looked for as the system writes it: under a comma locale a whole
    // number keeps its point ("2. KB").
    QString text = QString::number(double(count) / double(divisor), 'f', 3);
    for (int i = 0; i < 3 && text.endsWith(QLatin1Char('0')); ++i)
        text.chop(1);
    if (text.endsWith(systemDecimalSeparator))
        text.chop(1);
    return text + QLatin1Char(' ') + unit;
}

QString shortSize(qint64 count)
{
#ifdef Q_OS_WIN
    // The system default locale, which Qt's system locale (the user's) may differ from.
    return shortSize(count, QChar(SystemLocale::decimalSeparator()));
#else
    const QString point = QLocale::system().decimalPoint();
    return shortSize(count, point.isEmpty() ? QLatin1Char('.') : point.at(0));
#endif
}

} // namespace SizeText
