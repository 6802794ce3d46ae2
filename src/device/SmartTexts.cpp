#include "SmartTexts.h"

#include <array>

namespace SmartTexts {

namespace {

struct CapabilityBit
{
    const char *set;
    const char *clear;
};

// Bits 0..6 of the off-line collection capability byte.
constexpr std::array<CapabilityBit, 7> kOfflineCapabilityBits = {{
    {"SMART execute Offline immediate", "No SMART execute Offline immediate"},
    {"Auto Offline data collection on/off support", "No Auto Offline data collection support"},
    {"Abort Offline collection upon new command", "Suspend Offline collection upon new command"},
    {"Offline surface scan supported", "No Offline surface scan supported"},
    {"Self-test supported", "No Self-test supported"},
    {"Conveyance Self-test supported", "No Conveyance Self-test supported"},
    {"Selective Self-test supported", "No Selective Self-test supported"},
}};

} // namespace

QString offlineStatusText(quint32 offlineStatus)
{
    // Bit 7 is the automatic collection switch; the activity is in bits 0..6.
    switch (offlineStatus & 0x7F) {
    case 0:
        return QStringLiteral("was never started");
    case 2:
        return QStringLiteral("was completed without error");
    case 3:
        // "In progress" only counts with the automatic bit clear.
        if (offlineStatus == 3)
            return QStringLiteral("is in progress");
        return QStringLiteral("is in a Reserved state");
    case 4:
        return QStringLiteral("was suspended by an interrupting command from host");
    case 5:
        return QStringLiteral("was aborted by an interrupting command from host");
    case 6:
        return QStringLiteral("was aborted by the device with a fatal error");
    default:
        if ((offlineStatus & 0x7F) < 64)
            return QStringLiteral("is in a Reserved state");
        return QStringLiteral("is in a Vendor Specific state");
    }
}

QStringList offlineCapabilityTexts(quint32 offlineCapability)
{
    if (offlineCapability == 0)
        return {QStringLiteral("   Offline data collection not supported")};
    QStringList rows;
    for (std::size_t bit = 0; bit < kOfflineCapabilityBits.size(); ++bit) {
        const CapabilityBit &b = kOfflineCapabilityBits[bit];
        rows.append(QString::fromLatin1((offlineCapability >> bit) & 1 ? b.set : b.clear));
    }
    return rows;
}

QStringList smartCapabilityTexts(quint32 smartCapability)
{
    if (smartCapability == 0)
        return {QStringLiteral("   Automatic saving of SMART data is not implemented")};
    QStringList rows;
    if (smartCapability & 0x1)
        rows.append(QStringLiteral("   Saves SMART data before entering power-saving mode"));
    else
        rows.append(QStringLiteral("   Does not save SMART data before tentering power-saving mode"));
    if (smartCapability & 0x2)
        rows.append(QStringLiteral("   Supports SMART auto save timer"));
    return rows;
}

} // namespace SmartTexts
