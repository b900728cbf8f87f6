// SPDX-License-Identifier: LicenseRef-HXAux
#pragma once

#include <array>
#include <string>

#include "simulator/interpose/SignalSafeLock.h"

namespace hxsim {

/// The connections of this process to its unit. One thread at a time uses a connection, so that no other thread gets
/// its answer; a child creates its own.
class Connections {
public:
    explicit Connections(std::string folder) : folder_{std::move(folder)} {}

    /// Ensures that one exists: a process that has used up its descriptors can still use its files.
    int reserve();
    /// A connection owned by this thread until it is released or discarded, or -errno.
    int take();
    void giveBack(int fd);
    /// For a connection on which an answer may still arrive.
    void discard(int fd);

    // Around a fork.
    void lock() HXSIM_ACQUIRE(lock_) { lock_.lock(); }
    void unlock() HXSIM_RELEASE(lock_) { lock_.unlock(); }
    /// In the child, locked: the parent continues to use these.
    void closeAll() HXSIM_REQUIRES(lock_);

private:
    struct Slot {
        int fd = -1;
        bool used = false;
    };

    const std::string folder_;
    SignalSafeLock lock_;
    /// Further connections serve one request.
    std::array<Slot, 32> slots_ HXSIM_GUARDED_BY(lock_){};
};

} // namespace hxsim
