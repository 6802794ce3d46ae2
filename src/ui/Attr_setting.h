#pragma once

#include <QDialog>

class QGroupBox;
class QLabel;
class QPushButton;
class QRadioButton;
class QSpinBox;

/// The notification settings of one SMART attribute: when to notify, and a warning and a
/// critical level that never cross. It opens at the centre of the screen.
class Attr_setting : public QDialog
{
    Q_OBJECT
public:
    /// The form for an attribute where a lower value is worse when \a lowerIsWorse, else a higher one.
    explicit Attr_setting(bool lowerIsWorse, QWidget *parent = nullptr);

    /// Whether a lower value of the attribute is worse (a falling normalised value).
    bool lowerIsWorse() const { return m_lowerIsWorse; }

public slots:
    /// The warning level was set: the critical level follows where they would cross.
    void on_spinBox_warn_valueChanged(int value);
    /// The critical level was set: the warning level follows where they would cross.
    void on_spinBox_crit_valueChanged(int value);
    /// Apply: closes the form as accepted.
    void on_pushButton_2_clicked();
    /// Cancel: closes the form as rejected.
    void on_cancel_bt_clicked();

private:
    void buildForm();
    void retranslate();
    void centreOnScreen();
    QSpinBox *levelBox(const char *name);

    bool m_lowerIsWorse;
    QLabel *m_picture = nullptr;
    QGroupBox *m_group = nullptr;
    QRadioButton *m_never = nullptr;
    QRadioButton *m_changed = nullptr;
    QRadioButton *m_beyond = nullptr;
    QLabel *m_warnLabel = nullptr;
    QLabel *m_critLabel = nullptr;
    QSpinBox *m_warn = nullptr;
    QSpinBox *m_crit = nullptr;
    QPushButton *m_apply = nullptr;
    QPushButton *m_cancel = nullptr;
};
