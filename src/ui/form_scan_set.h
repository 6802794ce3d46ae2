#pragma once

#include <QWidget>

class QCheckBox;
class QDoubleSpinBox;
class QGroupBox;
class QLabel;
class QProgressBar;
class QPushButton;
class QRadioButton;

/// The column of controls on the right of a scan page: the legend, the check-block size, the
/// sector range, start and stop, status, speed and progress, and the read-time colouring. It
/// has no logic of its own; the page drives its children.
class form_scan_set : public QWidget
{
    Q_OBJECT
public:
    /// Builds the controls at their fixed places, idle.
    explicit form_scan_set(QWidget *parent = nullptr);
    /// Takes every text from the current language table.
    void retranslate();

    QLabel *Label;              ///< "To sector"
    QLabel *label_2;            ///< "From sector"
    QGroupBox *groupBox;        ///< "Check Block Size"
    QRadioButton *radioButton;  ///< 512 bytes
    QRadioButton *radioButton_2; ///< 64 KB, checked at first
    QRadioButton *radioButton_3; ///< 256 KB
    QPushButton *pushButton;    ///< start
    QPushButton *pushButton_2;  ///< stop
    QGroupBox *groupBox_2;      ///< the legend
    QLabel *label;              ///< unverified
    QLabel *label_3;            ///< verified
    QLabel *label_4;            ///< bad
    QLabel *label_5;            ///< being verified
    /// From sector. A double box holds whole sector numbers up to 2^53, so disks past the
    /// 2147483647 sectors of an int box can be scanned to their end.
    QDoubleSpinBox *spinBox;
    QDoubleSpinBox *spinBox_2;  ///< to sector
    QProgressBar *progressBar;
    QLabel *label_6;            ///< status ("Scanning...")
    QLabel *label_11;           ///< read speed
    QCheckBox *latencyBox;      ///< colour verified blocks by read time
    QWidget *latencyLegend;     ///< the read-time classes, shown while latencyBox is checked
    QList<QLabel *> latencyLabels;

private:
    void buildLegend();
    void buildLatencyLegend();
};
