#pragma once

#include <QWidget>

class HealthLine;
class QLabel;
class TemperatureGauge;
struct DiskPanelPlan;
struct DiskRecord;

/// The status panel of the selected disk: the temperature gauge, the state icon and health
/// label, the health bar, the work time and the status paragraph of the last evaluation.
class disk_status : public QWidget
{
    Q_OBJECT
public:
    /// An empty panel.
    explicit disk_status(QWidget *parent = nullptr);

    /// Shows \a disk as \a plan says.
    void showDisk(const DiskRecord &disk, const DiskPanelPlan &plan);
    /// Shows the gauge (or the icon standing in for it) of \a plan only.
    void showGauge(const DiskPanelPlan &plan);
    /// The temperature gauge, which also takes the limits and the unit.
    TemperatureGauge *gauge() const { return m_gauge; }
    /// Takes the names screen readers say from the current language table.
    void retranslate();

private:
    TemperatureGauge *m_gauge;
    QLabel *m_stateIcon;
    QLabel *m_health;
    HealthLine *m_healthLine;
    QLabel *m_workTime;
    QLabel *m_note;
};
