#include "BlockColours.h"

#include "scan/LatencyClass.h"

namespace BlockColours {

QColor unverified()
{
    return Qt::white;
}

QColor verified()
{
    return Qt::green;
}

QColor bad()
{
    return Qt::red;
}

QColor current()
{
    return Qt::blue;
}

QColor latency(int latencyClass)
{
    static const QColor classes[LatencyClass::kCount] = {
        QColor(Qt::green), QColor(0xb4, 0xe6, 0x00), QColor(0xff, 0xd8, 0x00),
        QColor(0xff, 0x99, 0x00), QColor(0xd0, 0x50, 0x00), QColor(0x80, 0x00, 0x80)};
    return classes[qBound(0, latencyClass, LatencyClass::kCount - 1)];
}

} // namespace BlockColours
