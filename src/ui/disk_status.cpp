#include "disk_status.h"

#include "HealthLine.h"
#include "TemperatureGauge.h"

#include "device/DiskRecord.h"
#include "health/DiskPanelPlan.h"

#include "settings/LanguageTable.h"
#include <QGridLayout>
#include <QLabel>
#include <QPixmap>

disk_status::disk_status(QWidget *parent)
    : QWidget(parent),
      m_gauge(new TemperatureGauge(this)),
      m_stateIcon(new QLabel(this)),
      m_health(new QLabel(this)),
      m_healthLine(new HealthLine(this)),
      m_workTime(new QLabel(this)),
      m_note(new QLabel(this))
{
    setObjectName(QStringLiteral("disk_status"));
    m_stateIcon->setFixedSize(48, 48);
    m_health->setTextFormat(Qt::RichText);
    m_workTime->setTextFormat(Qt::RichText);
    m_workTime->setWordWrap(true);
    m_note->setWordWrap(true);
    m_note->setTextInteractionFlags(Qt::TextSelectableByMouse);
    m_note->setAlignment(Qt::AlignTop | Qt::AlignLeft);

    auto *layout = new QGridLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(m_gauge, 0, 0, 3, 1, Qt::AlignTop);
    layout->addWidget(m_stateIcon, 0, 1, 2, 1, Qt::AlignTop);
    layout->addWidget(m_health, 0, 2);
    layout->addWidget(m_healthLine, 1, 2);
    layout->addWidget(m_workTime, 2, 1, 1, 2);
    layout->addWidget(m_note, 3, 0, 1, 3);
    layout->setColumnStretch(2, 1);
}

void disk_status::showGauge(const DiskPanelPlan &plan)
{
    if (plan.gaugeShown)
        m_gauge->showTemperature(plan.temperatureCelsius, plan.gaugeUnit, plan.gaugeLabel);
    else
        m_gauge->showIcon(plan.thermometerIcon);
}

void disk_status::showDisk(const DiskRecord &disk, const DiskPanelPlan &plan)
{
    showGauge(plan);
    m_stateIcon->setPixmap(QPixmap(plan.stateIcon));
    m_health->setText(plan.healthLabel);
    m_stateIcon->setAccessibleDescription(m_health->text());
    if (plan.kind == DiskPanelPlan::Kind::Smart)
        m_healthLine->setHealth(plan.healthValue, plan.state);
    else
        m_healthLine->clear();
    m_workTime->setText(plan.workTimeLabel);
    m_workTime->setVisible(!plan.workTimeLabel.isEmpty());
    m_note->setText(disk.note.trimmed());
    m_note->setVisible(!disk.note.trimmed().isEmpty());
}

void disk_status::retranslate()
{
    m_stateIcon->setAccessibleName(languageText(Lang::DiskState));
    m_gauge->setAccessibleName(languageText(Lang::TemperatureColumn));
    m_healthLine->setAccessibleName(languageText(Lang::HealthBar));
}
