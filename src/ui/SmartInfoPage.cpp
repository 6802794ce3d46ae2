#include "SmartInfoPage.h"

#include "device/DiskRecord.h"
#include "health/SmartTableModel.h"
#include "health/WindowTexts.h"
#include "settings/LanguageTable.h"

#include <QHeaderView>
#include <QItemSelectionModel>
#include <QLabel>
#include <QSplitter>
#include <QTableView>
#include <QTextBrowser>
#include <QVBoxLayout>

SmartInfoPage::SmartInfoPage(QWidget *parent)
    : QWidget(parent),
      m_model(new SmartTableModel(languageTable(), this)),
      m_table(new QTableView(this)),
      m_description(new QTextBrowser(this)),
      m_legend(new QLabel(this))
{
    m_table->setModel(m_model);
    m_table->setSelectionBehavior(QAbstractItemView::SelectRows);
    m_table->setSelectionMode(QAbstractItemView::SingleSelection);
    m_table->setAlternatingRowColors(true);
    m_table->setWordWrap(false);
    m_table->verticalHeader()->hide();
    m_table->verticalHeader()->setDefaultSectionSize(m_table->fontMetrics().height() + 6);
    QHeaderView *header = m_table->horizontalHeader();
    header->setSectionResizeMode(QHeaderView::ResizeToContents);
    header->setSectionResizeMode(SmartTableModel::NameColumn, QHeaderView::Stretch);
    m_description->setOpenLinks(false);
    m_legend->setTextFormat(Qt::RichText);
    m_legend->setWordWrap(true);

    auto *splitter = new QSplitter(Qt::Vertical, this);
    splitter->addWidget(m_table);
    splitter->addWidget(m_description);
    splitter->setStretchFactor(0, 3);
    splitter->setStretchFactor(1, 1);
    splitter->setChildrenCollapsible(false);

    auto *layout = new QVBoxLayout(this);
    layout->addWidget(splitter, 1);
    layout->addWidget(m_legend);

    connect(m_table->selectionModel(), &QItemSelectionModel::currentRowChanged, this,
            &SmartInfoPage::show_description);
    retranslate();
}

void SmartInfoPage::showDisk(const DiskRecord &disk)
{
    m_model->setDisk(disk);
    if (m_model->rowCount() == 0)
        m_description->clear();
    else if (!m_table->currentIndex().isValid())
        m_table->selectRow(0);
}

void SmartInfoPage::clear()
{
    m_model->setDisk(DiskRecord());
    m_description->clear();
}

void SmartInfoPage::retranslate()
{
    m_model->setTexts(languageTable());
    m_table->setAccessibleName(languageText(Lang::SmartAttributes));
    m_description->setAccessibleName(languageText(Lang::AttributeDescription));
    m_legend->setText(WindowTexts::attributeLegendHtml());
}

void SmartInfoPage::show_description(const QModelIndex &current)
{
    if (m_model->rowCount() == 0 || !current.isValid()) {
        m_description->clear();
        return;
    }
    m_description->setHtml(WindowTexts::attributeDescriptionHtml(
        current.data(SmartTableModel::IconNameRole).toString(),
        current.data(SmartTableModel::DescriptionRole).toString()));
}
