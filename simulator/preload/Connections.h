// SPDX-License-Identifier: LicenseRef-HXAux
#pragma once

#include "simulator/interpose/SignalSafeLock.h"
#include "simulator/protocol/Mailbox.h"

#include <array>
#include <pthread.h>
#include <string>

namespace hxsim {

/// The connections of this process to its unit. One thread at a time uses a connection, so that no other thread gets
/// its answer; a child creates its own. One that is used again and again gets a mailbox.
class Connections {
public:
    explicit Connections(std::string folder);

    struct Connection {
        int fd = -1; ///< or -errno
        bool used = false;
        pthread_t user{};
        int uses = 0;          ///< up to the one before which it asks for a mailbox
        bool hasAsked = false; ///< for a mailbox
        ClientMailbox mailbox{};

        [[nodiscard]] bool wantsMailbox() const { return uses == kUsesBeforeMailbox && !hasAsked; }
    };

    /// Ensures that one exists: a process that has used up its descriptors can still use its files.
    int reserve();
    /// A connection owned by this thread until it is released or discarded: one that is kept, or `once`.
    Connection& take(Connection& once);
    void giveBack(Connection& connection);
    /// For a connection on which an answer may still arrive.
    void discard(Connection& connection);
    /// How long a program looks for an answer in a mailbox.
    Patience& patience() { return patience_; }

    // Around a fork.
    void lock() HXSIM_ACQUIRE(lock_) { lock_.lock(); }
    void unlock() HXSIM_RELEASE(lock_) { lock_.unlock(); }
    /// In the child, locked: the parent continues to use these. What a signal handler interrupted that forks still
    /// looks at its mailbox, and then finds its connection closed.
    void closeAll() HXSIM_REQUIRES(lock_);

private:
    static constexpr int kUsesBeforeMailbox = 4;

    [[nodiscard]] bool isKept(const Connection& connection) const
    {
        return &connection >= kept_.begin() && &connection < kept_.end();
    }
    Connection* takeKept(int fd);

    const std::string folder_;
    const bool wantsMailboxes_;
    Patience patience_;
    SignalSafeLock lock_;
    /// A used one belongs to its thread. Further connections serve one request.
    std::array<Connection, 32> kept_{};
};

} // namespace hxsim
