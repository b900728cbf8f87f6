// SPDX-License-Identifier: LicenseRef-HXAux
#include "tools/hxaux/CaughtSignals.h"

#include <unistd.h>

namespace hxaux {

namespace {

constexpr std::array kSignals{SIGINT, SIGTERM, SIGHUP};

volatile std::sig_atomic_t caught = 0;

// The signal may arrive just before the sleep that it should end: an alarm every second ends that sleep too.
void note(int number)
{
    if (number != SIGALRM)
        caught = number;
    alarm(1);
}

} // namespace

CaughtSignals::CaughtSignals()
{
    caught = 0;
    struct sigaction action = {};
    action.sa_handler = note; // without SA_RESTART: a sleep ends
    sigaction(SIGALRM, &action, &alarmBefore_);
    for (std::size_t i = 0; i < kSignals.size(); ++i) {
        sigaction(kSignals[i], nullptr, &before_[i]);
        if (before_[i].sa_handler != SIG_IGN) // signals that the caller ignores stay ignored
            sigaction(kSignals[i], &action, nullptr);
    }
}

CaughtSignals::~CaughtSignals()
{
    for (std::size_t i = 0; i < kSignals.size(); ++i)
        sigaction(kSignals[i], &before_[i], nullptr);
    alarm(0);
    sigaction(SIGALRM, &alarmBefore_, nullptr);
    if (caught != 0)
        std::raise(caught);
}

bool CaughtSignals::any() const
{
    return caught != 0;
}

} // namespace hxaux
