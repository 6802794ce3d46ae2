#pragma once

#include <QLabel>
#include <QPixmap>

/// The round temperature gauge of the status panel: a dial face for the display unit, the
/// temperature written on it and a needle turned by the Celsius value. Stands in an icon when
/// there is no temperature to show.
class TemperatureGauge : public QLabel
{
    Q_OBJECT
public:
    /// Loads the needle; shows nothing until told.
    explicit TemperatureGauge(QWidget *parent = nullptr);

    /// The warning and critical limits in degrees Celsius, marked on the dial.
    void setLimits(int warningCelsius, int criticalCelsius);
    /// Draws \a celsius in the unit of \a unitSetting (0 Celsius, non-zero Fahrenheit) with \a text written on it.
    void showTemperature(int celsius, int unitSetting, const QString &text);
    /// Shows the picture at \a resourcePath instead of a reading.
    void showIcon(const QString &resourcePath);

    /// The face drawn for \a celsius: what showTemperature() puts on screen.
    QPixmap drawFace(int celsius, int unitSetting, const QString &text) const;

private:
    void drawLimit(QPainter &painter, int celsius, const QColor &colour) const;

    QPixmap m_needle;
    int m_warning = 55;
    int m_critical = 70;
};
