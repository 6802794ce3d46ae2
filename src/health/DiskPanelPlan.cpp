#include "DiskPanelPlan.h"

#include "HealthTexts.h"
#include "WindowTexts.h"

#include "device/DiskRecord.h"
#include "device/PowerOnTime.h"
#include "settings/AppSettings.h"

namespace {

QString image(const char *name)
{
    return WindowTexts::imagePath(QLatin1StringView(name));
}

QString notSupported()
{
    return QStringLiteral("Not supported");
}

QString temperatureColumn(const DiskRecord &disk, const AppSettings &settings)
{
    if (!disk.hasTemperature)
        return notSupported();
    return QStringLiteral("%1").arg(settings.displayTemperature(disk.temperature));
}

// State icon, health label and tree icon of a disk read with SMART, by its level.
void applyLevel(DiskPanelPlan &plan, HealthState level)
{
    plan.treeIcon = HealthTexts::treeIcon(level);
    switch (level) {
    case HealthWarning:
        plan.stateIcon = image("l_Drive_Wr.png");
        plan.healthLabel = QStringLiteral("<B>Health Status: WARNING");
        break;
    case HealthAlarm:
        plan.stateIcon = image("l_Drive_Al.png");
        plan.healthLabel = QStringLiteral("<B>Health Status: ALARM");
        break;
    default:
        // Before the first evaluation a disk read with SMART is shown as OK: nothing is wrong yet.
        plan.stateIcon = image("l_Drive_Ok.png");
        plan.healthLabel = QStringLiteral("<B>Health Status: OK");
        break;
    }
}

// A disk without live SMART values: its kind, its three icons and its label, nothing else.
void applyInactive(DiskPanelPlan &plan, DiskPanelPlan::Kind kind, const char *icons[3], const QString &label)
{
    plan.kind = kind;
    plan.treeIcon = image(icons[0]);
    plan.thermometerIcon = image(icons[1]);
    plan.stateIcon = image(icons[2]);
    plan.healthLabel = label;
}

} // namespace

bool DiskPanelPlan::hasSmart(const DiskRecord &disk)
{
    return !disk.attributes.isEmpty();
}

DiskPanelPlan DiskPanelPlan::forDisk(const DiskRecord &disk, const AppSettings &settings)
{
    DiskPanelPlan plan;
    plan.state = HealthState(disk.healthState);
    plan.healthValue = disk.healthValue;
    if (!disk.monitored) {
        const char *icons[3] = {"harddisk_Stop.png", "term_not_mon.png", "l_Drive_St.png"};
        applyInactive(plan, Kind::NotMonitored, icons, QStringLiteral("<B>Not Monitoring"));
        return plan;
    }
    if (!hasSmart(disk)) {
        const char *icons[3] = {"harddisk_NoSMART.png", "term_not_sup.png", "l_Drive_Un.png"};
        applyInactive(plan, Kind::NoSmart, icons, QStringLiteral("<B>SMART not supported"));
        return plan;
    }
    plan.kind = Kind::Smart;
    plan.temperatureText = temperatureColumn(disk, settings);
    plan.gaugeShown = disk.hasTemperature;
    plan.temperatureCelsius = disk.temperature;
    plan.gaugeUnit = settings.temp_celsius;
    plan.gaugeLabel = gaugeText(disk.temperature, settings);
    if (!disk.hasTemperature)
        plan.thermometerIcon = image("term_not_sup.png");
    plan.workTimeLabel = PowerOnTime::workTimeLabel(disk);
    applyLevel(plan, plan.state);
    return plan;
}

QString DiskPanelPlan::gaugeText(int celsius, const AppSettings &settings)
{
    return settings.temp_celsius == 0 ? QStringLiteral("%1°C").arg(celsius)
                                      : QStringLiteral("%1°F").arg(settings.displayTemperature(celsius));
}

QString DiskPanelPlan::discoveryTemperatureText(const DiskRecord &disk, const AppSettings &settings)
{
    return hasSmart(disk) ? temperatureColumn(disk, settings) : QString();
}

QString DiskPanelPlan::discoveryTreeIcon(const DiskRecord &disk)
{
    if (!disk.monitored)
        return image("harddisk_Stop.png");
    return hasSmart(disk) ? image("harddisk_Ok.png") : image("harddisk_NoSMART.png");
}
