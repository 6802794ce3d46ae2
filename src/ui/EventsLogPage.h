#pragma once

#include <QWidget>

class QListWidget;

/// The "Events Log" page: the session's events, newest on top, each with the icon of its kind.
/// The list is not saved and has no size limit.
class EventsLogPage : public QWidget
{
    Q_OBJECT
public:
    /// An empty list.
    explicit EventsLogPage(QWidget *parent = nullptr);

    /// Puts \a text with the icon at \a iconPath on top of the list.
    void addLine(const QString &iconPath, const QString &text);
    /// The texts in display order (newest first).
    QStringList lines() const;
    /// The list widget.
    QListWidget *list() const { return m_list; }
    /// Takes the name screen readers say from the current language table.
    void retranslate();

private:
    QListWidget *m_list;
};
