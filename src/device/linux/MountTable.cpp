#include "MountTable.h"

#include <algorithm>
#include <fstream>
#include <sstream>

namespace {

std::vector<std::string_view> splitFields(std::string_view line)
{
    std::vector<std::string_view> fields;
    std::size_t pos = 0;
    while (pos < line.size()) {
        const std::size_t start = line.find_first_not_of(' ', pos);
        if (start == std::string_view::npos)
            break;
        const std::size_t end = std::min(line.find(' ', start), line.size());
        fields.push_back(line.substr(start, end - start));
        pos = end;
    }
    return fields;
}

bool isOctal(char c)
{
    return c >= '0' && c <= '7';
}

bool parseDeviceNumber(std::string_view text, unsigned &major, unsigned &minor)
{
    const std::size_t colon = text.find(':');
    if (colon == std::string_view::npos || colon == 0 || colon + 1 == text.size())
        return false;
    try {
        major = unsigned(std::stoul(std::string(text.substr(0, colon))));
        minor = unsigned(std::stoul(std::string(text.substr(colon + 1))));
    } catch (...) {
        return false;
    }
    return true;
}

} // namespace

namespace MountTable {

std::string unescape(std::string_view field)
{
    std::string out;
    out.reserve(field.size());
    for (std::size_t i = 0; i < field.size(); ++i) {
        if (field[i] == '\\' && i + 3 < field.size() && isOctal(field[i + 1]) && isOctal(field[i + 2])
            && isOctal(field[i + 3])) {
            out += char(((field[i + 1] - '0') << 6) | ((field[i + 2] - '0') << 3) | (field[i + 3] - '0'));
            i += 3;
        } else {
            out += field[i];
        }
    }
    return out;
}

std::vector<Mount> parse(std::string_view text)
{
    std::vector<Mount> mounts;
    std::size_t pos = 0;
    while (pos < text.size()) {
        std::size_t end = text.find('\n', pos);
        if (end == std::string_view::npos)
            end = text.size();
        const std::vector<std::string_view> f = splitFields(text.substr(pos, end - pos));
        pos = end + 1;

        // id parent major:minor root mount-point options [optional...] - type source super-options
        std::size_t separator = 6;
        while (separator < f.size() && f[separator] != "-")
            ++separator;
        Mount mount;
        if (f.size() < 6 || separator + 2 >= f.size() || !parseDeviceNumber(f[2], mount.major, mount.minor))
            continue;
        mount.root = unescape(f[3]);
        mount.mountPoint = unescape(f[4]);
        mount.fileSystem = unescape(f[separator + 1]);
        mount.source = unescape(f[separator + 2]);
        mounts.push_back(std::move(mount));
    }
    return mounts;
}

std::vector<Mount> read(const std::string &path)
{
    std::ifstream file(path);
    if (!file)
        return {};
    std::ostringstream text;
    text << file.rdbuf();
    return parse(text.str());
}

} // namespace MountTable
