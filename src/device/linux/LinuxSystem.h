#pragma once

#include <sys/types.h>

#include <cstddef>
#include <memory>
#include <string>

/// The few system calls that carry disk traffic. The backend goes through
/// this interface so that tests can answer ioctls with hand-made replies.
/// Failures come back as a negative errno, never through errno, so that a
/// fake needs no thread-local state.
class LinuxSystem
{
public:
    virtual ~LinuxSystem() = default;

    /// A new descriptor, or -errno.
    virtual int open(const std::string &path, int flags) = 0;
    /// Closes a descriptor from open.
    virtual void close(int fd) = 0;
    /// 0 (or the ioctl's non-negative result), or -errno.
    virtual int ioctl(int fd, unsigned long request, void *argument) = 0;
    /// Bytes read (0 at the end), or -errno.
    virtual ssize_t pread(int fd, void *buffer, std::size_t length, off_t offset) = 0;
    /// Reads like pread but keeps nothing: bytes read (0 at the end), or -errno;
    /// -EINVAL when the descriptor cannot be read this way.
    virtual ssize_t discard(int fd, std::size_t length, off_t offset) = 0;

    /// The running kernel.
    static std::shared_ptr<LinuxSystem> host();
};
