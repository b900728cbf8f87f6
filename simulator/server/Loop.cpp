// SPDX-License-Identifier: LicenseRef-HXAux
#include "simulator/server/Loop.h"

#include <cerrno>
#include <cstring>
#include <poll.h>
#include <stdexcept>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>
#include <vector>

namespace hxsim {

namespace {

using namespace std::chrono_literals;

/// An error of one client does not affect the others.
template <typename Work>
void guarded(Work work)
{
    try {
        work();
    } catch (const std::exception&) {
        return; // a waiting client gets the answer inside the guard of its own request
    }
}

/// After this time a server without a free descriptor tries to accept again: any process of the machine may have freed
/// one.
constexpr auto kAcceptAgain = 50ms;
/// Between two looks at a line that drains.
constexpr auto kDrainAgain = 1ms;

/// While mailboxes are busy: the longest time between two looks at connections and timers.
constexpr std::chrono::nanoseconds kLookElsewhere = 100us;
/// Between two looks at mailboxes.
constexpr int kPauses = 8;

int listenAt(const std::string& path)
{
    const int fd = socket(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC | SOCK_NONBLOCK, 0);
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    if (path.size() >= sizeof address.sun_path)
        throw std::runtime_error{"the path of the unit's socket is too long: " + path};
    std::memcpy(address.sun_path, path.c_str(), path.size() + 1);
    if (fd < 0 || bind(fd, reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0 || listen(fd, 128) != 0)
        throw std::runtime_error{"cannot listen at " + path};
    return fd;
}

} // namespace

Loop::Loop(const std::string& socket, RunningUnit& unit, Sessions& sessions, EventStream& events)
    : unit_{unit}, sessions_{sessions}, events_{events}, listener_{listenAt(socket)}
{
}

Loop::~Loop()
{
    ::close(listener_);
}

std::optional<std::chrono::nanoseconds> Loop::patience()
{
    std::optional<std::chrono::nanoseconds> least;
    const auto atMost = [&](std::chrono::nanoseconds time) { least = least ? std::min(*least, time) : time; };
    if (full_)
        atMost(kAcceptAgain);
    if (unit_.isVirtual()) {
        if (const auto time = timeKeeper_.patience())
            atMost(*time);
        return least;
    }
    for (const std::optional<Time> deadline : {unit_.unit().clock().nextDeadline(), sessions_.nextDeadline()})
        if (deadline)
            atMost(unit_.until(*deadline)); // a bus transfer ends when it ends, not at the next millisecond
    if (sessions_.drains())
        atMost(kDrainAgain);
    return least;
}

void Loop::finish()
{
    if (events_.clients() > 0)
        guarded([&] { events_.serve(); }); // what has just happened
    guarded([&] { sessions_.retryWaiting(); });
    guarded([&] { unit_.keep(); });
}

bool Loop::serveMailboxes()
{
    Mailboxes& mailboxes = sessions_.mailboxes();
    if (!mailboxes.areWatched())
        return true;
    const auto serves = [&](bool (Mailboxes::*step)()) {
        bool handled = false;
        guarded([&] { handled = (mailboxes.*step)(); });
        if (handled)
            finish();
        return handled;
    };
    const auto earlier = [&] { return Mailboxes::Clock::now() + std::min(patience().value_or(1h), kLookElsewhere); };
    auto until = earlier();
    while (mailboxes.areWatched()) {
        unit_.advance();
        if (serves(&Mailboxes::serve))
            until = std::min(until, earlier());
        const auto now = Mailboxes::Clock::now();
        if (now >= until || stopping_)
            return false;
        if (mailboxes.shouldRest(now))
            return !serves(&Mailboxes::stopWatching);
        for (int i = 0; i < kPauses; ++i)
            __builtin_ia32_pause();
    }
    return true;
}

void Loop::run(int alsoWatched, const std::function<bool()>& seen)
{
    std::vector<pollfd> watched;
    while (!stopping_) {
        const std::optional<std::chrono::nanoseconds> limit = serveMailboxes() ? patience() : 0ns;
        watched.assign({{full_ ? -1 : listener_, POLLIN, 0}, {alsoWatched, POLLIN, 0}, {events_.fd(), POLLIN, 0}});
        for (const auto& [fd, session] : sessions_.all())
            watched.push_back({fd, POLLIN, 0});
        const timespec time{static_cast<time_t>(limit.value_or(0ns) / 1s),
                            static_cast<long>(limit.value_or(0ns) % 1s / 1ns)};
        const int ready = ::ppoll(watched.data(), watched.size(), limit ? &time : nullptr, nullptr);
        if (ready < 0 && errno != EINTR)
            throw std::runtime_error{"poll failed"};
        full_ = false;
        unit_.advance();
        for (std::size_t i = 3; i < watched.size(); ++i)
            if (watched[i].revents != 0)
                guarded([&] { sessions_.receive(watched[i].fd); });
        if (watched[0].revents != 0)
            accept();
        if (watched[2].revents != 0)
            guarded([&] { events_.serve(); });
        finish();
        if (unit_.isVirtual())
            keepTime(ready);
        if (watched[1].revents != 0 && seen())
            break;
    }
}

void Loop::keepTime(int ready)
{
    if (ready != 0)
        return timeKeeper_.somethingCame();
    guarded([&] { timeKeeper_.nothingCame(); });
    finish(); // what it has caused goes out
}

void Loop::accept()
{
    // Never waits for a program: one that does not read loses its messages.
    const int fd = accept4(listener_, nullptr, nullptr, SOCK_CLOEXEC | SOCK_NONBLOCK);
    if (fd >= 0)
        sessions_.add(fd);
    full_ = fd < 0 && (errno == EMFILE || errno == ENFILE || errno == ENOMEM || errno == ENOBUFS);
}

} // namespace hxsim
