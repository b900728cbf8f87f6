// SPDX-License-Identifier: LicenseRef-HXAux
#pragma once

#include "panel/server/Loop.h"

#include <csignal>

namespace hxpanel {

/// INT, TERM and HUP end the loop instead of the program, which then ends in order. Signals that the caller ignores
/// stay ignored.
class Signals {
public:
    Signals();
    Signals(const Signals&) = delete;
    Signals& operator=(const Signals&) = delete;
    ~Signals();

    void watch(Loop& loop);
    /// The signal that has ended the loop ends the program, as its caller expects it.
    void takeEffect();

private:
    sigset_t held_{};
    sigset_t before_{};
    int fd_;
    int taken_ = 0;
};

} // namespace hxpanel
