#pragma once

#include <QDialog>

class QLabel;
class QPushButton;

/// The result of a finished or stopped surface scan: blocks, sectors, bad blocks, time.
class scan_complette_dlg : public QDialog
{
    Q_OBJECT
public:
    /// Builds the dialog with placeholder values; the page fills them in.
    explicit scan_complette_dlg(QWidget *parent = nullptr);

    QPushButton *pushButton; ///< "OK"
    QLabel *label_5;         ///< blocks scanned
    QLabel *label_6;         ///< sectors scanned
    QLabel *label_7;         ///< bad blocks
    QLabel *label_8;         ///< elapsed time; its tooltip the plain seconds

public slots:
    void on_pushButton_clicked();
};
