#include "Attr_setting.h"

#include "UiFont.h"

#include "health/AttributeLevels.h"
#include "settings/LanguageTable.h"

#include <QGridLayout>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QPixmap>
#include <QPushButton>
#include <QRadioButton>
#include <QScreen>
#include <QSpinBox>
#include <QVBoxLayout>

Attr_setting::Attr_setting(bool lowerIsWorse, QWidget *parent)
    : QDialog(parent, Qt::Dialog | Qt::WindowTitleHint | Qt::WindowSystemMenuHint | Qt::WindowCloseButtonHint),
      m_lowerIsWorse(lowerIsWorse)
{
    setObjectName(QStringLiteral("Attr_settingClass"));
    setFont(UiFont::shellDialog());
    buildForm();
    retranslate();
    connect(m_warn, &QSpinBox::valueChanged, this, &Attr_setting::on_spinBox_warn_valueChanged);
    connect(m_crit, &QSpinBox::valueChanged, this, &Attr_setting::on_spinBox_crit_valueChanged);
    connect(m_apply, &QPushButton::clicked, this, &Attr_setting::on_pushButton_2_clicked);
    connect(m_cancel, &QPushButton::clicked, this, &Attr_setting::on_cancel_bt_clicked);
    centreOnScreen();
}

QSpinBox *Attr_setting::levelBox(const char *name)
{
    auto *box = new QSpinBox(this);
    box->setObjectName(QLatin1StringView(name));
    box->setRange(AttributeLevels::Minimum, AttributeLevels::Maximum);
    return box;
}

void Attr_setting::buildForm()
{
    m_picture = new QLabel(this);
    m_picture->setObjectName(QStringLiteral("pic1"));
    m_picture->setPixmap(QPixmap(QStringLiteral(":/new/prefix1/images/user1_information.png")));
    m_picture->setAlignment(Qt::AlignTop);

    m_group = new QGroupBox(this);
    m_group->setObjectName(QStringLiteral("groupBox"));
    m_never = new QRadioButton(m_group);
    m_never->setObjectName(QStringLiteral("Rd_0"));
    m_never->setChecked(true);
    m_changed = new QRadioButton(m_group);
    m_changed->setObjectName(QStringLiteral("Rd_1"));
    m_beyond = new QRadioButton(m_group);
    m_beyond->setObjectName(QStringLiteral("Rd_2"));
    m_warn = levelBox("spinBox_warn");
    m_crit = levelBox("spinBox_crit");
    m_warnLabel = new QLabel(m_group);
    m_warnLabel->setBuddy(m_warn);
    m_critLabel = new QLabel(m_group);
    m_critLabel->setBuddy(m_crit);

    // The levels belong to the last choice, so they sit under it, indented.
    auto *levels = new QGridLayout;
    levels->setContentsMargins(24, 0, 0, 0);
    levels->addWidget(m_warnLabel, 0, 0);
    levels->addWidget(m_warn, 0, 1);
    levels->addWidget(m_critLabel, 1, 0);
    levels->addWidget(m_crit, 1, 1);
    levels->setColumnStretch(2, 1);
    auto *choices = new QVBoxLayout(m_group);
    choices->addWidget(m_never);
    choices->addWidget(m_changed);
    choices->addWidget(m_beyond);
    choices->addLayout(levels);

    m_apply = new QPushButton(this);
    m_apply->setObjectName(QStringLiteral("pushButton_2"));
    m_apply->setDefault(true);
    m_cancel = new QPushButton(this);
    m_cancel->setObjectName(QStringLiteral("cancel_bt"));
    auto *buttons = new QHBoxLayout;
    buttons->addStretch(1);
    buttons->addWidget(m_apply);
    buttons->addWidget(m_cancel);

    auto *top = new QHBoxLayout;
    top->addWidget(m_picture);
    top->addWidget(m_group, 1);
    auto *layout = new QVBoxLayout(this);
    layout->addLayout(top);
    layout->addLayout(buttons);
}

void Attr_setting::retranslate()
{
    setWindowTitle(languageText(Lang::AttributeSettingsTitle));
    m_group->setTitle(languageText(Lang::WhenNotify));
    m_never->setText(languageText(Lang::NotifyNever));
    m_changed->setText(languageText(Lang::NotifyWhenChanged));
    m_beyond->setText(languageText(m_lowerIsWorse ? Lang::NotifyWhenBelow : Lang::NotifyWhenAbove));
    m_warnLabel->setText(languageText(Lang::LevelWarningLabel));
    m_critLabel->setText(languageText(Lang::LevelCriticalLabel));
    m_apply->setText(languageText(Lang::Apply));
    m_cancel->setText(languageText(Lang::Cancel));
}

void Attr_setting::centreOnScreen()
{
    adjustSize();
    const QRect desktop = screen()->geometry();
    move(desktop.x() + desktop.width() / 2 - width() / 2, desktop.y() + desktop.height() / 2 - height() / 2);
}

void Attr_setting::on_spinBox_warn_valueChanged(int value)
{
    const auto levels = AttributeLevels::couple({value, m_crit->value()}, AttributeLevels::Moved::Warning,
                                                m_lowerIsWorse);
    m_crit->setValue(levels.critical);
}

void Attr_setting::on_spinBox_crit_valueChanged(int value)
{
    const auto levels = AttributeLevels::couple({m_warn->value(), value}, AttributeLevels::Moved::Critical,
                                                m_lowerIsWorse);
    m_warn->setValue(levels.warning);
}

void Attr_setting::on_pushButton_2_clicked()
{
    accept();
}

void Attr_setting::on_cancel_bt_clicked()
{
    reject();
}
