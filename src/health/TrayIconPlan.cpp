#include "TrayIconPlan.h"

#include <array>

TrayIconPlan TrayIconPlan::decide(const QList<DiskRecord> &disks, const AppSettings &settings,
                                  HealthState overall, const QString &summary)
{
    TrayIconPlan plan;
    if (disks.isEmpty())
        return plan;
    plan.empty = false;
    plan.toolTip = summary;
    const int index = settings.disk_temp_show;
    if (settings.show_temp && index >= 0 && index < disks.size() && showsTemperature(disks.at(index))) {
        const DiskRecord &disk = disks.at(index);
        plan.temperatureMode = true;
        plan.digits = QString::number(settings.displayTemperature(disk.temperature));
        const int colourSetting = disk.healthState == HealthAlarm     ? settings.color_C
                                  : disk.healthState == HealthWarning ? settings.color_W
                                                                      : settings.color_N;
        plan.colour = colourOf(colourSetting);
        return plan;
    }
    switch (overall) {
    case HealthOk: plan.statusIcon = QStringLiteral(":/new/prefix1/images/secure_apply.png"); break;
    case HealthWarning: plan.statusIcon = QStringLiteral(":/new/prefix1/images/secure_at.png"); break;
    case HealthAlarm: plan.statusIcon = QStringLiteral(":/new/prefix1/images/secure_red.png"); break;
    default: break;
    }
    return plan;
}

bool TrayIconPlan::showsTemperature(const DiskRecord &disk)
{
    return disk.smartState > 0 && disk.monitored && disk.hasTemperature;
}

Qt::GlobalColor TrayIconPlan::colourOf(int index)
{
    static constexpr std::array<Qt::GlobalColor, 16> table = {
        Qt::white, Qt::black,   Qt::red,        Qt::darkRed,     Qt::green,  Qt::darkGreen,
        Qt::blue,  Qt::darkBlue, Qt::cyan,      Qt::darkCyan,    Qt::magenta, Qt::darkMagenta,
        Qt::yellow, Qt::darkYellow, Qt::gray,   Qt::darkGray,
    };
    return index >= 0 && index < int(table.size()) ? table[std::size_t(index)] : Qt::lightGray;
}
