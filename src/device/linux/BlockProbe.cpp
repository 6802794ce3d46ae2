#include "BlockProbe.h"

#include <blkid.h>

#include <cctype>
#include <type_traits>
#include <memory>

namespace {

bool allHex(const std::string &text)
{
    for (const char c : text) {
        if (!std::isxdigit(static_cast<unsigned char>(c)))
            return false;
    }
    return !text.empty();
}

std::uint32_t hex32(const std::string &eightDigits)
{
    return std::uint32_t(std::stoul(eightDigits, nullptr, 16));
}

struct ProbeDeleter
{
    void operator()(blkid_probe probe) const { blkid_free_probe(probe); }
};

} // namespace

namespace BlockProbe {

std::optional<std::uint32_t> serialFromUuid(const std::string &uuid)
{
    if (uuid.size() == 9 && uuid[4] == '-' && allHex(uuid.substr(0, 4)) && allHex(uuid.substr(5, 4)))
        return hex32(uuid.substr(0, 4) + uuid.substr(5, 4));
    if (uuid.size() == 16 && allHex(uuid))
        return hex32(uuid.substr(8));

    std::string digits;
    for (const char c : uuid) {
        if (c == '-')
            continue;
        if (!std::isxdigit(static_cast<unsigned char>(c)))
            return std::nullopt;
        digits += c;
        if (digits.size() == 8)
            return hex32(digits);
    }
    return std::nullopt;
}

bool probe(const std::string &devicePath, VolumeInformation &out)
{
    std::unique_ptr<std::remove_pointer_t<blkid_probe>, ProbeDeleter> pr(
        blkid_new_probe_from_filename(devicePath.c_str()));
    if (!pr)
        return false;
    blkid_probe_enable_superblocks(pr.get(), 1);
    blkid_probe_set_superblocks_flags(pr.get(), BLKID_SUBLKS_LABEL | BLKID_SUBLKS_UUID | BLKID_SUBLKS_TYPE);
    blkid_probe_enable_partitions(pr.get(), 0);
    if (blkid_do_safeprobe(pr.get()) != 0)
        return false;

    auto value = [&](const char *name) {
        const char *data = nullptr;
        if (blkid_probe_lookup_value(pr.get(), name, &data, nullptr) == 0 && data)
            return std::string(data);
        return std::string();
    };
    out.fileSystem = value("TYPE");
    if (out.fileSystem.empty())
        return false;
    out.label = value("LABEL");
    out.serialNumber = serialFromUuid(value("UUID")).value_or(0);
    return true;
}

} // namespace BlockProbe
