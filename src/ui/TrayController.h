#pragma once

#include "health/HealthState.h"

#include <QObject>
#include <QSystemTrayIcon>

class DesktopNotifier;
class QMenu;
struct TrayIconPlan;

/// The tray side of the window: the icon with its menu and tooltip, and the pop-ups. Where the
/// desktop has no tray, pop-ups go straight to the desktop's notification service instead.
class TrayController : public QObject
{
    Q_OBJECT
public:
    /// A tray icon with \a menu; shown at once when the desktop has a tray.
    explicit TrayController(QMenu *menu, QObject *parent = nullptr);
    ~TrayController() override;

    /// True when the desktop shows tray icons.
    bool isTrayAvailable() const;
    /// Applies \a plan: the temperature digits or the status icon, and the tooltip.
    void apply(const TrayIconPlan &plan);
    /// Shows a pop-up with \a title and \a text at \a level (WARNING or ALARM).
    void popUp(const QString &title, const QString &text, HealthState level);
    /// The icon the tray shows now.
    QIcon icon() const;
    /// The tooltip the tray shows now.
    QString toolTip() const;

signals:
    /// The tray icon was clicked.
    void activated(QSystemTrayIcon::ActivationReason reason);

private:
    QSystemTrayIcon *m_tray;
    DesktopNotifier *m_notifier;
    QString m_drawn; ///< what the icon shows now: digits and colour, or the status icon's path
};
