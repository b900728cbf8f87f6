// SPDX-License-Identifier: LicenseRef-HXAux
#include "tests/threads/Pair.h"

namespace {

/// Of a thread that expects the other one at any moment.
constexpr int kLooks = 100;

template <class Condition>
bool spinUntil(Condition holds)
{
    for (int looks = 0; looks < kLooks; ++looks) {
        if (holds())
            return true;
        std::this_thread::yield();
    }
    return false;
}

} // namespace

Pair::Pair()
{
    for (Member& member : members_)
        sem_init(&member.wakeUp, 0, 0);
    second_ = std::thread{[this] { live(); }};
}

Pair::~Pair()
{
    action_ = nullptr;
    meet(members_[0]);
    second_.join();
    for (Member& member : members_)
        sem_destroy(&member.wakeUp);
}

void Pair::run(const Action& first, const Action& second, int rounds)
{
    action_ = &second;
    rounds_ = rounds;
    meet(members_[0]);
    for (int i = 0; i < rounds; ++i)
        carryOut(members_[0], first, static_cast<unsigned>(i) % 4);
    meet(members_[0]);
}

void Pair::live()
{
    Member& self = members_[1];
    for (meet(self); action_ != nullptr; meet(self)) {
        for (int i = 0; i < rounds_; ++i)
            carryOut(self, *action_, static_cast<unsigned>(i) / 4 % 4);
        meet(self);
    }
}

/// Starts together with the other thread, with an offset that differs from round to round.
void Pair::carryOut(Member& self, const Action& action, unsigned skew)
{
    meet(self);
    for (unsigned i = 0; i < skew * 100; ++i)
        std::atomic_signal_fence(std::memory_order_seq_cst);
    action();
}

void Pair::meet(Member& self)
{
    Member& other = members_[&self == &members_[0] ? 1 : 0];
    const unsigned arrival = arrivals_.fetch_add(1);
    if (arrival % 2 != 0) { // the second to arrive
        if (other.sleeps.exchange(false)) {
            sem_post(&other.wakeUp);
            spinUntil([&] { return other.wokenBy.load() == arrival; });
        }
        return;
    }
    const auto otherHasCome = [&] { return arrivals_.load() != arrival + 1; };
    if (spinUntil(otherHasCome))
        return;
    self.sleeps = true;
    if (otherHasCome() && self.sleeps.exchange(false))
        return; // it came just before
    while (sem_wait(&self.wakeUp) != 0) {
    }
    self.wokenBy = arrival + 1;
}
