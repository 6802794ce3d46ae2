#pragma once

#include <QWidget>

class QLabel;

/// A page whose content is not built yet: a short centred note.
class PlaceholderPage : public QWidget
{
    Q_OBJECT
public:
    /// Shows the language table's \a entry in the middle of the page.
    explicit PlaceholderPage(int entry, QWidget *parent = nullptr);
    /// Takes the note from the current language table.
    void retranslate();

private:
    int m_entry;
    QLabel *m_label;
};
