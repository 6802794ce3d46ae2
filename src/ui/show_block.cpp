#include "show_block.h"

#include "scan/BlockMap.h"
#include "scan/ScanTexts.h"
#include "settings/LanguageTable.h"

#include <QFormLayout>
#include <QGroupBox>
#include <QLabel>
#include <QListWidget>
#include <QPushButton>
#include <QVBoxLayout>

show_block::show_block(const BlockMap &map, qint64 n, QWidget *parent) : QDialog(parent)
{
    setObjectName(QStringLiteral("show_blockClass"));
    setWindowTitle(languageText(Lang::BlockTitle).arg(n));
    blockLabel = new QLabel(languageText(Lang::BlockSizeLine).arg(n), this);
    sectorsLabel = new QLabel(QStringLiteral("%1 - %2").arg(BlockMap::firstSectorOf(n)).arg(map.lastSectorOf(n)), this);
    conditionLabel = new QLabel(this);
    badGroup = new QGroupBox(languageText(Lang::BadSectorsGroup), this);
    badList = new QListWidget(badGroup);
    pushButton = new QPushButton(languageText(Lang::Ok), this);
    pushButton->setDefault(true);

    if (map.isUnverified(n)) {
        conditionLabel->setText(ScanTexts::unverifiedBlock());
    } else {
        for (const BlockMap::Range &range : map.badRangesIn(n))
            badList->addItem(ScanTexts::badSectors(range.first, range.second));
        conditionLabel->setText(badList->count() > 0 ? ScanTexts::badBlock() : ScanTexts::verifiedBlock());
    }

    auto *form = new QFormLayout;
    form->addRow(languageText(Lang::BlockLabel), blockLabel);
    form->addRow(languageText(Lang::SectorsLabel), sectorsLabel);
    form->addRow(languageText(Lang::ConditionLabel), conditionLabel);
    auto *groupLayout = new QVBoxLayout(badGroup);
    groupLayout->addWidget(badList);
    auto *layout = new QVBoxLayout(this);
    layout->addLayout(form);
    layout->addWidget(badGroup, 1);
    layout->addWidget(pushButton, 0, Qt::AlignHCenter);
    resize(330, 260);
    connect(pushButton, &QPushButton::clicked, this, &show_block::on_pushButton_clicked);
}

void show_block::on_pushButton_clicked()
{
    accept();
}
