// SPDX-License-Identifier: LicenseRef-HXAux
#include "panel/server/Signals.h"

#include <sys/epoll.h>
#include <sys/signalfd.h>
#include <unistd.h>

namespace hxpanel {

namespace {

bool isIgnored(int number)
{
    struct sigaction action {};
    return sigaction(number, nullptr, &action) == 0 && action.sa_handler == SIG_IGN;
}

} // namespace

Signals::Signals()
{
    sigemptyset(&held_);
    for (const int number : {SIGINT, SIGTERM, SIGHUP})
        if (!isIgnored(number))
            sigaddset(&held_, number);
    sigprocmask(SIG_BLOCK, &held_, &before_);
    std::signal(SIGPIPE, SIG_IGN); // of a client that has gone
    fd_ = signalfd(-1, &held_, SFD_CLOEXEC | SFD_NONBLOCK);
}

Signals::~Signals()
{
    close(fd_);
    sigprocmask(SIG_SETMASK, &before_, nullptr);
}

void Signals::watch(Loop& loop)
{
    loop.watch(fd_, EPOLLIN, [this, &loop] {
        signalfd_siginfo info{};
        if (read(fd_, &info, sizeof info) == static_cast<ssize_t>(sizeof info))
            taken_ = static_cast<int>(info.ssi_signo);
        loop.stop();
    });
}

void Signals::takeEffect()
{
    sigprocmask(SIG_SETMASK, &before_, nullptr);
    if (taken_ != 0)
        std::raise(taken_);
}

} // namespace hxpanel
