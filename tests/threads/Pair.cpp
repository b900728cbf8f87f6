// SPDX-License-Identifier: LicenseRef-HXAux
#include "tests/threads/Pair.h"

#include <algorithm>
#include <ctime>

namespace {

void sleepInTheUnit(long milliseconds)
{
    const timespec time{milliseconds / 1000, milliseconds % 1000 * 1000000};
    nanosleep(&time, nullptr);
}

} // namespace

Pair::~Pair()
{
    action_ = nullptr;
    meet();
    second_.join();
}

void Pair::run(const Action& first, const Action& second, int rounds)
{
    action_ = &second;
    rounds_ = rounds;
    meet();
    for (int i = 0; i < rounds; ++i)
        carryOut(first, static_cast<unsigned>(i) % 4);
    meet();
}

void Pair::live()
{
    for (meet(); action_ != nullptr; meet()) {
        for (int i = 0; i < rounds_; ++i)
            carryOut(*action_, static_cast<unsigned>(i) / 4 % 4);
        meet();
    }
}

/// Starts together with the other thread, with an offset that differs from round to round.
void Pair::carryOut(const Action& action, unsigned skew)
{
    meet();
    for (unsigned i = 0; i < skew * 100; ++i)
        std::atomic_signal_fence(std::memory_order_seq_cst);
    action();
}

void Pair::meet()
{
    constexpr int kAwake = 300;
    constexpr long kLongestSleepMs = 1000;
    const unsigned met = (arrivals_.fetch_add(1) / 2 + 1) * 2;
    long sleepMs = 1;
    for (int tries = 0; static_cast<int>(arrivals_.load() - met) < 0; ++tries) {
        if (tries < kAwake) {
            std::this_thread::yield();
        } else {
            sleepInTheUnit(sleepMs);
            sleepMs = std::min(sleepMs * 2, kLongestSleepMs);
        }
    }
}
