#include "AtaSectors.h"

#include <algorithm>
#include <numeric>

namespace AtaSectors {

namespace {

quint8 byteSum(const Sector &sector, std::size_t count)
{
    return quint8(std::accumulate(sector.begin(), sector.begin() + count, 0u));
}

} // namespace

void sealIdentify(Sector &identify)
{
    identify[510] = 0xA5;
    identify[511] = quint8(-byteSum(identify, 511));
}

void sealSmart(Sector &sector)
{
    sector[511] = quint8(-byteSum(sector, 511));
}

quint64 lbaCount(const Sector &identify)
{
    if (sectorWord(identify, 83) & 0x0400) {
        return quint64(sectorWord(identify, 100)) | quint64(sectorWord(identify, 101)) << 16
               | quint64(sectorWord(identify, 102)) << 32 | quint64(sectorWord(identify, 103)) << 48;
    }
    return quint64(sectorWord(identify, 60)) | quint64(sectorWord(identify, 61)) << 16;
}

void putLbaCount(Sector &identify, quint64 sectors)
{
    const quint64 lba28 = std::min<quint64>(sectors, 0x0FFFFFFF);
    setSectorWord(identify, 60, quint16(lba28));
    setSectorWord(identify, 61, quint16(lba28 >> 16));
    for (int i = 0; i < 4; ++i)
        setSectorWord(identify, 100 + i, quint16(sectors >> (16 * i)));
    setSectorWord(identify, 83, sectorWord(identify, 83) | 0x0400);
    setSectorWord(identify, 86, sectorWord(identify, 86) | 0x0400);
}

int findSlot(const Sector &sector, quint8 id)
{
    for (int slot = 0; slot < kSlots; ++slot) {
        if (id != 0 && sector[slotOffset(slot)] == id)
            return slot;
    }
    return -1;
}

void putRaw(Sector &smartData, int slot, quint64 raw)
{
    const int at = slotOffset(slot) + 5;
    for (int i = 0; i < 6; ++i)
        smartData[at + i] = quint8(raw >> (8 * i));
}

} // namespace AtaSectors
