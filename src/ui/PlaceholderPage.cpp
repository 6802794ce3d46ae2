#include "PlaceholderPage.h"

#include <QLabel>
#include <QVBoxLayout>

PlaceholderPage::PlaceholderPage(const QString &text, QWidget *parent) : QWidget(parent)
{
    auto *label = new QLabel(text, this);
    label->setAlignment(Qt::AlignCenter);
    label->setWordWrap(true);
    label->setEnabled(false);
    auto *layout = new QVBoxLayout(this);
    layout->addWidget(label);
}
