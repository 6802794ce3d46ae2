#include "ScsiIdentity.h"

#include <algorithm>
#include <cstring>
#include <vector>

namespace {

constexpr char kBlanks[] = {' ', '\t', '\n', '\v', '\f', '\r', '\0'};

std::string field(const std::uint8_t *data, int offset, int length)
{
    return ScsiIdentity::trimmed(std::string(reinterpret_cast<const char *>(data) + offset, std::size_t(length)));
}

} // namespace

namespace ScsiIdentity {

std::string trimmed(const std::string &text)
{
    const std::string_view blanks(kBlanks, sizeof kBlanks);
    const auto first = text.find_first_not_of(blanks);
    if (first == std::string::npos)
        return {};
    const auto last = text.find_last_not_of(blanks);
    return text.substr(first, last - first + 1);
}

std::array<std::uint8_t, 6> inquiryCommand(int page, std::uint16_t allocationLength)
{
    std::array<std::uint8_t, 6> cdb{};
    cdb[0] = kInquiryOpcode;
    if (page >= 0) {
        cdb[1] = 0x01; // EVPD
        cdb[2] = std::uint8_t(page);
    }
    cdb[3] = std::uint8_t(allocationLength >> 8);
    cdb[4] = std::uint8_t(allocationLength);
    return cdb;
}

std::optional<Inquiry> parseInquiry(const std::uint8_t *data, int length)
{
    if (!data || length < 36)
        return std::nullopt;
    Inquiry inquiry;
    inquiry.deviceType = data[0] & 0x1F;
    inquiry.removable = (data[1] & 0x80) != 0;
    inquiry.vendor = field(data, 8, 8);
    inquiry.product = field(data, 16, 16);
    inquiry.revision = field(data, 32, 4);
    return inquiry;
}

std::optional<std::string> parseUnitSerial(const std::uint8_t *data, int length)
{
    if (!data || length < 4 || data[1] != kUnitSerialPage)
        return std::nullopt;
    const int pageLength = std::min((data[2] << 8) | data[3], length - 4);
    return field(data, 4, pageLength);
}

std::optional<Sector> parseAtaInformation(const std::uint8_t *data, int length)
{
    if (!data || length < kAtaInformationLength || data[1] != kAtaInformationPage)
        return std::nullopt;
    if (((data[2] << 8) | data[3]) < kAtaInformationLength - 4)
        return std::nullopt;
    Sector identify;
    std::memcpy(identify.data(), data + 60, identify.size());
    // A page of zeros means the translation layer had no IDENTIFY to copy.
    if (std::all_of(identify.begin(), identify.end(), [](std::uint8_t b) { return b == 0; }))
        return std::nullopt;
    return identify;
}

std::string identifyString(const Sector &identify, int firstWord, int words)
{
    std::string text;
    for (int w = firstWord; w < firstWord + words && w < 256; ++w) {
        text += char(identify[2 * w + 1]);
        text += char(identify[2 * w]);
    }
    return trimmed(text);
}

bool isAtaBehindTranslation(const Inquiry &inquiry)
{
    return inquiry.vendor == "ATA";
}

DriveIdentity chooseIdentity(const Inquiry &inquiry, const std::optional<Sector> &identify,
                             const std::optional<std::string> &unitSerial, bool usb)
{
    DriveIdentity identity;
    identity.deviceType = inquiry.deviceType;
    identity.removable = inquiry.removable;
    identity.busType = usb ? kBusUsb : kBusScsi;
    identity.vendor = inquiry.vendor;
    identity.product = inquiry.product;
    identity.revision = inquiry.revision;
    identity.serial = unitSerial.value_or(std::string());

    if (isAtaBehindTranslation(inquiry)) {
        // "ATA" names the translation, not the maker; showing it would put
        // "ATA" in front of every model.
        identity.vendor.clear();
        if (!usb)
            identity.busType = kBusAta;
        if (identify) {
            identity.product = identifyString(*identify, 27, 20);
            identity.revision = identifyString(*identify, 23, 4);
            const std::string serial = identifyString(*identify, 10, 10);
            if (!serial.empty())
                identity.serial = serial;
        }
    }
    return identity;
}

} // namespace ScsiIdentity
