#pragma once

#include "health/HealthState.h"

#include <QWidget>

/// The heading strip of a page: a text such as "Disk Status [Last Checked: ...]" beside a
/// stripe in the colour of the overall level, so the state shows before anything is read.
class statusLine : public QWidget
{
    Q_OBJECT
public:
    /// An empty strip.
    explicit statusLine(QWidget *parent = nullptr);

    /// Shows \a text.
    void setText(const QString &text);
    /// Colours the stripe by \a level.
    void setLevel(HealthState level);
    /// The text shown.
    QString text() const { return m_text; }

    /// As high as a line of bold text.
    QSize sizeHint() const override;

protected:
    void paintEvent(QPaintEvent *event) override;

private:
    QString m_text;
    HealthState m_level = HealthUnknown;
};
