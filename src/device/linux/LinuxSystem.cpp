#include "LinuxSystem.h"

#include <cerrno>
#include <fcntl.h>
#include <sys/ioctl.h>
#include <sys/sendfile.h>
#include <unistd.h>

namespace {

class HostSystem final : public LinuxSystem
{
public:
    int open(const std::string &path, int flags) override
    {
        int fd;
        do {
            fd = ::open(path.c_str(), flags);
        } while (fd < 0 && errno == EINTR);
        return fd < 0 ? -errno : fd;
    }

    void close(int fd) override { ::close(fd); }

    int ioctl(int fd, unsigned long request, void *argument) override
    {
        const int result = ::ioctl(fd, request, argument);
        return result < 0 ? -errno : result;
    }

    ssize_t pread(int fd, void *buffer, std::size_t length, off_t offset) override
    {
        ssize_t n;
        do {
            n = ::pread(fd, buffer, length, offset);
        } while (n < 0 && errno == EINTR);
        return n < 0 ? -errno : n;
    }

    ssize_t discard(int fd, std::size_t length, off_t offset) override
    {
        // /dev/null takes spliced pages without copying them: the kernel reads the sectors
        // into the page cache, with the errors pread would give, and nothing is copied out.
        static const int sink = ::open("/dev/null", O_WRONLY | O_CLOEXEC);
        if (sink < 0)
            return -EINVAL;
        ssize_t n;
        do {
            n = ::sendfile(sink, fd, &offset, length);
        } while (n < 0 && errno == EINTR);
        return n < 0 ? -errno : n;
    }
};

} // namespace

std::shared_ptr<LinuxSystem> LinuxSystem::host()
{
    static const std::shared_ptr<LinuxSystem> system = std::make_shared<HostSystem>();
    return system;
}
