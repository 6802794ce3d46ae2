#pragma once

#include <QDialog>

class LicenceLayer;

/// The about box: the program's name and icon, its version and edition, what it does and its licence.
class AboutDialog : public QDialog
{
    Q_OBJECT
public:
    /// The box for the edition \a licence describes.
    explicit AboutDialog(const LicenceLayer &licence, QWidget *parent = nullptr);
};
