#include "ConsoleOutput.h"

#include <cstdio>

ConsoleOutput::ConsoleOutput(QObject *parent)
    : QObject(parent)
{
    // Unbuffered: each line is one write, seen by the reader at once, and a
    // failed write shows at the line that failed.
    // The descriptor rather than the C stream: the stream would keep a failed
    // write to itself.
    m_file.open(fileno(stdout), QIODevice::WriteOnly | QIODevice::Unbuffered);
}

bool ConsoleOutput::writeLine(const QString &text)
{
    return write((text + QLatin1Char('\n')).toUtf8());
}

bool ConsoleOutput::write(const QByteArray &bytes)
{
    if (m_closed)
        return false;
    if (m_file.write(bytes) == bytes.size())
        return true;
    m_closed = true;
    emit closed();
    return false;
}
