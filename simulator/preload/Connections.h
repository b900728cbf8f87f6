// SPDX-License-Identifier: LicenseRef-HXAux
#pragma once

#include <array>
#include <string>

#include "simulator/interpose/SignalSafeLock.h"

namespace hxsim {

/// The connections over which this process asks its unit. One thread at a time uses one, so that no answer reaches
/// another one; a child makes its own.
class Connections {
public:
    explicit Connections(std::string folder) : folder_{std::move(folder)} {}

    /// Makes sure that there is one: a process that has used up its descriptors can still use its files.
    int reserve();
    /// A connection that is this thread's until it is given back or discarded, or -errno.
    int take();
    void giveBack(int fd);
    /// For one on which an answer may still come.
    void discard(int fd);

    // Around a fork.
    void lock() { lock_.lock(); }
    void unlock() { lock_.unlock(); }
    /// In the child, locked: the parent goes on using these.
    void closeAll();

private:
    struct Slot {
        int fd = -1;
        bool used = false;
    };

    const std::string folder_;
    SignalSafeLock lock_;          ///< guards slots_
    std::array<Slot, 32> slots_{}; ///< further ones last for one question
};

} // namespace hxsim
