// SPDX-License-Identifier: LicenseRef-HXAux
#include "panel/server/Loop.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <sys/epoll.h>
#include <system_error>
#include <unistd.h>

namespace hxpanel {

Loop::Loop() : epoll_{epoll_create1(EPOLL_CLOEXEC)}
{
    if (epoll_ < 0)
        throw std::system_error{errno, std::generic_category(), "cannot wait for events"};
}

Loop::~Loop()
{
    close(epoll_);
}

void Loop::watch(int fd, std::uint32_t events, Work work)
{
    epoll_event event{};
    event.events = events;
    event.data.fd = fd;
    const int operation = watched_.contains(fd) ? EPOLL_CTL_MOD : EPOLL_CTL_ADD;
    if (epoll_ctl(epoll_, operation, fd, &event) != 0)
        throw std::system_error{errno, std::generic_category(), "cannot wait for a descriptor"};
    watched_[fd] = std::make_shared<Work>(std::move(work));
}

void Loop::forget(int fd)
{
    if (watched_.erase(fd) != 0)
        (void)epoll_ctl(epoll_, EPOLL_CTL_DEL, fd, nullptr);
}

Loop::Timer Loop::after(Milliseconds time, Work work)
{
    due_.emplace(std::chrono::steady_clock::now() + time, Due{++timers_, std::move(work)});
    return timers_;
}

void Loop::cancel(Timer timer)
{
    const auto found = std::ranges::find_if(due_, [&](const auto& each) { return each.second.number == timer; });
    if (found != due_.end())
        due_.erase(found);
}

void Loop::runTimers()
{
    const SteadyTime now = std::chrono::steady_clock::now();
    while (!due_.empty() && due_.begin()->first <= now) {
        const Work work = std::move(due_.begin()->second.work);
        due_.erase(due_.begin());
        work();
    }
}

int Loop::patience(Milliseconds most) const
{
    if (due_.empty())
        return static_cast<int>(most.count());
    const auto left = std::chrono::ceil<Milliseconds>(due_.begin()->first - std::chrono::steady_clock::now());
    return static_cast<int>(std::clamp(left, Milliseconds{0}, most).count());
}

void Loop::run()
{
    std::array<epoll_event, 64> ready{};
    while (!stopping_) {
        const Milliseconds most = round_ ? round_() : std::chrono::minutes{1};
        const int count = epoll_wait(epoll_, ready.data(), static_cast<int>(ready.size()), patience(most));
        for (int i = 0; i < count; ++i) {
            const auto found = watched_.find(ready[static_cast<std::size_t>(i)].data.fd);
            if (found == watched_.end())
                continue; // forgotten in this round
            const std::shared_ptr<Work> work = found->second;
            (*work)();
        }
        runTimers();
    }
}

} // namespace hxpanel
