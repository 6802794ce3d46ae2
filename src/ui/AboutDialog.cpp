#include "AboutDialog.h"

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
    text->setText(tr("<h2>Korvane</h2>"
                     "<p>Version %1%2</p>"
                     "<p>Watches the health of your hard disks: it reads their SMART data, follows "
                     "their temperature and tells you when a disk starts to fail, before your data "
                     "is lost.</p>"
                     "<p>Free software under the MIT licence.</p>")
                      .arg(licence.buildNumber(),
                           licence.isRegistered() ? QString() : tr(" (free edition)")));
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
