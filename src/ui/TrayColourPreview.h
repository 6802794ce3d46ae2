#pragma once

#include <QColor>
#include <QList>
#include <QString>
#include <QWidget>

/// The tray's temperature icon as the three colour settings would draw it: one sample per level,
/// at twice the size, on a dark and on a light panel, since panels come in both.
class TrayColourPreview : public QWidget
{
    Q_OBJECT
public:
    /// One icon to show: the digits and their colour.
    struct Sample
    {
        QString digits;
        QColor colour;
    };

    /// An empty preview.
    explicit TrayColourPreview(QWidget *parent = nullptr);

    /// Shows \a samples from left to right.
    void setSamples(const QList<Sample> &samples);
    /// The samples shown now.
    QList<Sample> samples() const { return m_samples; }

    QSize sizeHint() const override;

protected:
    void paintEvent(QPaintEvent *event) override;

private:
    QList<Sample> m_samples;
};
