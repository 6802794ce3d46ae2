#pragma once

// Who a disk says it is: the SCSI INQUIRY data, the unit serial number page
// and the ATA Information page (a copy of IDENTIFY DEVICE that libata keeps),
// and the storage device descriptor that Korvane's discovery reads them from.
// Pure byte work, separate from the ioctls.

#include "device/DeviceDescriptor.h"
#include "device/Sector.h"

#include <array>
#include <cstdint>
#include <optional>
#include <string>

namespace ScsiIdentity {

inline constexpr std::uint8_t kInquiryOpcode = 0x12;
inline constexpr int kUnitSerialPage = 0x80;
inline constexpr int kAtaInformationPage = 0x89;
/// Bytes of the ATA Information page: 60 bytes of header, then the sector.
inline constexpr int kAtaInformationLength = 60 + 512;

/// Bus types as the descriptor numbers them.
inline constexpr std::uint32_t kBusScsi = 1;
inline constexpr std::uint32_t kBusAta = 3;
inline constexpr std::uint32_t kBusUsb = 7;

/// INQUIRY for the standard data (\a page < 0) or a vital product data page.
std::array<std::uint8_t, 6> inquiryCommand(int page, std::uint16_t allocationLength);

/// Standard INQUIRY data, strings trimmed.
struct Inquiry
{
    std::uint8_t deviceType = 0;
    bool removable = false;
    std::string vendor;
    std::string product;
    std::string revision;
};

/// The standard INQUIRY reply; nothing when shorter than its 36 fixed bytes.
std::optional<Inquiry> parseInquiry(const std::uint8_t *data, int length);
/// The serial number from the unit serial number page, trimmed.
std::optional<std::string> parseUnitSerial(const std::uint8_t *data, int length);
/// The IDENTIFY DEVICE sector carried by the ATA Information page.
std::optional<Sector> parseAtaInformation(const std::uint8_t *data, int length);
/// \a text without the blanks and NULs that pad it on either side.
std::string trimmed(const std::string &text);
/// An IDENTIFY text field of \a words words from \a firstWord: byte pairs
/// swapped into reading order, trimmed.
std::string identifyString(const Sector &identify, int firstWord, int words);

/// What goes into the storage device descriptor.
using DriveIdentity = DeviceDescriptor::Fields;

/// Picks the identity shown to the user. An ATA disk behind the kernel's
/// translation answers INQUIRY with vendor "ATA" and a model cut to 16
/// characters; its full model, firmware and serial come from \a identify
/// (the ATA Information page) and its vendor stays empty. Other disks keep
/// the INQUIRY strings and \a unitSerial.
DriveIdentity chooseIdentity(const Inquiry &inquiry, const std::optional<Sector> &identify,
                             const std::optional<std::string> &unitSerial, bool usb);

/// Whether the INQUIRY data is that of an ATA disk behind the kernel's translation.
bool isAtaBehindTranslation(const Inquiry &inquiry);

} // namespace ScsiIdentity
