#pragma once

#include <QDate>
#include <QDialog>

class QCheckBox;
class QDateEdit;
class QGroupBox;
class QLabel;
class QPushButton;
class QRadioButton;

/// "Graph Settings": which disks the temperature graph draws ("All Disks" or "Current
/// Disk"), its days, and whether it draws the temperature limits of the preferences.
class gr_set : public QDialog
{
    Q_OBJECT
public:
    /// What the form edits.
    struct Choice
    {
        bool currentDiskOnly = false; ///< "Current Disk" rather than "All Disks"
        QDate from;                   ///< first day
        QDate to;                     ///< last day
        bool limits = true;           ///< draw the warning and critical lines
    };

    /// The form showing \a choice; \a warning and \a critical are the limits as the window
    /// shows temperatures (value and unit).
    gr_set(const Choice &choice, const QString &warning, const QString &critical, QWidget *parent = nullptr);

    /// The values as the user left them.
    Choice choice() const;

private:
    void retranslate(const QString &warning, const QString &critical);

    QGroupBox *m_disks;
    QRadioButton *m_allDisks;
    QRadioButton *m_currentDisk;
    QLabel *m_periodLabel;
    QDateEdit *m_from;
    QDateEdit *m_to;
    QCheckBox *m_limits;
    QPushButton *m_ok;
    QPushButton *m_cancel;
};
