#include "form_scan_set.h"

#include "BlockColours.h"
#include "IconCache.h"

#include "health/WindowTexts.h"
#include "scan/LatencyClass.h"
#include "settings/LanguageTable.h"

#include <QCheckBox>
#include <QDoubleSpinBox>
#include <QGroupBox>
#include <QLabel>
#include <QPainter>
#include <QPixmap>
#include <QProgressBar>
#include <QPushButton>
#include <QRadioButton>

namespace {

// The form keeps the places of the original design; every width has 50 more pixels, as German
// and Russian captions are longer than the English ones it was drawn for, and sector numbers of
// large disks have ten digits.
constexpr int kExtra = 50;
// The read-time option and its legend go below the progress bar, out of the original's way.
constexpr int kLatencyTop = 392;

QRect wide(int x, int y, int w, int h)
{
    return QRect(x, y, w + kExtra, h);
}

// A child of \a parent at its fixed place.
template<class W>
W *placed(QWidget *parent, const QRect &geometry)
{
    auto *widget = new W(parent);
    widget->setGeometry(geometry);
    return widget;
}

QLabel *picture(QWidget *parent, const QPixmap &pixmap, int y)
{
    auto *label = placed<QLabel>(parent, QRect(10, y, 16, 16));
    label->setPixmap(pixmap);
    return label;
}

QPixmap swatch(const QColor &colour)
{
    QPixmap pixmap(12, 12);
    pixmap.fill(colour);
    QPainter painter(&pixmap);
    painter.setPen(Qt::black);
    painter.drawRect(0, 0, 11, 11);
    return pixmap;
}

} // namespace

form_scan_set::form_scan_set(QWidget *parent) : QWidget(parent)
{
    setObjectName(QStringLiteral("form_scan_setClass"));
    Label = placed<QLabel>(this, QRect(1, 195, 75, 16));
    label_2 = placed<QLabel>(this, QRect(1, 172, 75, 16));
    groupBox = placed<QGroupBox>(this, wide(1, 85, 151, 81));
    radioButton = placed<QRadioButton>(groupBox, wide(10, 20, 121, 18));
    radioButton_2 = placed<QRadioButton>(groupBox, wide(10, 40, 121, 18));
    radioButton_2->setChecked(true);
    radioButton_3 = placed<QRadioButton>(groupBox, wide(10, 60, 121, 18));
    pushButton = new QPushButton(IconCache::icon(WindowTexts::imagePath(QLatin1StringView("data_view.png"))), QString(), this);
    pushButton->setGeometry(wide(1, 220, 151, 24));
    pushButton_2 = new QPushButton(IconCache::icon(WindowTexts::imagePath(QLatin1StringView("data_forbidden.png"))), QString(), this);
    pushButton_2->setGeometry(wide(1, 243, 151, 24));
    pushButton_2->setEnabled(false);
    buildLegend();
    // The sector boxes take the extra width.
    spinBox = placed<QDoubleSpinBox>(this, QRect(78, 170, 75 + kExtra, 22));
    spinBox_2 = placed<QDoubleSpinBox>(this, QRect(78, 194, 75 + kExtra, 22));
    for (QDoubleSpinBox *box : {spinBox, spinBox_2}) {
        box->setDecimals(0);
        box->setMaximum(9999999);
    }
    spinBox_2->setValue(999999);
    progressBar = placed<QProgressBar>(this, wide(0, 370, 151, 16));
    progressBar->setValue(0);
    label_6 = placed<QLabel>(this, wide(1, 330, 151, 16));
    label_11 = placed<QLabel>(this, wide(1, 350, 151, 16));
    buildLatencyLegend();
    setFixedSize(153 + kExtra, kLatencyTop + 24 + 16 * LatencyClass::kCount);
    retranslate();
}

void form_scan_set::buildLegend()
{
    groupBox_2 = placed<QGroupBox>(this, wide(1, 0, 151, 83));
    label = placed<QLabel>(groupBox_2, wide(40, 20, 101, 16));
    label_3 = placed<QLabel>(groupBox_2, wide(40, 35, 111, 16));
    label_4 = placed<QLabel>(groupBox_2, wide(40, 50, 111, 16));
    label_5 = placed<QLabel>(groupBox_2, wide(40, 65, 111, 16));
    const char *images[] = {"col0.png", "col4.png", "col2.png", "col6.png"};
    for (int i = 0; i < 4; ++i)
        picture(groupBox_2, IconCache::icon(WindowTexts::imagePath(QLatin1StringView(images[i]))).pixmap(16, 16), 20 + 15 * i);
}

void form_scan_set::buildLatencyLegend()
{
    latencyBox = placed<QCheckBox>(this, wide(1, kLatencyTop, 151, 20));
    latencyLegend = placed<QWidget>(this, wide(1, kLatencyTop + 22, 151, 16 * LatencyClass::kCount + 4));
    for (int i = 0; i < LatencyClass::kCount; ++i) {
        auto *colour = placed<QLabel>(latencyLegend, QRect(12, 2 + 16 * i, 12, 12));
        colour->setPixmap(swatch(BlockColours::latency(i)));
        auto *text = new QLabel(LatencyClass::label(i), latencyLegend);
        text->setGeometry(40, 16 * i, 111, 16);
        latencyLabels << text;
    }
    latencyLegend->hide();
    connect(latencyBox, &QCheckBox::toggled, latencyLegend, &QWidget::setVisible);
}

void form_scan_set::retranslate()
{
    Label->setText(languageText(Lang::ToSector));
    label_2->setText(languageText(Lang::FromSector));
    groupBox->setTitle(languageText(Lang::CheckBlockSize));
    radioButton->setText(languageText(Lang::CheckBlock512));
    radioButton_2->setText(languageText(Lang::CheckBlock64K));
    radioButton_3->setText(languageText(Lang::CheckBlock256K));
    pushButton->setText(languageText(Lang::StartScan));
    pushButton_2->setText(languageText(Lang::StopScan));
    groupBox_2->setTitle(languageText(Lang::ScanLegend));
    label->setText(languageText(Lang::LegendUnverified));
    label_3->setText(languageText(Lang::LegendVerified));
    label_4->setText(languageText(Lang::LegendBad));
    label_5->setText(languageText(Lang::LegendCurrent));
    label_2->setBuddy(spinBox);
    Label->setBuddy(spinBox_2);
    spinBox->setAccessibleName(languageText(Lang::FromSector));
    spinBox_2->setAccessibleName(languageText(Lang::ToSector));
    latencyBox->setText(languageText(Lang::ColourByReadTime));
    if (label_6->isHidden() || label_6->text().isEmpty())
        label_6->setText(languageText(Lang::Scanning));
}
