#include "DeviceDescriptor.h"

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

} // namespace DeviceDescriptor
