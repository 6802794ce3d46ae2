#include "AccessReport.h"

namespace AccessReport {

QStringList lines(const DriveBackend &backend, const QString &program)
{
    QStringList out;
    for (const std::string &line : backend.accessProblems())
        out << QString::fromStdString(line);
    if (!out.isEmpty()) {
        const std::string advice = backend.accessAdvice(program.toStdString());
        if (!advice.empty())
            out << QString::fromStdString(advice);
    }
    for (const std::string &line : backend.unsupportedDisks())
        out << QString::fromStdString(line);
    return out;
}

} // namespace AccessReport
