// SPDX-License-Identifier: LicenseRef-HXAux
#include "simulator/cuse/SerialPeer.h"

#include <array>
#include <fcntl.h>
#include <poll.h>
#include <stdexcept>
#include <termios.h>
#include <unistd.h>

namespace hxsim {

namespace {

// The bootloader's line: 115200 baud, 8 data bits, even parity. The emulated wire between two ports carries whole
// bytes, so the peer's own settings only have to be raw and fast enough.
constexpr LineSettings kLine{115200, 8, 'e', 1, 1, 0, false};
constexpr int kTickMs = 1;

int openRaw(const std::string& path)
{
    const int port = ::open(path.c_str(), O_RDWR | O_NOCTTY | O_NONBLOCK);
    termios settings{};
    if (port < 0 || ::tcgetattr(port, &settings) != 0)
        throw std::runtime_error{"cannot open the serial port " + path};
    ::cfmakeraw(&settings);
    ::cfsetspeed(&settings, B115200);
    settings.c_cflag |= CLOCAL | PARENB;
    ::tcsetattr(port, TCSANOW, &settings);
    return port;
}

} // namespace

SerialPeer::SerialPeer(HostedUnit& host, std::string node, const std::string& port)
    : host_{host}, node_{std::move(node)}, port_{openRaw(port)}
{
    HostedUnit::Visit visit{host_};
    file_ = visit.node(node_).open(O_RDWR);
    visit.node(node_).setLine(kLine);
    carrier_ = std::thread{[this] { carry(); }};
    carrier_.detach();
}

void SerialPeer::carry()
{
    for (;;) {
        pollfd waiting{port_, POLLIN, 0};
        ::poll(&waiting, 1, kTickMs);
        fromPort();
        toPort();
    }
}

void SerialPeer::fromPort()
{
    std::array<std::uint8_t, 512> bytes{};
    const ssize_t got = ::read(port_, bytes.data(), bytes.size());
    if (got <= 0)
        return;
    HostedUnit::Visit visit{host_};
    (void)visit.node(node_).write(*file_, {bytes.data(), static_cast<std::size_t>(got)});
}

void SerialPeer::toPort()
{
    std::array<std::uint8_t, 512> bytes{};
    Outcome outcome;
    {
        HostedUnit::Visit visit{host_};
        outcome = visit.node(node_).read(*file_, bytes, visit.clock().now());
    }
    for (std::int64_t sent = 0; !outcome.waits && sent < outcome.result;) {
        const ssize_t written = ::write(port_, bytes.data() + sent, static_cast<std::size_t>(outcome.result - sent));
        if (written > 0)
            sent += written;
        else
            ::usleep(100);
    }
}

} // namespace hxsim
