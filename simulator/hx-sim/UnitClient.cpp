// SPDX-License-Identifier: LicenseRef-HXAux
#include "simulator/hx-sim/UnitClient.h"

#include "simulator/model/Text.h"
#include "simulator/protocol/Channel.h"
#include "simulator/protocol/UnitFolder.h"
#include "simulator/protocol/Wire.h"

#include <cerrno>
#include <chrono>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <sys/socket.h>
#include <sys/time.h>
#include <unistd.h>

namespace hxsim {

namespace {

/// A unit answers a command at once; one that is stopped or stuck must not block its user.
constexpr std::chrono::seconds kPatience{10};

void waitAtMost(int fd, std::chrono::seconds time)
{
    const timeval limit{.tv_sec = static_cast<time_t>(time.count()), .tv_usec = 0};
    (void)setsockopt(fd, SOL_SOCKET, SO_RCVTIMEO, &limit, sizeof limit);
    (void)setsockopt(fd, SOL_SOCKET, SO_SNDTIMEO, &limit, sizeof limit);
}

std::string whyNotReached(const std::string& unit, int error)
{
    switch (error) {
    case ENOENT:
    case ECONNREFUSED:
        return "no unit named '" + unit + "' is running";
    case EAGAIN:
        return "the unit '" + unit + "' does not answer";
    default:
        return "the unit '" + unit + "' cannot be reached: " + std::strerror(error);
    }
}

} // namespace

UnitClient::UnitClient(const std::string& unit) : fd_{connectTo(UnitFolder::pathOf(unit), "")}
{
    if (fd_ < 0)
        throw NoUnit{whyNotReached(unit, -fd_)};
    waitAtMost(fd_, kPatience);
}

UnitClient::~UnitClient()
{
    if (fd_ >= 0)
        close(fd_);
}

std::string UnitClient::request(const std::vector<std::string>& words)
{
    const wire::Packed command{wire::Command{words}, Caller{getpid(), 0}};
    if (command.bytes().size() > wire::kLargestPacket - sizeof(wire::Head))
        throw BadText{"the command is too long"};
    Packet answer;
    if (!hxsim::exchange(fd_, command, answer, static_cast<int>(kPatience.count())))
        throw NoUnit{errno == EAGAIN ? "the unit does not answer" : "the unit has stopped"};
    if (answer.head.value != 0)
        throw BadText{answer.text()};
    return answer.text();
}

void UnitClient::listen(const std::function<void(const std::string&)>& take)
{
    waitAtMost(fd_, {}); // forever
    Packet packet;
    packet.bytes.resize(wire::kLargestPacket);
    std::size_t size = 0;
    while (receivePacket(fd_, packet.head, packet.bytes, size, true) == Received::Packet)
        take({packet.bytes.begin(), packet.bytes.begin() + static_cast<std::ptrdiff_t>(size)});
}

std::string UnitClient::choose(const std::string& named)
{
    if (!named.empty())
        return named;
    if (const char* folder = std::getenv(wire::kFolderVariable)) // a command inside 'hx-sim run'
        return std::filesystem::path{folder}.filename();
    const std::vector<std::string> running = UnitFolder::running();
    if (const std::string why = UnitFolder::whatHidesThem(); !why.empty())
        throw NoUnit{why};
    if (running.empty())
        throw NoUnit{"no unit is running; start one with: hx-sim start NAME"};
    if (running.size() > 1)
        throw NoUnit{"several units are running; choose one with --unit NAME"};
    return running.front();
}

std::string UnitClient::chooseAny(const std::string& named)
{
    const std::vector<std::string> running = UnitFolder::running();
    const bool isChosen = !named.empty() || std::getenv(wire::kFolderVariable) != nullptr || running.size() < 2;
    return isChosen ? choose(named) : running.front();
}

} // namespace hxsim
