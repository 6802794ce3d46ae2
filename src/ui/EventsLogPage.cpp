#include "EventsLogPage.h"

#include <QIcon>
#include <QListWidget>
#include <QVBoxLayout>

EventsLogPage::EventsLogPage(QWidget *parent) : QWidget(parent), m_list(new QListWidget(this))
{
    m_list->setAccessibleName(tr("Events"));
    m_list->setAlternatingRowColors(true);
    m_list->setWordWrap(true);
    m_list->setUniformItemSizes(false);
    auto *layout = new QVBoxLayout(this);
    layout->addWidget(m_list);
}

void EventsLogPage::addLine(const QString &iconPath, const QString &text)
{
    m_list->insertItem(0, new QListWidgetItem(QIcon(iconPath), text));
}

QStringList EventsLogPage::lines() const
{
    QStringList texts;
    for (int i = 0; i < m_list->count(); ++i)
        texts << m_list->item(i)->text();
    return texts;
}
