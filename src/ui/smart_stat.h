#pragma once

#include "stats/LogBatch.h"
#include "stats/LogHistory.h"

#include <QDate>
#include <QWidget>

class EventsTableModel;
class QComboBox;
class QDateEdit;
class QLabel;
class QProgressBar;
class QPushButton;
class QTabWidget;
class QTableView;
class graph_widget;
class load_log;

/// The "Statistics" page: the event log of a period read back on a worker, its warning and
/// alarm records in a table filtered by disk and level, and its temperatures as a graph.
/// The page reads the first time it is shown and whenever the user asks; it never waits for
/// the file, and rows arrive in batches while the bar shows that reading goes on.
class smart_stat : public QWidget
{
    Q_OBJECT
public:
    /// The last seven days, nothing read yet.
    explicit smart_stat(QWidget *parent = nullptr);
    ~smart_stat() override;

    /// The disk selected in the window ("Current Disk" of the graph), -1 for none.
    void setCurrentDisk(int index);
    /// Shows the days \a from to \a to (both included) and reads them.
    void showPeriod(QDate from, QDate to);
    /// Reads the period shown again.
    void readLog();
    /// Takes the texts of the current language table.
    void retranslate();
    /// Whether a reading is in progress.
    bool isReading() const { return m_reading; }

    /// The table's model.
    EventsTableModel *model() const { return m_model; }
    /// The graph.
    graph_widget *graph() const { return m_graph; }
    /// The tabs: the events table first, the graph second.
    QTabWidget *tabs() const { return m_tabs; }
    /// What one reading gave.
    const LogHistory &history() const { return m_history; }

public slots:
    /// Opens "Graph Settings" and applies what the user chose.
    void openGraphSettings();

signals:
    /// A reading has ended and its rows are all shown.
    void readingDone();

protected:
    void showEvent(QShowEvent *event) override;

private:
    QWidget *buildEventsTab();
    QWidget *buildGraphTab();
    void takeRows(quint64 runId);
    void showProgress(int tick);
    void finishReading(quint64 runId);
    void applyFilter();
    void applyGraph();
    void fillDiskChoice();
    QString statusText() const;

    load_log *m_reader;
    LogHistory m_history;
    EventsTableModel *m_model;
    QLabel *m_periodLabel;
    QDateEdit *m_from;
    QDateEdit *m_to;
    QPushButton *m_show;
    QProgressBar *m_progress;
    QLabel *m_status;
    QTabWidget *m_tabs;
    QLabel *m_diskLabel = nullptr;
    QComboBox *m_disk = nullptr;
    QLabel *m_levelLabel = nullptr;
    QComboBox *m_level = nullptr;
    QTableView *m_table = nullptr;
    graph_widget *m_graph = nullptr;
    QPushButton *m_graphSettings = nullptr;
    quint64 m_runId = 0;
    bool m_reading = false;
    bool m_everRead = false;
    QString m_error;
    int m_currentDisk = -1;
    bool m_currentDiskOnly = false;
    bool m_limits = true;
};
