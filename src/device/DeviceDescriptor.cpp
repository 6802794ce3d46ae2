#include "DeviceDescriptor.h"

#include <algorithm>
#include <cstring>
#include <vector>

namespace DeviceDescriptor {

std::string stringAt(const std::uint8_t *descriptor, int size, int offsetField)
{
    if (size < offsetField + 4)
        return {};
    const std::uint32_t offset = std::uint32_t(descriptor[offsetField])
                                 | std::uint32_t(descriptor[offsetField + 1]) << 8
                                 | std::uint32_t(descriptor[offsetField + 2]) << 16
                                 | std::uint32_t(descriptor[offsetField + 3]) << 24;
    // A driver may fill the offset of a string it did not return; anything
    // outside the reply would read stale memory.
    if (offset <= kLowestStringOffset || offset >= std::uint32_t(size))
        return {};
    std::string text;
    for (int i = int(offset); i < size && descriptor[i] != 0; ++i)
        text.push_back(char(descriptor[i]));
    return text;
}

int write(const Fields &fields, std::uint8_t *buffer, int size)
{
    if (!buffer || size < 8)
        return -1;
    std::vector<std::uint8_t> image(kHeaderSize, 0);
    auto putLe32 = [&image](int at, std::uint32_t value) {
        for (int i = 0; i < 4; ++i)
            image[std::size_t(at + i)] = std::uint8_t(value >> (8 * i));
    };
    auto addString = [&](int offsetField, const std::string &text) {
        if (text.empty())
            return;
        const std::size_t offset = image.size();
        if (offset + text.size() + 1 <= std::size_t(size))
            putLe32(offsetField, std::uint32_t(offset));
        image.insert(image.end(), text.begin(), text.end());
        image.push_back(0);
    };
    addString(kVendorOffsetField, fields.vendor);
    addString(kProductOffsetField, fields.product);
    addString(kRevisionOffsetField, fields.revision);
    addString(kSerialOffsetField, fields.serial);
    putLe32(0, kHeaderSize);
    putLe32(4, std::uint32_t(image.size()));
    image[8] = fields.deviceType;
    image[10] = fields.removable ? 1 : 0;
    putLe32(28, fields.busType);

    const int written = std::min(size, int(image.size()));
    std::memcpy(buffer, image.data(), std::size_t(written));
    return written;
}

} // namespace DeviceDescriptor
