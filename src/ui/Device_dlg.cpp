#include "Device_dlg.h"

#include "settings/LanguageTable.h"

#include <QCheckBox>
#include <QComboBox>
#include <QGridLayout>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QPushButton>
#include <QRadioButton>
#include <QVBoxLayout>

Device_dlg::Device_dlg(QWidget *parent) : QDialog(parent)
{
    setObjectName(QStringLiteral("Device_dlgClass"));
    buildForm();
    retranslate();
    connect(m_apply, &QPushButton::clicked, this, &Device_dlg::on_pushButton_clicked);
    connect(m_cancel, &QPushButton::clicked, this, &Device_dlg::on_pushButton_2_clicked);
}

void Device_dlg::buildForm()
{
    m_checkDevice = new QCheckBox(this);
    m_checkDevice->setObjectName(QStringLiteral("checkBox"));
    m_checkDevice->setChecked(true);
    m_vendor = buildVendorGroup();

    m_apply = new QPushButton(this);
    m_apply->setObjectName(QStringLiteral("pushButton"));
    m_apply->setDefault(true);
    m_cancel = new QPushButton(this);
    m_cancel->setObjectName(QStringLiteral("pushButton_2"));
    auto *buttons = new QHBoxLayout;
    buttons->addStretch(1);
    buttons->addWidget(m_apply);
    buttons->addWidget(m_cancel);

    auto *layout = new QVBoxLayout(this);
    layout->addWidget(m_checkDevice);
    layout->addWidget(m_vendor);
    layout->addLayout(buttons);
}

QGroupBox *Device_dlg::buildVendorGroup()
{
    auto *group = new QGroupBox(this);
    group->setObjectName(QStringLiteral("groupBox"));
    m_powerOnLabel = new QLabel(group);
    m_powerOnLabel->setObjectName(QStringLiteral("label"));
    m_powerOnUnit = new QComboBox(group);
    m_powerOnUnit->setObjectName(QStringLiteral("comboBox"));
    m_powerOnLabel->setBuddy(m_powerOnUnit);
    m_temperatureLabel = new QLabel(group);
    m_temperatureLabel->setObjectName(QStringLiteral("label_2"));
    m_temperatureOne = new QRadioButton(group);
    m_temperatureOne->setObjectName(QStringLiteral("radioButton"));
    m_temperatureOne->setChecked(true);
    m_temperatureTenths = new QRadioButton(group);
    m_temperatureTenths->setObjectName(QStringLiteral("radioButton_2"));
    m_loadUnload = new QCheckBox(group);
    m_loadUnload->setObjectName(QStringLiteral("checkBox_2"));
    m_twoValues = new QLabel(group);
    m_twoValues->setObjectName(QStringLiteral("label_3"));

    auto *temperature = new QHBoxLayout;
    temperature->addWidget(m_temperatureOne);
    temperature->addWidget(m_temperatureTenths);
    temperature->addStretch(1);
    auto *loadUnload = new QHBoxLayout;
    loadUnload->addWidget(m_loadUnload);
    loadUnload->addWidget(m_twoValues, 1);
    auto *grid = new QGridLayout(group);
    grid->addWidget(m_powerOnLabel, 0, 0);
    grid->addWidget(m_powerOnUnit, 0, 1);
    grid->addWidget(m_temperatureLabel, 1, 0);
    grid->addLayout(temperature, 1, 1);
    grid->addLayout(loadUnload, 2, 0, 1, 2);
    return group;
}

void Device_dlg::retranslate()
{
    setWindowTitle(languageText(Lang::DiskSettingsTitle));
    m_checkDevice->setText(languageText(Lang::CheckThisDevice));
    m_vendor->setTitle(languageText(Lang::VendorSettings));
    m_powerOnLabel->setText(languageText(Lang::PowerOnCount));
    m_powerOnUnit->clear();
    for (const Lang::Entry unit : {Lang::InHours, Lang::InMinutes, Lang::InSeconds, Lang::InHalfMinutes})
        m_powerOnUnit->addItem(languageText(unit));
    m_temperatureLabel->setText(languageText(Lang::HdaTemperature));
    m_temperatureOne->setText(languageText(Lang::TemperatureOne));
    m_temperatureTenths->setText(languageText(Lang::TemperatureTenths));
    m_loadUnload->setText(languageText(Lang::LoadUnloadContains));
    m_twoValues->setText(languageText(Lang::TwoValues));
    m_apply->setText(languageText(Lang::Apply));
    m_cancel->setText(languageText(Lang::Cancel));
}

void Device_dlg::setDevice(int row)
{
    Q_UNUSED(row)
}

void Device_dlg::on_pushButton_clicked()
{
    accept();
}

void Device_dlg::on_pushButton_2_clicked()
{
    reject();
}
