// SPDX-License-Identifier: LicenseRef-HXAux
#include "tools/Signals.h"

#include <cerrno>

namespace hxaux {

HeldSignals::HeldSignals()
{
    sigemptyset(&held_);
    for (const int number : {SIGINT, SIGTERM, SIGHUP})
        sigaddset(&held_, number);
    pthread_sigmask(SIG_BLOCK, &held_, &before_);
}

HeldSignals::~HeldSignals()
{
    pthread_sigmask(SIG_SETMASK, &before_, nullptr);
}

std::optional<int> HeldSignals::take(std::chrono::milliseconds wait) const
{
    using std::chrono::steady_clock;
    const auto until = steady_clock::now() + wait;
    for (;;) {
        const auto left = std::chrono::duration_cast<std::chrono::nanoseconds>(until - steady_clock::now()).count();
        timespec time{};
        if (left > 0) {
            time.tv_sec = static_cast<time_t>(left / 1'000'000'000);
            time.tv_nsec = static_cast<long>(left % 1'000'000'000);
        }
        const int number = sigtimedwait(&held_, nullptr, &time);
        if (number > 0)
            return number;
        if (errno != EINTR)
            return std::nullopt;
    }
}

} // namespace hxaux
