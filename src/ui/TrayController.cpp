#include "TrayController.h"

#include "IconCache.h"

#include "TrayIconPainter.h"

#include "health/DesktopNotifier.h"
#include "health/TrayIconPlan.h"

#include <QMenu>

TrayController::TrayController(QMenu *menu, QObject *parent)
    : QObject(parent), m_tray(new QSystemTrayIcon(this)), m_notifier(new DesktopNotifier(this))
{
    m_tray->setContextMenu(menu);
    m_tray->setIcon(IconCache::icon(QStringLiteral(":/new/prefix1/images/secure_apply.png")));
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
    // Every new icon goes out to the panel: send one only when the picture changes.
    const QString drawn = plan.temperatureMode ? plan.digits + QLatin1Char('/') + QString::number(plan.colour)
                                               : plan.statusIcon;
    if (!drawn.isEmpty() && drawn != m_drawn) {
        m_drawn = drawn;
        m_tray->setIcon(plan.temperatureMode
                            ? QIcon(TrayIconPainter::temperature(plan.digits, QColor(plan.colour)))
                            : IconCache::icon(plan.statusIcon));
    }
    if (plan.toolTip != m_tray->toolTip())
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
