// SPDX-License-Identifier: LicenseRef-HXAux
#include "simulator/server/PlainFile.h"

#include "simulator/model/Text.h"

#include <cerrno>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace hxsim {

namespace {

constexpr off_t kLargest = off_t{64} * 1024 * 1024;

/// Closes itself.
class Descriptor {
public:
    explicit Descriptor(const std::string& path)
        : fd_{::open(path.c_str(), O_RDONLY | O_NONBLOCK | O_NOCTTY | O_CLOEXEC)}
    {
    }
    Descriptor(const Descriptor&) = delete;
    Descriptor& operator=(const Descriptor&) = delete;
    ~Descriptor()
    {
        if (fd_ >= 0)
            ::close(fd_);
    }
    [[nodiscard]] int get() const { return fd_; }

private:
    int fd_;
};

const char* kindOf(mode_t mode)
{
    if (S_ISDIR(mode))
        return "a folder";
    return S_ISFIFO(mode) ? "a FIFO" : S_ISSOCK(mode) ? "a socket" : "a device";
}

void checkPlain(const std::string& path, const struct stat& found)
{
    if (!S_ISREG(found.st_mode))
        throw BadText{path + " is " + kindOf(found.st_mode) + ", not a file"};
}

} // namespace

std::string contentOf(const std::string& path)
{
    struct stat found {};
    if (::stat(path.c_str(), &found) == 0)
        checkPlain(path, found); // opening a device can have side effects
    const Descriptor descriptor{path};
    if (descriptor.get() < 0 || ::fstat(descriptor.get(), &found) != 0)
        throw BadText{"cannot read " + path};
    checkPlain(path, found);
    if (found.st_size > kLargest)
        throw BadText{path + " is larger than 64 MiB"};
    std::string content(static_cast<std::size_t>(found.st_size) + 1, '\0'); // a growing file is truncated
    std::size_t size = 0;
    for (;;) {
        const ssize_t got = ::read(descriptor.get(), content.data() + size, content.size() - size);
        if (got < 0 && errno == EINTR)
            continue;
        if (got < 0)
            throw BadText{"cannot read " + path};
        size += static_cast<std::size_t>(got);
        if (got == 0 || size == content.size())
            break;
    }
    content.resize(size);
    return content;
}

void checkWritable(const std::string& path)
{
    struct stat found {};
    if (::stat(path.c_str(), &found) == 0)
        checkPlain(path, found);
}

} // namespace hxsim
