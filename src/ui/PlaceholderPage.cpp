#include "PlaceholderPage.h"

#include "settings/LanguageTable.h"

#include <QLabel>
#include <QVBoxLayout>

PlaceholderPage::PlaceholderPage(int entry, QWidget *parent) : QWidget(parent), m_entry(entry), m_label(new QLabel(this))
{
    m_label->setAlignment(Qt::AlignCenter);
    m_label->setWordWrap(true);
    m_label->setEnabled(false);
    auto *layout = new QVBoxLayout(this);
    layout->addWidget(m_label);
    retranslate();
}

void PlaceholderPage::retranslate()
{
    m_label->setText(languageText(m_entry));
}
