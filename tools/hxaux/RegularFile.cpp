// SPDX-License-Identifier: LicenseRef-HXAux
#include "tools/hxaux/RegularFile.h"

#include <array>
#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace hxaux {

namespace {

constexpr std::size_t kLargest = std::size_t{64} << 20;

std::string readAll(int file, std::string& text)
{
    struct stat status {};
    if (::fstat(file, &status) != 0)
        return std::strerror(errno);
    if (S_ISDIR(status.st_mode))
        return std::strerror(EISDIR);
    if (!S_ISREG(status.st_mode))
        return "not a regular file";
    std::array<char, 65536> piece{};
    for (;;) {
        const ssize_t got = ::read(file, piece.data(), piece.size());
        if (got < 0 && errno != EINTR)
            return std::strerror(errno);
        if (got == 0)
            return "";
        text.append(piece.data(), got > 0 ? static_cast<std::size_t>(got) : 0);
        if (text.size() > kLargest)
            return "it is larger than 64 MiB";
    }
}

} // namespace

std::string readRegularFile(const std::string& name, std::string& text)
{
    const int file =
        ::open(name.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC); // opening a FIFO would block until a writer opens it
    if (file < 0)
        return std::strerror(errno);
    std::string problem = readAll(file, text);
    ::close(file);
    return problem;
}

} // namespace hxaux
