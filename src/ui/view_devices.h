#pragma once

#include <QFrame>

/// The "Looking for devices ..." panel shown over the window while discovery runs.
class view_devices : public QFrame
{
    Q_OBJECT
public:
    /// A framed panel with the text and a busy bar, 193 x 70.
    explicit view_devices(QWidget *parent = nullptr);
};
