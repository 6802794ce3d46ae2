#include "LatencyClass.h"

namespace LatencyClass {

namespace {

// Upper limits in milliseconds; the last class has none.
constexpr int kLimitsMs[kCount - 1] = {5, 20, 50, 150, 500};

} // namespace

int of(qint64 micros)
{
    for (int i = 0; i < kCount - 1; ++i) {
        if (micros < qint64(kLimitsMs[i]) * 1000)
            return i;
    }
    return kCount - 1;
}

QString label(int latencyClass)
{
    if (latencyClass <= 0)
        return QStringLiteral("<%1 ms").arg(kLimitsMs[0]);
    if (latencyClass >= kCount - 1)
        return QStringLiteral(">%1 ms").arg(kLimitsMs[kCount - 2]);
    return QStringLiteral("%1-%2 ms").arg(kLimitsMs[latencyClass - 1]).arg(kLimitsMs[latencyClass]);
}

QString milliseconds(qint64 micros)
{
    return QString::number(double(micros) / 1000.0, 'f', 1);
}

} // namespace LatencyClass
