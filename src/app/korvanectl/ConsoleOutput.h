#pragma once

#include <QFile>
#include <QObject>
#include <QString>

/// Standard output for a long-running command: every line goes out at once, and a
/// reader that has gone away (`| head -1`) is noticed instead of killing us.
class ConsoleOutput : public QObject
{
    Q_OBJECT
public:
    /// Writes to the process's standard output.
    explicit ConsoleOutput(QObject *parent = nullptr);

    /// Writes \a bytes as they are; false once the output is gone.
    bool write(const QByteArray &bytes);
    /// Writes \a text (UTF-8) followed by a line feed; false once the output is gone.
    bool writeLine(const QString &text);

signals:
    /// The first write that failed: nobody reads the output any more.
    void closed();

private:
    QFile m_file;
    bool m_closed = false;
};
