#pragma once

#include <QString>
#include <QStringList>

/// Texts derived from the SMART data sector's status and capability bytes.
namespace SmartTexts {

/// Off-line data collection status text of byte 362.
QString offlineStatusText(quint32 offlineStatus);
/// One row per off-line collection capability bit of byte 367.
QStringList offlineCapabilityTexts(quint32 offlineCapability);
/// Rows for the SMART capability word (bytes 368-369), with their leading spaces.
QStringList smartCapabilityTexts(quint32 smartCapability);

} // namespace SmartTexts
