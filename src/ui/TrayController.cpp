#include "TrayController.h"

#include "TrayIconPainter.h"

#include "health/DesktopNotifier.h"
#include "health/TrayIconPlan.h"

#include <QMenu>

TrayController::TrayController(QMenu *menu, QObject *parent)
    : QObject(parent), m_tray(new QSystemTrayIcon(this)), m_notifier(new DesktopNotifier(this))
{
    m_tray->setContextMenu(menu);
    m_tray->setIcon(QIcon(QStringLiteral(":/new/prefix1/images/secure_apply.png")));
    m_tray->setToolTip(QStringLiteral("Korvane"));
    connect(m_tray, &QSystemTrayIcon::activated, this, &TrayController::activated);
    if (isTrayAvailable())
        m_tray->show();
}

TrayController::~TrayController() = default;

bool TrayController::isTrayAvailable() const
{
    return QSystemTrayIcon::isSystemTrayAvailable();
}

void TrayController::apply(const TrayIconPlan &plan)
{
    if (plan.empty)
        return;
    if (plan.temperatureMode)
        m_tray->setIcon(QIcon(TrayIconPainter::temperature(plan.digits, QColor(plan.colour))));
    else if (!plan.statusIcon.isEmpty())
        m_tray->setIcon(QIcon(plan.statusIcon));
    m_tray->setToolTip(plan.toolTip);
}

void TrayController::popUp(const QString &title, const QString &text, HealthState level)
{
    // Qt's balloon shows nothing at all where there is no tray: tell the desktop directly.
    if (isTrayAvailable() && m_tray->isVisible() && QSystemTrayIcon::supportsMessages()) {
        m_tray->showMessage(title, text,
                            level == HealthAlarm ? QSystemTrayIcon::Critical : QSystemTrayIcon::Warning, 0);
        return;
    }
    m_notifier->notify(title, text, level);
}

QIcon TrayController::icon() const
{
    return m_tray->icon();
}

QString TrayController::toolTip() const
{
    return m_tray->toolTip();
}
