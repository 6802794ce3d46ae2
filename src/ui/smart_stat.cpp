#include "smart_stat.h"

#include "IconCache.h"
#include "graph_widget.h"
#include "gr_set.h"

#include "health/WindowTexts.h"
#include "settings/AppSettings.h"
#include "settings/LanguageTable.h"
#include "settings/SettingsStore.h"
#include "stats/EventsTableModel.h"
#include "stats/load_log.h"

#include <QComboBox>
#include <QDateEdit>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QLabel>
#include <QProgressBar>
#include <QPushButton>
#include <QTabWidget>
#include <QTableView>
#include <QVBoxLayout>

namespace {

QString shownTemperature(int celsius)
{
    const AppSettings &settings = appSettings();
    return QStringLiteral("%1 %2").arg(settings.displayTemperature(celsius))
        .arg(languageText(Lang::UnitCelsius + (settings.temp_celsius ? 1 : 0)));
}

} // namespace

smart_stat::smart_stat(QWidget *parent)
    : QWidget(parent), m_reader(new load_log(this)), m_model(new EventsTableModel(&m_history, languageTable(), this)),
      m_periodLabel(new QLabel(this)), m_from(new QDateEdit(QDate::currentDate().addDays(-6), this)),
      m_to(new QDateEdit(QDate::currentDate(), this)), m_show(new QPushButton(this)), m_progress(new QProgressBar(this)),
      m_status(new QLabel(this)), m_tabs(new QTabWidget(this))
{
    for (QDateEdit *edit : {m_from, m_to}) {
        edit->setCalendarPopup(true);
        edit->setDisplayFormat(QStringLiteral("yyyy-MM-dd"));
    }
    // A last day before the first would read nothing and leave the graph without a scale.
    m_to->setMinimumDate(m_from->date());
    connect(m_from, &QDateEdit::dateChanged, m_to, &QDateEdit::setMinimumDate);
    m_periodLabel->setBuddy(m_from);
    m_progress->setRange(0, 100);
    m_progress->setTextVisible(false);
    m_progress->setMaximumWidth(120);
    m_progress->hide();
    // A long summary in another language wraps rather than widen the window.
    m_status->setWordWrap(true);
    connect(m_show, &QPushButton::clicked, this, &smart_stat::readLog);

    auto *top = new QHBoxLayout;
    top->addWidget(m_periodLabel);
    top->addWidget(m_from);
    top->addWidget(new QLabel(QString(QChar(0x2013)), this));
    top->addWidget(m_to);
    top->addWidget(m_show);
    top->addWidget(m_progress);
    top->addWidget(m_status, 1);
    m_tabs->addTab(buildEventsTab(), QString());
    m_tabs->addTab(buildGraphTab(), QString());
    auto *layout = new QVBoxLayout(this);
    layout->addLayout(top);
    layout->addWidget(m_tabs, 1);

    connect(m_reader, &load_log::lineToAdd, this, &smart_stat::takeRows);
    connect(m_reader, &load_log::updateProgress, this, &smart_stat::showProgress);
    connect(m_reader, &load_log::readingFinished, this, &smart_stat::finishReading);
    connect(&SettingsStore::instance(), &SettingsStore::settingsChanged, this, &smart_stat::applyGraph);
    connect(&SettingsStore::instance(), &SettingsStore::settingsChanged, this, [this] { m_model->setTexts(languageTable()); });
    m_graph->setDays(m_from->date(), m_to->date());
    applyGraph();
    retranslate();
}

smart_stat::~smart_stat()
{
    m_reader->stop();
    m_reader->wait();
}

QWidget *smart_stat::buildEventsTab()
{
    auto *tab = new QWidget(this);
    m_diskLabel = new QLabel(tab);
    m_disk = new QComboBox(tab);
    m_diskLabel->setBuddy(m_disk);
    m_levelLabel = new QLabel(tab);
    m_level = new QComboBox(tab);
    m_levelLabel->setBuddy(m_level);
    for (QComboBox *box : {m_disk, m_level}) {
        // Their texts change with the language and with the disks of the log.
        box->setSizeAdjustPolicy(QComboBox::AdjustToContents);
        connect(box, &QComboBox::currentIndexChanged, this, &smart_stat::applyFilter);
    }
    auto *filters = new QHBoxLayout;
    filters->addWidget(m_diskLabel);
    filters->addWidget(m_disk);
    filters->addSpacing(12);
    filters->addWidget(m_levelLabel);
    filters->addWidget(m_level);
    filters->addStretch(1);

    m_table = new QTableView(tab);
    m_table->setModel(m_model);
    m_table->setSelectionBehavior(QAbstractItemView::SelectRows);
    m_table->verticalHeader()->hide();
    // Rows of one height: the view then never measures a year of records.
    m_table->verticalHeader()->setSectionResizeMode(QHeaderView::Fixed);
    m_table->verticalHeader()->setDefaultSectionSize(m_table->fontMetrics().height() + 6);
    m_table->horizontalHeader()->setStretchLastSection(true);
    auto *layout = new QVBoxLayout(tab);
    layout->addLayout(filters);
    layout->addWidget(m_table, 1);
    return tab;
}

QWidget *smart_stat::buildGraphTab()
{
    auto *tab = new QWidget(this);
    m_graph = new graph_widget(tab);
    m_graph->setHistory(&m_history);
    m_graphSettings = new QPushButton(IconCache::icon(WindowTexts::imagePath(QLatin1StringView("chart.png"))), QString(), tab);
    connect(m_graphSettings, &QPushButton::clicked, this, &smart_stat::openGraphSettings);
    auto *buttons = new QHBoxLayout;
    buttons->addWidget(m_graphSettings);
    buttons->addStretch(1);
    auto *layout = new QVBoxLayout(tab);
    layout->addLayout(buttons);
    layout->addWidget(m_graph, 1);
    return tab;
}

void smart_stat::showEvent(QShowEvent *event)
{
    QWidget::showEvent(event);
    // Nothing is read before the page is first wanted: the log may be large.
    if (!m_everRead)
        readLog();
}

void smart_stat::setCurrentDisk(int index)
{
    m_currentDisk = index;
    if (m_currentDiskOnly)
        applyGraph();
}

void smart_stat::showPeriod(QDate from, QDate to)
{
    m_from->setDate(from);
    m_to->setDate(to);
    readLog();
}

void smart_stat::readLog()
{
    m_everRead = true;
    m_reading = true;
    m_error.clear();
    // The previous reading ends after its line in hand; its queued rows are dropped by number.
    m_runId = m_reader->startReading(SettingsStore::instance().eventLogPath(), m_from->date(), m_to->date());
    m_history.clear();
    m_model->historyReset();
    m_graph->setDays(m_from->date(), m_to->date());
    m_progress->setValue(0);
    m_progress->show();
    m_status->setText(statusText());
}

void smart_stat::takeRows(quint64 runId)
{
    if (runId != m_runId)
        return;
    for (const LogBatch &batch : m_reader->takeRows()) {
        if (batch.runId == m_runId)
            m_history.append(batch);
    }
    m_model->historyGrew();
}

void smart_stat::showProgress(int tick)
{
    if (m_reading)
        m_progress->setValue(tick);
}

void smart_stat::finishReading(quint64 runId)
{
    if (runId != m_runId)
        return;
    takeRows(runId);
    m_reading = false;
    m_error = m_reader->error();
    m_progress->hide();
    m_graph->historyChanged();
    fillDiskChoice();
    // Measured on the first rows only (the view's own limit), not on a year of them.
    m_table->resizeColumnsToContents();
    m_status->setText(statusText());
    emit readingDone();
}

QString smart_stat::statusText() const
{
    if (m_reading)
        return languageText(Lang::ReadingEventLog);
    if (!m_error.isEmpty())
        return languageText(Lang::EventLogUnreadable).arg(m_error);
    return languageText(Lang::HistorySummary).arg(m_history.eventCount()).arg(m_history.temperatureCount());
}

void smart_stat::fillDiskChoice()
{
    const int chosen = m_disk->currentData().isValid() ? m_disk->currentData().toInt() : -1;
    const QSignalBlocker quiet(m_disk);
    m_disk->clear();
    m_disk->addItem(languageText(Lang::AllDisksFilter), -1);
    for (const int disk : m_model->disks()) {
        QString serial;
        for (const LogHistory::LegendEntry &entry : m_history.legend()) {
            if (entry.disk == disk) {
                serial = entry.serial;
                break;
            }
        }
        m_disk->addItem(languageText(Lang::DiskWithSerial).arg(disk).arg(serial), disk);
    }
    m_disk->setCurrentIndex(qMax(0, m_disk->findData(chosen)));
    applyFilter();
}

void smart_stat::applyFilter()
{
    const int disk = m_disk->currentData().isValid() ? m_disk->currentData().toInt() : -1;
    const int level = m_level->currentData().isValid() ? m_level->currentData().toInt() : 0;
    m_model->setFilter(disk, level);
}

void smart_stat::applyGraph()
{
    const AppSettings &settings = appSettings();
    m_graph->setLines(m_limits ? settings.warn_temp : -1, m_limits ? settings.crit_temp : -1);
    m_graph->setDiskFilter(m_currentDiskOnly ? qMax(m_currentDisk, -1) : -1);
}

void smart_stat::openGraphSettings()
{
    const AppSettings &settings = appSettings();
    gr_set form({m_currentDiskOnly, m_from->date(), m_to->date(), m_limits}, shownTemperature(settings.warn_temp),
                shownTemperature(settings.crit_temp), this);
    if (form.exec() != QDialog::Accepted)
        return;
    const gr_set::Choice choice = form.choice();
    m_currentDiskOnly = choice.currentDiskOnly;
    m_limits = choice.limits;
    applyGraph();
    if (choice.from != m_from->date() || choice.to != m_to->date())
        showPeriod(choice.from, choice.to);
}

void smart_stat::retranslate()
{
    m_periodLabel->setText(languageText(Lang::Period));
    m_show->setText(languageText(Lang::Show));
    m_tabs->setTabText(0, languageText(Lang::WarningAlarmEvents));
    m_tabs->setTabText(1, languageText(Lang::TemperatureGraph));
    m_diskLabel->setText(languageText(Lang::DiskLabel));
    m_levelLabel->setText(languageText(Lang::LevelColumn));
    m_graphSettings->setText(languageText(Lang::GraphSettingsButton));
    m_model->setTexts(languageTable());
    {
        const QSignalBlocker quiet(m_level);
        const int level = m_level->currentIndex();
        m_level->clear();
        m_level->addItem(languageText(Lang::AllLevels), 0);
        m_level->addItem(languageText(Lang::LevelWarning), 2);
        m_level->addItem(languageText(Lang::LevelAlarm), 3);
        m_level->setCurrentIndex(qMax(0, level));
    }
    fillDiskChoice();
    m_status->setText(m_everRead ? statusText() : QString());
}
