// SPDX-License-Identifier: LicenseRef-HXAux
#include "simulator/server/Mailboxes.h"

#include "simulator/server/Session.h"

#include <algorithm>
#include <sys/resource.h>
#include <utility>

namespace hxsim {

namespace {

/// After this time it is worth a system call to ask for other programs.
constexpr std::chrono::microseconds kAskAgain{100};

} // namespace

void Mailboxes::rung(Session& session)
{
    looking_ = patience_.now();
    if (watched_.empty()) {
        hasPaid_ = false;
        (void)wasInterrupted(); // a server that waited was
    }
    if (looking_ > looking_.zero() && std::ranges::find(watched_, &session) == watched_.end()) {
        watched_.push_back(&session);
        session.watchMailbox(true);
    }
    (void)session.servePosted();
    served_ = Clock::now();
}

bool Mailboxes::shouldRest(Clock::time_point now)
{
    if (now - served_ >= looking_)
        return true;
    if (now - asked_ < kAskAgain)
        return false;
    asked_ = now;
    const bool interrupted = wasInterrupted();
    hasPaid_ = hasPaid_ && !interrupted;
    return interrupted;
}

bool Mailboxes::wasInterrupted()
{
    rusage use{};
    (void)getrusage(RUSAGE_SELF, &use);
    return use.ru_nivcsw != std::exchange(interruptions_, use.ru_nivcsw);
}

void Mailboxes::remove(const Session& session)
{
    std::erase(watched_, &session);
}

bool Mailboxes::serve()
{
    bool served = false;
    for (std::size_t i = 0; i < watched_.size(); ++i) // a request may end sessions
        served = watched_[i]->servePosted() || served;
    if (served) {
        hasPaid_ = true;
        patience_.paid();
        looking_ = patience_.now();
        served_ = Clock::now();
    }
    return served;
}

bool Mailboxes::stopWatching()
{
    if (!hasPaid_)
        patience_.failed();
    for (Session* const session : watched_)
        session->watchMailbox(false);
    const bool served = serve();
    watched_.clear();
    return served;
}

} // namespace hxsim
