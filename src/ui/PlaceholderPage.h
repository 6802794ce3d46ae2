#pragma once

#include <QWidget>

/// A page whose content is not built yet: a short centred note.
class PlaceholderPage : public QWidget
{
    Q_OBJECT
public:
    /// Shows \a text in the middle of the page.
    explicit PlaceholderPage(const QString &text, QWidget *parent = nullptr);
};
