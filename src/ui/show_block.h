#pragma once

#include <QDialog>

class BlockMap;
class QGroupBox;
class QLabel;
class QListWidget;
class QPushButton;

/// The details of one block of the map: its number, sectors, condition and the bad ranges
/// inside it.
class show_block : public QDialog
{
    Q_OBJECT
public:
    /// Shows block number \a n (1-based) of \a map.
    show_block(const BlockMap &map, qint64 n, QWidget *parent = nullptr);

    QLabel *blockLabel;
    QLabel *sectorsLabel;
    QLabel *conditionLabel;
    QGroupBox *badGroup;
    QListWidget *badList;
    QPushButton *pushButton;

public slots:
    void on_pushButton_clicked();
};
