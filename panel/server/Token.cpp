// SPDX-License-Identifier: LicenseRef-HXAux
#include "panel/server/Token.h"

#include "simulator/model/Text.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace hxpanel {

namespace {

constexpr std::size_t kLongest = 512;

class OpenFile {
public:
    explicit OpenFile(const std::string& name) : fd_{open(name.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK)} {}
    OpenFile(const OpenFile&) = delete;
    OpenFile& operator=(const OpenFile&) = delete;
    ~OpenFile() { close(fd_); }
    [[nodiscard]] int fd() const { return fd_; }

private:
    int fd_;
};

bool isGraphic(char c)
{
    return c > ' ' && c <= '~';
}

} // namespace

std::string tokenFrom(const std::string& file)
{
    const OpenFile opened{file};
    struct stat found {};
    if (opened.fd() < 0 || fstat(opened.fd(), &found) != 0)
        throw hxsim::BadText{"the token file " + file + " cannot be read: " + std::strerror(errno)};
    if (!S_ISREG(found.st_mode))
        throw hxsim::BadText{"the token file " + file + " is not a file"};
    if ((found.st_mode & (S_IRWXG | S_IRWXO)) != 0)
        throw hxsim::BadText{"other users may read the token file; 'chmod 600 " + file + "' corrects that"};
    std::array<char, kLongest + 2> bytes{};
    const ssize_t size = read(opened.fd(), bytes.data(), bytes.size());
    const std::string_view text{bytes.data(), size > 0 ? static_cast<std::size_t>(size) : 0};
    std::string token = hxsim::trimmed(text.substr(0, text.find('\n')));
    if (token.size() < kShortestToken || token.size() > kLongest || !std::ranges::all_of(token, isGraphic))
        throw hxsim::BadText{"the first line of the token file " + file + " must be a token of " +
                             std::to_string(kShortestToken) + " to " + std::to_string(kLongest) +
                             " letters, digits and signs without blanks, such as 'openssl rand -hex 16' prints"};
    return token;
}

bool isSameSecret(std::string_view given, std::string_view wanted)
{
    std::size_t differences = given.size() ^ wanted.size();
    for (std::size_t i = 0; i < given.size(); ++i) // as long as what was given, which its sender knows
        differences |=
            static_cast<std::size_t>(static_cast<unsigned char>(given[i]) ^
                                     static_cast<unsigned char>(wanted.empty() ? 0 : wanted[i % wanted.size()]));
    return differences == 0;
}

} // namespace hxpanel
