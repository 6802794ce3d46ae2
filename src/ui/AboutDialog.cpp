#include "AboutDialog.h"

#include "health/WindowTexts.h"
#include "settings/LicenceLayer.h"
#include "settings/LanguageTable.h"

#include <QDialogButtonBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QPixmap>
#include <QVBoxLayout>

AboutDialog::AboutDialog(const LicenceLayer &licence, QWidget *parent) : QDialog(parent)
{
    setWindowTitle(languageText(Lang::About));
    auto *icon = new QLabel(this);
    icon->setPixmap(QPixmap(QStringLiteral(":/new/prefix1/images/korvane.png"))
                        .scaled(96, 96, Qt::KeepAspectRatio, Qt::SmoothTransformation));
    icon->setAlignment(Qt::AlignTop);
    auto *text = new QLabel(this);
    text->setTextFormat(Qt::RichText);
    text->setWordWrap(true);
    text->setOpenExternalLinks(true);
    text->setTextInteractionFlags(Qt::TextBrowserInteraction);
    text->setText(WindowTexts::aboutHtml(licence.buildNumber(), licence.isRegistered()));
    auto *buttons = new QDialogButtonBox(QDialogButtonBox::Ok, this);
    connect(buttons, &QDialogButtonBox::accepted, this, &QDialog::accept);

    auto *row = new QHBoxLayout;
    row->addWidget(icon);
    row->addWidget(text, 1);
    auto *layout = new QVBoxLayout(this);
    layout->addLayout(row);
    layout->addWidget(buttons);
    setMinimumWidth(420);
}
