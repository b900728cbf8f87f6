// SPDX-License-Identifier: LicenseRef-HXAux
#include "tools/cli/Address.h"

#include "tools/cli/Names.h"

#include <arpa/inet.h>
#include <array>
#include <cerrno>
#include <cstring>
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

namespace cli {

namespace {

constexpr int kMostWaiting = 128;

union AnyAddress {
    sockaddr any;
    sockaddr_in four;
    sockaddr_in6 six;
};

bool isFour(const std::string& host)
{
    in_addr number{};
    return inet_pton(AF_INET, host.c_str(), &number) == 1;
}

bool isSix(const std::string& host)
{
    in6_addr number{};
    return inet_pton(AF_INET6, host.c_str(), &number) == 1;
}

socklen_t fill(AnyAddress& raw, const Address& address)
{
    if (isFour(address.host)) {
        raw.four.sin_family = AF_INET;
        raw.four.sin_port = htons(address.port);
        inet_pton(AF_INET, address.host.c_str(), &raw.four.sin_addr);
        return sizeof raw.four;
    }
    raw.six.sin6_family = AF_INET6;
    raw.six.sin6_port = htons(address.port);
    inet_pton(AF_INET6, address.host.c_str(), &raw.six.sin6_addr);
    return sizeof raw.six;
}

Address addressOf(int fd)
{
    AnyAddress raw{};
    socklen_t size = sizeof raw;
    std::array<char, INET6_ADDRSTRLEN> text{};
    if (getsockname(fd, &raw.any, &size) != 0)
        return {};
    if (raw.any.sa_family == AF_INET) {
        inet_ntop(AF_INET, &raw.four.sin_addr, text.data(), text.size());
        return {text.data(), ntohs(raw.four.sin_port)};
    }
    inet_ntop(AF_INET6, &raw.six.sin6_addr, text.data(), text.size());
    return {text.data(), ntohs(raw.six.sin6_port)};
}

std::string problemOf(const std::string& text)
{
    return Address::from(text) ? "" : "'" + text + "' is not an address such as 127.0.0.1:8080 or [::1]:8080";
}

} // namespace

std::optional<Address> Address::from(const std::string& text)
{
    const std::size_t colon = text.rfind(':');
    if (colon == std::string::npos)
        return std::nullopt;
    std::string host = text.substr(0, colon);
    const std::string digits = text.substr(colon + 1);
    const std::optional<long long> port = toInteger(digits);
    const bool isPlain = !digits.empty() && digits.find_first_not_of("0123456789") == std::string::npos;
    if (!port || !isPlain || *port > UINT16_MAX)
        return std::nullopt;
    const bool isBracketed = host.size() > 2 && host.front() == '[' && host.back() == ']';
    if (isBracketed)
        host = host.substr(1, host.size() - 2);
    if (host == "localhost")
        host = "127.0.0.1";
    if (isBracketed ? !isSix(host) : !isFour(host))
        return std::nullopt;
    return Address{host, static_cast<std::uint16_t>(*port)};
}

std::string Address::text() const
{
    return (isFour(host) ? host : '[' + host + ']') + ':' + std::to_string(port);
}

bool Address::isLoopback() const
{
    return isFour(host) ? host.starts_with("127.") : host == "::1";
}

Argument address(std::string_view name, std::string_view help)
{
    Argument row = text(name, help);
    row.shown = "ADDRESS:PORT";
    row.problem = problemOf;
    return row;
}

int listenAt(Address& address)
{
    AnyAddress raw{};
    const socklen_t size = fill(raw, address);
    const int fd = socket(raw.any.sa_family, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0);
    const int on = 1;
    (void)setsockopt(fd, SOL_SOCKET, SO_REUSEADDR, &on, sizeof on); // else a restart had to wait for old connections
    if (raw.any.sa_family == AF_INET6)
        (void)setsockopt(fd, IPPROTO_IPV6, IPV6_V6ONLY, &on, sizeof on);
    if (fd >= 0 && bind(fd, &raw.any, size) == 0 && listen(fd, kMostWaiting) == 0) {
        address.port = addressOf(fd).port;
        return fd;
    }
    const int error = errno;
    if (fd >= 0)
        close(fd);
    if (error == EADDRINUSE)
        throw AddressInUse{address.text() + " is in use by another program; choose another port with --listen " +
                           address.text().substr(0, address.text().rfind(':')) +
                           ":PORT, where PORT 0 takes any free one"};
    throw std::runtime_error{"cannot listen at " + address.text() + ": " + std::strerror(error)};
}

std::string localAddressOf(int connection)
{
    return addressOf(connection).text();
}

} // namespace cli
