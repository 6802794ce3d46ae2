#pragma once

#include <QString>

#include <functional>

/// Receives the lines of the detailed diagnostic log; may be empty.
using TraceFunction = std::function<void(const QString &)>;
