#pragma once

#include <QDialog>

class QCheckBox;
class QComboBox;
class QGroupBox;
class QLabel;
class QPushButton;
class QRadioButton;

/// "Disk Settings": whether a disk is checked, and how its vendor-specific raw values (power-on
/// count, temperature, load/unload count) are to be read. Nothing reads its values back.
class Device_dlg : public QDialog
{
    Q_OBJECT
public:
    /// The form with the disk checked, power-on hours in hours and the temperature in degrees.
    explicit Device_dlg(QWidget *parent = nullptr);

    /// Takes the disk the form is opened for, by its row in the disk tree; the form shows no
    /// disk's values, so it keeps nothing of it.
    void setDevice(int row);
    /// The label after the load/unload count check box ("two values").
    QLabel *twoValuesLabel() const { return m_twoValues; }

public slots:
    /// Apply: closes the form as accepted.
    void on_pushButton_clicked();
    /// Cancel: closes the form as rejected.
    void on_pushButton_2_clicked();

private:
    void buildForm();
    QGroupBox *buildVendorGroup();
    void retranslate();

    QCheckBox *m_checkDevice = nullptr;
    QGroupBox *m_vendor = nullptr;
    QLabel *m_powerOnLabel = nullptr;
    QComboBox *m_powerOnUnit = nullptr;
    QLabel *m_temperatureLabel = nullptr;
    QRadioButton *m_temperatureOne = nullptr;
    QRadioButton *m_temperatureTenths = nullptr;
    QCheckBox *m_loadUnload = nullptr;
    QLabel *m_twoValues = nullptr;
    QPushButton *m_apply = nullptr;
    QPushButton *m_cancel = nullptr;
};
