#include "scan_complette_dlg.h"

#include "settings/LanguageTable.h"

#include <QFrame>
#include <QLabel>
#include <QPushButton>

namespace {

QLabel *labelAt(QWidget *parent, const QString &text, const QRect &geometry)
{
    auto *label = new QLabel(text, parent);
    label->setGeometry(geometry);
    return label;
}

} // namespace

scan_complette_dlg::scan_complette_dlg(QWidget *parent) : QDialog(parent)
{
    setObjectName(QStringLiteral("scan_complette_dlgClass"));
    setWindowTitle(languageText(Lang::ScanCompleteTitle));
    // Wider than the original 229 pixels: the German and Russian captions are longer.
    setFixedSize(289, 129);
    pushButton = new QPushButton(languageText(Lang::Ok), this);
    pushButton->setGeometry(107, 100, 75, 23);
    pushButton->setDefault(true);
    labelAt(this, languageText(Lang::TotalBlocksScanned), QRect(10, 10, 171, 16));
    labelAt(this, languageText(Lang::TotalSectorsScanned), QRect(10, 30, 171, 16));
    labelAt(this, languageText(Lang::TotalBadBlocks), QRect(10, 50, 171, 16));
    labelAt(this, languageText(Lang::TimeElapsed), QRect(10, 70, 171, 16));
    auto *line = new QFrame(this);
    line->setGeometry(2, 80, 285, 16);
    line->setFrameShape(QFrame::HLine);
    line->setFrameShadow(QFrame::Sunken);
    label_5 = labelAt(this, QStringLiteral("TextLabel"), QRect(185, 10, 96, 16));
    label_6 = labelAt(this, QStringLiteral("TextLabel"), QRect(185, 30, 96, 16));
    label_7 = labelAt(this, QStringLiteral("TextLabel"), QRect(185, 50, 96, 16));
    label_8 = labelAt(this, QStringLiteral("TextLabel"), QRect(185, 68, 96, 20));
    connect(pushButton, &QPushButton::clicked, this, &scan_complette_dlg::on_pushButton_clicked);
}

void scan_complette_dlg::on_pushButton_clicked()
{
    accept();
}
