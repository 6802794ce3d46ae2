#include "Prev_dlg.h"

#include "IconCache.h"
#include "SmtpTestPanel.h"
#include "TrayColourPreview.h"

#include "health/TrayIconPlan.h"
#include "health/WindowTexts.h"
#include "settings/LanguageTable.h"
#include "settings/PreferencesCheck.h"
#include "settings/SettingsStore.h"

#include <QCheckBox>
#include <QComboBox>
#include <QDialogButtonBox>
#include <QDir>
#include <QFileDialog>
#include <QFileInfo>
#include <QFormLayout>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QMessageBox>
#include <QPainter>
#include <QPushButton>
#include <QSpinBox>
#include <QStackedWidget>
#include <QStyleFactory>
#include <QVBoxLayout>

namespace {

// Korvane.ini keeps a style as an index from 0 to 9.
constexpr int MaxStyles = 10;
constexpr int ColourCount = 16;
// The palette's red, also used for the alarm level elsewhere in the window.
const QColor RuleColour(0xd9, 0x3b, 0x30);

QIcon swatch(const QColor &colour)
{
    QPixmap pixmap(16, 16);
    pixmap.fill(colour);
    QPainter painter(&pixmap);
    painter.setPen(QColor(0x44, 0x50, 0x5c));
    painter.drawRect(0, 0, 15, 15);
    return QIcon(pixmap);
}

QComboBox *colourCombo(const QString &key, QWidget *parent)
{
    auto *combo = new QComboBox(parent);
    combo->setObjectName(key);
    for (int index = 0; index < ColourCount; ++index)
        combo->addItem(swatch(TrayIconPlan::colourOf(index)), QString());
    return combo;
}

template <typename Widget>
Widget *named(Widget *widget, const char *key)
{
    widget->setObjectName(QLatin1String(key));
    return widget;
}

// The current index of a combo, or \a held when nothing is chosen (a saved index the list lacks).
int chosen(const QComboBox *combo, int held)
{
    return combo->currentIndex() >= 0 ? combo->currentIndex() : held;
}

} // namespace

Prev_dlg::Prev_dlg(const AppSettings &current, const QList<DiskRecord> &disks, Applier applier, QWidget *parent)
    : QDialog(parent), m_current(current), m_disks(disks), m_applier(std::move(applier))
{
    setObjectName(QStringLiteral("Prev_dlgClass"));
    m_pageList = new QListWidget(this);
    m_pageList->setIconSize(QSize(32, 32));
    m_pageList->setSpacing(2);
    m_pages = new QStackedWidget(this);
    addPage(buildMonitoringPage(), "pref_monitor.png", Lang::MonitoringGroup);
    addPage(buildTemperaturePage(), "pref_temperature.png", Lang::TemperatureColumn);
    addPage(buildNotificationsPage(), "pref_notify.png", Lang::NotificationsPage);
    addPage(buildTasksPage(), "pref_tasks.png", Lang::ExternalTasksPage);
    addPage(buildAppearancePage(), "pref_appearance.png", Lang::AppearancePage);
    connect(m_pageList, &QListWidget::currentRowChanged, m_pages, &QStackedWidget::setCurrentIndex);

    m_buttons = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Apply | QDialogButtonBox::Cancel, this);
    connect(m_buttons, &QDialogButtonBox::accepted, this, [this] {
        if (applyValues())
            accept();
    });
    connect(m_buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
    connect(m_buttons->button(QDialogButtonBox::Apply), &QPushButton::clicked, this, &Prev_dlg::applyValues);
    connect(&SettingsStore::instance(), &SettingsStore::languageChanged, this, &Prev_dlg::retranslate);

    auto *body = new QHBoxLayout;
    body->addWidget(m_pageList);
    body->addWidget(m_pages, 1);
    auto *layout = new QVBoxLayout(this);
    layout->addLayout(body, 1);
    layout->addWidget(m_buttons);

    retranslate();
    load(current);
    m_pageList->setCurrentRow(0);
    // Room for the longest page in every language, so switching pages never resizes the dialog.
    setMinimumSize(sizeHint().expandedTo(QSize(640, 440)));
}

void Prev_dlg::addPage(QWidget *page, const char *icon, int title)
{
    auto *item = new QListWidgetItem(IconCache::icon(WindowTexts::imagePath(QLatin1StringView(icon))), QString(), m_pageList);
    item->setData(Qt::UserRole, title);
    m_pages->addWidget(page);
}

QLabel *Prev_dlg::label(int entry, QWidget *buddy)
{
    auto *text = new QLabel(buddy->parentWidget());
    text->setBuddy(buddy);
    bindText(text, entry);
    return text;
}

void Prev_dlg::bindText(QWidget *widget, int entry)
{
    m_texts.append({widget, entry});
}

void Prev_dlg::bindItems(QComboBox *combo, const QList<int> &entries)
{
    for (qsizetype i = combo->count(); i < entries.size(); ++i)
        combo->addItem(QString());
    m_items.append({combo, entries});
}

QWidget *Prev_dlg::buildMonitoringPage()
{
    auto *page = new QWidget(this);
    m_pollTime = named(new QSpinBox(page), "poll_time");
    m_pollPeriod = named(new QComboBox(page), "poll_period");
    m_spaceTime = named(new QSpinBox(page), "time_check_space");
    m_spacePeriod = named(new QComboBox(page), "period_check_space");
    for (QSpinBox *count : {m_pollTime, m_spaceTime})
        count->setRange(1, 9999);
    for (QComboBox *unit : {m_pollPeriod, m_spacePeriod})
        bindItems(unit, {Lang::UnitSeconds, Lang::UnitMinutes, Lang::UnitHours});
    m_startup = named(new QCheckBox(page), "startup");
    bindText(m_startup, Lang::StartAtLogon);

    auto *grid = new QGridLayout;
    grid->addWidget(label(Lang::CheckSmartEvery, m_pollTime), 0, 0);
    grid->addWidget(m_pollTime, 0, 1);
    grid->addWidget(m_pollPeriod, 0, 2);
    grid->addWidget(label(Lang::CheckSpaceEvery, m_spaceTime), 1, 0);
    grid->addWidget(m_spaceTime, 1, 1);
    grid->addWidget(m_spacePeriod, 1, 2);
    grid->setColumnStretch(3, 1);
    auto *layout = new QVBoxLayout(page);
    layout->addLayout(grid);
    layout->addSpacing(12);
    layout->addWidget(m_startup);
    layout->addStretch(1);
    return page;
}

QWidget *Prev_dlg::buildTemperaturePage()
{
    auto *page = new QWidget(this);
    auto *limits = new QGroupBox(page);
    bindText(limits, Lang::TemperatureLimits);
    m_warnTemp = named(new QSpinBox(limits), "warn_temp");
    m_critTemp = named(new QSpinBox(limits), "crit_temp");
    // Wide enough to cover what the rule accepts and a little more, so a wrong pair can be seen.
    m_warnTemp->setRange(0, 120);
    m_critTemp->setRange(0, 120);
    m_warnOther = new QLabel(limits);
    m_critOther = new QLabel(limits);
    m_rule = new QLabel(limits);
    m_rule->setWordWrap(true);
    QPalette warning = m_rule->palette();
    warning.setColor(QPalette::WindowText, RuleColour);
    m_rule->setPalette(warning);
    bindText(m_rule, Lang::TemperatureRule);
    auto *grid = new QGridLayout(limits);
    grid->addWidget(label(Lang::WarningTemperature, m_warnTemp), 0, 0);
    grid->addWidget(m_warnTemp, 0, 1);
    grid->addWidget(m_warnOther, 0, 2);
    grid->addWidget(label(Lang::CriticalTemperature, m_critTemp), 1, 0);
    grid->addWidget(m_critTemp, 1, 1);
    grid->addWidget(m_critOther, 1, 2);
    grid->addWidget(m_rule, 2, 0, 1, 4);
    grid->setColumnStretch(3, 1);

    m_unit = named(new QComboBox(page), "temp_celsius");
    bindItems(m_unit, {Lang::CelsiusName, Lang::FahrenheitName});
    auto *unitRow = new QHBoxLayout;
    unitRow->addWidget(label(Lang::ShowTemperatureIn, m_unit));
    unitRow->addWidget(m_unit);
    unitRow->addStretch(1);

    for (QSpinBox *limit : {m_warnTemp, m_critTemp})
        connect(limit, &QSpinBox::valueChanged, this, &Prev_dlg::updateTemperatureHints);
    connect(m_unit, &QComboBox::currentIndexChanged, this, &Prev_dlg::updateTemperatureHints);

    auto *layout = new QVBoxLayout(page);
    layout->addWidget(limits);
    layout->addLayout(unitRow);
    layout->addWidget(buildTrayGroup());
    layout->addStretch(1);
    return page;
}

QWidget *Prev_dlg::buildTrayGroup()
{
    auto *tray = new QGroupBox(this);
    bindText(tray, Lang::TrayIconGroup);
    m_showTemp = named(new QCheckBox(tray), "show_temp");
    bindText(m_showTemp, Lang::ShowTrayTemperature);
    m_trayDisk = named(new QComboBox(tray), "disk_temp_show");
    m_trayDisk->setSizeAdjustPolicy(QComboBox::AdjustToContents);
    for (int i = 0; i < m_disks.size(); ++i)
        m_trayDisk->addItem(QStringLiteral("HD%1  %2").arg(i).arg(m_disks.at(i).model), i);
    const char *keys[3] = {"color_N", "color_W", "color_C"};
    const int names[3] = {Lang::ColourNormal, Lang::ColourWarning, Lang::ColourCritical};
    m_preview = new TrayColourPreview(tray);

    auto *grid = new QGridLayout(tray);
    grid->addWidget(m_showTemp, 0, 0, 1, 3);
    grid->addWidget(label(Lang::DiskLabel, m_trayDisk), 1, 0);
    grid->addWidget(m_trayDisk, 1, 1, 1, 2);
    auto *heading = new QLabel(tray);
    bindText(heading, Lang::TrayColours);
    grid->addWidget(heading, 2, 0, 1, 3);
    QList<int> colourNames;
    for (int index = 0; index < ColourCount; ++index)
        colourNames << Lang::ColourWhite + index;
    for (int level = 0; level < 3; ++level) {
        m_colours[level] = colourCombo(QLatin1String(keys[level]), tray);
        bindItems(m_colours[level], colourNames);
        grid->addWidget(label(names[level], m_colours[level]), 3 + level, 0);
        grid->addWidget(m_colours[level], 3 + level, 1);
        connect(m_colours[level], &QComboBox::currentIndexChanged, this, &Prev_dlg::updateTemperatureHints);
    }
    grid->addWidget(label(Lang::Preview, m_preview), 3, 2, Qt::AlignBottom);
    grid->addWidget(m_preview, 4, 2, 2, 1, Qt::AlignTop | Qt::AlignLeft);
    grid->setColumnStretch(3, 1);
    connect(m_showTemp, &QCheckBox::toggled, this, &Prev_dlg::updateEnabling);
    return tray;
}

QWidget *Prev_dlg::buildNotificationsPage()
{
    auto *page = new QWidget(this);
    m_popups = named(new QCheckBox(page), "pop_notif_enable");
    bindText(m_popups, Lang::PopupNotifications);
    m_mail = named(new QCheckBox(page), "eml_notif_enable");
    bindText(m_mail, Lang::EmailNotifications);

    auto *server = new QGroupBox(page);
    m_mailServer = server;
    bindText(server, Lang::MailServerGroup);
    m_from = named(new QLineEdit(server), "SMTP_from");
    m_to = named(new QLineEdit(server), "SMTP_to");
    m_server = named(new QLineEdit(server), "SMTP_server");
    m_port = named(new QSpinBox(server), "SMTP_port");
    m_port->setRange(1, 49999);
    m_security = named(new QComboBox(server), "SMTP_security");
    bindItems(m_security, {Lang::SecurityNone, Lang::SecurityStartTls, Lang::SecurityTls});
    // Only a choice of the user moves the port, never loading the values.
    connect(m_security, &QComboBox::activated, this,
            [this](int security) { m_port->setValue(SmtpParams::portFor(security, m_port->value())); });
    m_auth = named(new QCheckBox(server), "SMTP_auth");
    bindText(m_auth, Lang::SmtpAuth);
    m_user = named(new QLineEdit(server), "SMTP_user");
    m_pass = named(new QLineEdit(server), "SMTP_pass");
    m_pass->setEchoMode(QLineEdit::Password);
    auto *form = new QFormLayout(server);
    form->addRow(label(Lang::SmtpFrom, m_from), m_from);
    form->addRow(label(Lang::SmtpTo, m_to), m_to);
    form->addRow(label(Lang::SmtpServer, m_server), m_server);
    form->addRow(label(Lang::SmtpPort, m_port), m_port);
    form->addRow(label(Lang::SmtpSecurityLabel, m_security), m_security);
    form->addRow(m_auth);
    form->addRow(label(Lang::SmtpUser, m_user), m_user);
    form->addRow(label(Lang::SmtpPassword, m_pass), m_pass);
    m_smtpTest = new SmtpTestPanel([this] { return smtpParams(); }, server);
    form->addRow(m_smtpTest);
    connect(m_smtpTest, &SmtpTestPanel::testStarted, this, [this] { waitForTest(true); });
    connect(m_smtpTest, &SmtpTestPanel::testFinished, this, [this] { waitForTest(false); });
    connect(m_mail, &QCheckBox::toggled, this, &Prev_dlg::updateEnabling);
    connect(m_auth, &QCheckBox::toggled, this, &Prev_dlg::updateEnabling);

    auto *layout = new QVBoxLayout(page);
    layout->addWidget(m_popups);
    layout->addWidget(m_mail);
    layout->addWidget(server, 1);
    return page;
}

QWidget *Prev_dlg::buildTasksPage()
{
    auto *page = new QWidget(this);
    auto *group = new QGroupBox(page);
    bindText(group, Lang::RunExternalTask);
    m_warnTask = named(new QLineEdit(group), "extWarnTask");
    m_critTask = named(new QLineEdit(group), "extCritTask");
    auto *grid = new QGridLayout(group);
    int row = 0;
    for (const auto &[field, caption] : {std::pair{m_warnTask, Lang::OnWarning}, std::pair{m_critTask, Lang::OnAlarm}}) {
        auto *browse = new QPushButton(group);
        bindText(browse, Lang::Browse);
        m_browseButtons.append({browse, caption});
        connect(browse, &QPushButton::clicked, this, [this, edit = field] { chooseProgram(edit); });
        grid->addWidget(label(caption, field), row, 0);
        grid->addWidget(field, row, 1);
        grid->addWidget(browse, row, 2);
        ++row;
    }
    auto *hint = new QLabel(group);
    hint->setWordWrap(true);
    bindText(hint, Lang::ExternalTaskHint);
    grid->addWidget(hint, row, 0, 1, 3);

    auto *layout = new QVBoxLayout(page);
    layout->addWidget(group);
    layout->addStretch(1);
    return page;
}

QWidget *Prev_dlg::buildAppearancePage()
{
    auto *page = new QWidget(this);
    m_style = named(new QComboBox(page), "StyleType");
    m_style->addItems(QStyleFactory::keys().mid(0, MaxStyles));
    m_language = named(new QComboBox(page), "LanguageType");
    // In the order of the language indexes, so the list position is the index.
    bindItems(m_language, {Lang::LanguageEnglish, Lang::LanguageRussian, Lang::LanguageGerman});
    m_languageNote = new QLabel(page);
    m_languageNote->setWordWrap(true);
    bindText(m_languageNote, Lang::GermanSessionOnly);
    connect(m_language, &QComboBox::currentIndexChanged, this, &Prev_dlg::updateEnabling);

    auto *form = new QFormLayout;
    form->addRow(label(Lang::StyleLabel, m_style), m_style);
    form->addRow(label(Lang::LanguageLabel, m_language), m_language);
    auto *layout = new QVBoxLayout(page);
    layout->addLayout(form);
    layout->addWidget(m_languageNote);
    layout->addStretch(1);
    return page;
}

void Prev_dlg::retranslate()
{
    setWindowTitle(languageText(Lang::PreferencesTitle));
    m_pageList->setAccessibleName(languageText(Lang::PreferencesTitle));
    for (int row = 0; row < m_pageList->count(); ++row) {
        QListWidgetItem *item = m_pageList->item(row);
        item->setText(languageText(item->data(Qt::UserRole).toInt()));
    }
    m_pageList->setFixedWidth(m_pageList->sizeHintForColumn(0) + 2 * m_pageList->frameWidth() + 8);
    for (const auto &[widget, entry] : m_texts) {
        const QString text = languageText(entry);
        if (auto *caption = qobject_cast<QLabel *>(widget)) {
            caption->setText(text);
            // A combo box is announced by its current item: its label must name it too.
            if (auto *combo = qobject_cast<QComboBox *>(caption->buddy()))
                combo->setAccessibleName(text);
        }
        else if (auto *button = qobject_cast<QAbstractButton *>(widget))
            button->setText(text);
        else if (auto *group = qobject_cast<QGroupBox *>(widget))
            group->setTitle(text);
    }
    for (const auto &[combo, entries] : m_items)
        for (int i = 0; i < entries.size(); ++i)
            combo->setItemText(i, languageText(entries.at(i)));
    if (m_trayDisk->count() == m_disks.size() + 1)
        m_trayDisk->setItemText(m_disks.size(),
                                languageText(Lang::DiskNotPresent).arg(m_trayDisk->itemData(m_disks.size()).toInt()));
    // Two buttons of one text: a screen reader must tell which program each chooses.
    for (const auto &[button, caption] : m_browseButtons)
        button->setAccessibleName(QStringLiteral("%1 %2").arg(languageText(Lang::Browse), languageText(caption)));
    m_pollPeriod->setAccessibleName(languageText(Lang::CheckSmartEvery));
    m_spacePeriod->setAccessibleName(languageText(Lang::CheckSpaceEvery));
    for (QSpinBox *limit : {m_warnTemp, m_critTemp})
        limit->setSuffix(QLatin1Char(' ') + languageText(Lang::UnitCelsius));
    m_smtpTest->retranslate();
    m_buttons->button(QDialogButtonBox::Ok)->setText(languageText(Lang::Ok));
    m_buttons->button(QDialogButtonBox::Apply)->setText(languageText(Lang::Apply));
    m_buttons->button(QDialogButtonBox::Cancel)->setText(languageText(Lang::Cancel));
    updateTemperatureHints();
}

void Prev_dlg::load(const AppSettings &settings)
{
    m_current = settings;
    m_pollTime->setValue(settings.poll_time);
    m_pollPeriod->setCurrentIndex(settings.poll_period);
    m_spaceTime->setValue(settings.time_check_space);
    m_spacePeriod->setCurrentIndex(settings.period_check_space);
    m_startup->setChecked(settings.startup);
    m_warnTemp->setValue(settings.warn_temp);
    m_critTemp->setValue(settings.crit_temp);
    m_unit->setCurrentIndex(settings.temp_celsius == 0 ? 0 : 1);
    m_showTemp->setChecked(settings.show_temp);
    // A remembered disk that is not here now stays chosen, and says so.
    if (m_trayDisk->findData(settings.disk_temp_show) < 0) {
        m_trayDisk->addItem(languageText(Lang::DiskNotPresent).arg(settings.disk_temp_show), settings.disk_temp_show);
    }
    m_trayDisk->setCurrentIndex(m_trayDisk->findData(settings.disk_temp_show));
    const int colours[3] = {settings.color_N, settings.color_W, settings.color_C};
    for (int level = 0; level < 3; ++level)
        m_colours[level]->setCurrentIndex(colours[level] < ColourCount ? colours[level] : -1);
    m_popups->setChecked(settings.pop_notif_enable);
    m_mail->setChecked(settings.eml_notif_enable);
    m_from->setText(settings.SMTP_from);
    m_to->setText(settings.SMTP_to);
    m_server->setText(settings.SMTP_server);
    m_port->setValue(settings.SMTP_port);
    m_security->setCurrentIndex(qBound(0, settings.SMTP_security, 2));
    m_auth->setChecked(settings.SMTP_auth);
    m_user->setText(settings.SMTP_user);
    m_pass->setText(settings.SMTP_pass);
    m_warnTask->setText(settings.extWarnTask);
    m_critTask->setText(settings.extCritTask);
    m_style->setCurrentIndex(settings.StyleType < m_style->count() ? settings.StyleType : -1);
    m_language->setCurrentIndex(qBound(0, settings.LanguageType, 2));
    updateTemperatureHints();
    updateEnabling();
}

AppSettings Prev_dlg::values() const
{
    AppSettings s = m_current;
    s.poll_time = m_pollTime->value();
    s.poll_period = m_pollPeriod->currentIndex();
    s.time_check_space = m_spaceTime->value();
    s.period_check_space = m_spacePeriod->currentIndex();
    s.startup = m_startup->isChecked();
    s.warn_temp = m_warnTemp->value();
    s.crit_temp = m_critTemp->value();
    s.temp_celsius = m_unit->currentIndex();
    s.show_temp = m_showTemp->isChecked();
    if (m_trayDisk->currentIndex() >= 0)
        s.disk_temp_show = m_trayDisk->currentData().toInt();
    s.color_N = chosen(m_colours[0], m_current.color_N);
    s.color_W = chosen(m_colours[1], m_current.color_W);
    s.color_C = chosen(m_colours[2], m_current.color_C);
    s.pop_notif_enable = m_popups->isChecked();
    s.eml_notif_enable = m_mail->isChecked();
    s.SMTP_from = m_from->text();
    s.SMTP_to = m_to->text();
    s.SMTP_server = m_server->text();
    s.SMTP_port = m_port->value();
    s.SMTP_security = m_security->currentIndex();
    s.SMTP_auth = m_auth->isChecked();
    s.SMTP_user = m_user->text();
    s.SMTP_pass = m_pass->text();
    s.extWarnTask = m_warnTask->text();
    s.extCritTask = m_critTask->text();
    s.StyleType = chosen(m_style, m_current.StyleType);
    s.LanguageType = m_language->currentIndex();
    return s;
}

void Prev_dlg::updateTemperatureHints()
{
    AppSettings shown;
    shown.temp_celsius = m_unit->currentIndex();
    const bool fahrenheit = shown.temp_celsius != 0;
    const QString unit = languageText(Lang::UnitFahrenheit);
    m_warnOther->setText(QStringLiteral("= %1 %2").arg(shown.displayTemperature(m_warnTemp->value())).arg(unit));
    m_critOther->setText(QStringLiteral("= %1 %2").arg(shown.displayTemperature(m_critTemp->value())).arg(unit));
    m_warnOther->setVisible(fahrenheit);
    m_critOther->setVisible(fahrenheit);
    m_rule->setVisible(!PreferencesCheck::temperaturesValid(m_warnTemp->value(), m_critTemp->value()));

    // The tray at each level: below the warning limit, at it, and at the critical limit.
    const int samples[3] = {qMax(0, m_warnTemp->value() - 10), m_warnTemp->value(), m_critTemp->value()};
    QList<TrayColourPreview::Sample> preview;
    for (int level = 0; level < 3; ++level)
        preview.append({QString::number(shown.displayTemperature(samples[level])),
                        TrayIconPlan::colourOf(m_colours[level]->currentIndex())});
    m_preview->setSamples(preview);
}

void Prev_dlg::updateEnabling()
{
    m_trayDisk->setEnabled(m_showTemp->isChecked());
    m_mailServer->setEnabled(m_mail->isChecked());
    m_user->setEnabled(m_auth->isChecked());
    m_pass->setEnabled(m_auth->isChecked());
    m_languageNote->setVisible(m_language->currentIndex() == 2);
}

void Prev_dlg::chooseProgram(QLineEdit *field)
{
    const QFileInfo current(field->text());
    const QString folder = current.isAbsolute() ? current.absolutePath() : QDir::homePath();
    const QString program = QFileDialog::getOpenFileName(this, languageText(Lang::ChooseProgram), folder);
    if (!program.isEmpty())
        field->setText(QDir::toNativeSeparators(program));
}

SmtpParams Prev_dlg::smtpParams() const
{
    return SmtpParams::fromSettings(values());
}

void Prev_dlg::waitForTest(bool waiting)
{
    // The fields stay as they were sent until the server has answered.
    setEnabled(!waiting);
    if (waiting)
        setCursor(Qt::WaitCursor);
    else
        unsetCursor();
}

bool Prev_dlg::applyValues()
{
    const PreferencesOutcome outcome = m_applier(values());
    showOutcome(outcome);
    if (!outcome.applied)
        return false;
    load(appSettings());
    return true;
}

void Prev_dlg::showOutcome(const PreferencesOutcome &outcome)
{
    const QString title = languageText(Lang::Title);
    if (!outcome.refused.isEmpty()) {
        QStringList texts;
        for (const PreferencesProblem &problem : outcome.refused)
            texts << problem.text;
        QMessageBox::warning(this, title, texts.join(QStringLiteral("\n\n")));
        // Take the user to the first value to mend.
        if (auto *field = findChild<QWidget *>(outcome.refused.first().key)) {
            for (QWidget *widget = field; widget; widget = widget->parentWidget()) {
                if (const int page = m_pages->indexOf(widget); page >= 0)
                    m_pageList->setCurrentRow(page);
            }
            field->setFocus();
        }
    }
    for (const QString &warning : outcome.warnings)
        QMessageBox::warning(this, title, warning);
}

void Prev_dlg::showPage(int index)
{
    m_pageList->setCurrentRow(index);
}

int Prev_dlg::pageCount() const
{
    return m_pages->count();
}
