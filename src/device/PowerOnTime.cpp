#include "PowerOnTime.h"

namespace PowerOnTime {

namespace {

// Calendar-free on purpose: a year of 365 days and a month of 30, so that the same hours
// always give the same words.
constexpr quint64 kHoursPerYear = 8760;
constexpr quint64 kHoursPerMonth = 720;
constexpr quint64 kHoursPerDay = 24;

QString countFragment(quint64 count, QLatin1StringView one, QLatin1StringView many)
{
    return (count == 1 ? QString(one) : QString(many)).arg(count);
}

} // namespace

quint64 toHours(quint64 value, int unitCode)
{
    switch (unitCode) {
    case 1:
        return value;
    case 2:
        return value / 60;
    case 3:
        return value / 120;
    case 4:
        return value / 3600;
    default:
        return 0;
    }
}

QString durationText(quint64 value, int unitCode)
{
    if (unitCode < 1 || unitCode > 4)
        return QStringLiteral("Unknown");

    const quint64 total = toHours(value, unitCode);
    const quint64 years = total / kHoursPerYear;
    const quint64 months = total % kHoursPerYear / kHoursPerMonth;
    const quint64 days = total % kHoursPerYear % kHoursPerMonth / kHoursPerDay;
    const quint64 hours = total % kHoursPerDay;

    QString text;
    if (years > 0)
        text += countFragment(years, QLatin1StringView("%1 year "), QLatin1StringView("%1 years "));
    if (months > 0)
        text += countFragment(months, QLatin1StringView("%1 month "), QLatin1StringView("%1 months "));
    if (days > 0)
        text += countFragment(days, QLatin1StringView("%1 day "), QLatin1StringView("%1 days "));
    text += countFragment(hours, QLatin1StringView("%1 hour. "), QLatin1StringView("%1 hours. "));
    text += QStringLiteral("(%1 hours)").arg(total);
    return text;
}

QString workTimeLabel(const DiskRecord &disk)
{
    QString label = QStringLiteral("<B>Work Time:</B> ");
    if (disk.powerOnUnit == 0)
        return label + QStringLiteral("Not supported");
    label += durationText(disk.powerOnRaw, disk.powerOnUnit);
    // The unit is a guess until the counter has been watched growing for a while.
    if (!disk.powerOnUnitFixed)
        label += QStringLiteral(" <B>Verifying numbers...");
    return label;
}

int unitFromGrowth(quint64 growth)
{
    if (growth < 2)
        return 1;
    if (growth < 4)
        return 2;
    if (growth < 11)
        return 3;
    return 4;
}

} // namespace PowerOnTime
