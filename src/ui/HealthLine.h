#pragma once

#include "health/HealthState.h"

#include <QWidget>

/// The health bar of the status panel: the health percentage as a filled bar in the colour of
/// the disk's level, with the percentage written on it.
class HealthLine : public QWidget
{
    Q_OBJECT
public:
    /// An empty bar (no disk evaluated).
    explicit HealthLine(QWidget *parent = nullptr);

    /// Shows \a percentage (clamped to 0..100) at \a level.
    void setHealth(int percentage, HealthState level);
    /// Shows no value at all (disk not monitored or without SMART).
    void clear();

    /// Wide and low.
    QSize sizeHint() const override;

protected:
    void paintEvent(QPaintEvent *event) override;

private:
    int m_percentage = -1;
    HealthState m_level = HealthUnknown;
};
