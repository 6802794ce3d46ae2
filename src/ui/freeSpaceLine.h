#pragma once

#include <QWidget>

/// One volume's space as a bar: the used part filled, the volume's row text written on it.
class freeSpaceLine : public QWidget
{
    Q_OBJECT
public:
    /// An empty bar.
    explicit freeSpaceLine(QWidget *parent = nullptr);

    /// Shows \a freeBytes of \a totalBytes with \a text on the bar.
    void setSpace(quint64 totalBytes, quint64 freeBytes, const QString &text);

    /// Wide and low.
    QSize sizeHint() const override;

protected:
    void paintEvent(QPaintEvent *event) override;

private:
    double m_usedFraction = 0;
    QString m_text;
};
