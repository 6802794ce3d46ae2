#include "gr_set.h"

#include "IconCache.h"

#include "health/WindowTexts.h"
#include "settings/LanguageTable.h"

#include <QCheckBox>
#include <QDateEdit>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QPushButton>
#include <QRadioButton>
#include <QVBoxLayout>

gr_set::gr_set(const Choice &choice, const QString &warning, const QString &critical, QWidget *parent)
    : QDialog(parent), m_disks(new QGroupBox(this)), m_allDisks(new QRadioButton(m_disks)),
      m_currentDisk(new QRadioButton(m_disks)), m_periodLabel(new QLabel(this)), m_from(new QDateEdit(choice.from, this)),
      m_to(new QDateEdit(choice.to, this)), m_limits(new QCheckBox(this)), m_ok(new QPushButton(this)),
      m_cancel(new QPushButton(this))
{
    setObjectName(QStringLiteral("gr_setClass"));
    setWindowIcon(IconCache::icon(WindowTexts::imagePath(QLatin1StringView("chart.png"))));
    auto *disks = new QVBoxLayout(m_disks);
    disks->addWidget(m_allDisks);
    disks->addWidget(m_currentDisk);
    (choice.currentDiskOnly ? m_currentDisk : m_allDisks)->setChecked(true);

    for (QDateEdit *edit : {m_from, m_to}) {
        edit->setCalendarPopup(true);
        edit->setDisplayFormat(QStringLiteral("yyyy-MM-dd"));
    }
    // A last day before the first would leave the graph without a time scale.
    m_to->setMinimumDate(choice.from);
    connect(m_from, &QDateEdit::dateChanged, m_to, &QDateEdit::setMinimumDate);
    m_periodLabel->setBuddy(m_from);
    auto *period = new QHBoxLayout;
    period->addWidget(m_periodLabel);
    period->addWidget(m_from);
    period->addWidget(new QLabel(QString(QChar(0x2013)), this));
    period->addWidget(m_to);
    period->addStretch(1);

    m_limits->setChecked(choice.limits);
    m_ok->setDefault(true);
    connect(m_ok, &QPushButton::clicked, this, &QDialog::accept);
    connect(m_cancel, &QPushButton::clicked, this, &QDialog::reject);
    auto *buttons = new QHBoxLayout;
    buttons->addStretch(1);
    buttons->addWidget(m_ok);
    buttons->addWidget(m_cancel);

    auto *layout = new QVBoxLayout(this);
    layout->addWidget(m_disks);
    layout->addLayout(period);
    layout->addWidget(m_limits);
    layout->addLayout(buttons);
    retranslate(warning, critical);
}

gr_set::Choice gr_set::choice() const
{
    return {m_currentDisk->isChecked(), m_from->date(), m_to->date(), m_limits->isChecked()};
}

void gr_set::retranslate(const QString &warning, const QString &critical)
{
    setWindowTitle(languageText(Lang::GraphSettingsTitle));
    m_disks->setTitle(languageText(Lang::DisksTree));
    m_allDisks->setText(languageText(Lang::AllDisksFilter));
    m_currentDisk->setText(languageText(Lang::CurrentDiskFilter));
    m_periodLabel->setText(languageText(Lang::Period));
    m_limits->setText(languageText(Lang::DrawTemperatureLimits).arg(warning, critical));
    m_ok->setText(languageText(Lang::Ok));
    m_cancel->setText(languageText(Lang::Cancel));
}
