#include "EventsLogPage.h"

#include "IconCache.h"

#include "settings/LanguageTable.h"
#include <QIcon>
#include <QListWidget>
#include <QVBoxLayout>

EventsLogPage::EventsLogPage(QWidget *parent) : QWidget(parent), m_list(new QListWidget(this))
{
    m_list->setAlternatingRowColors(true);
    m_list->setWordWrap(true);
    m_list->setUniformItemSizes(false);
    // The list has no limit; laying it out in batches keeps a long session's window quick.
    m_list->setLayoutMode(QListView::Batched);
    auto *layout = new QVBoxLayout(this);
    layout->addWidget(m_list);
}

void EventsLogPage::addLine(const QString &iconPath, const QString &text)
{
    // A lasting warning adds lines on every poll: they share one icon per kind.
    m_list->insertItem(0, new QListWidgetItem(IconCache::icon(iconPath), text));
}

QStringList EventsLogPage::lines() const
{
    QStringList texts;
    for (int i = 0; i < m_list->count(); ++i)
        texts << m_list->item(i)->text();
    return texts;
}

void EventsLogPage::retranslate()
{
    m_list->setAccessibleName(languageText(Lang::EventsList));
}
