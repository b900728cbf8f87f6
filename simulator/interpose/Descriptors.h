// SPDX-License-Identifier: LicenseRef-HXAux
#pragma once

#include <atomic>
#include <memory>
#include <string>
#include <sys/types.h>
#include <utility>
#include <vector>

#include "simulator/interpose/Link.h"
#include "simulator/interpose/SignalSafeLock.h"

namespace hxsim {

/// What a file descriptor of the unit stands for. Duplicates share one.
struct Descriptor {
    Descriptor(std::string itsPath, int itsFlags) : path{std::move(itsPath)}, flags{itsFlags} {}

    const std::string path;
    const int
        flags; ///< as given to open; what fcntl changes is kept by the kernel, which all holders of the file share
    bool text = false;
    bool serial = false;
    bool stream = false;                ///< of a C stream: the journal shows the stream's opening alone
    std::shared_ptr<DeviceFile> device; ///< null: a real file in the unit's folder
    std::uint64_t socket = 0;           ///< of a device: the kernel's number of the socket that stands for it
};

/// The descriptors of this process that belong to a unit. Every read and write of the program asks here first, so a
/// descriptor that is none of ours costs one load.
///
/// A device's descriptor is a socket that nothing is ever sent through: it is there for the kernel to number,
/// duplicate, inherit, pass on and count. This table only remembers what the kernel's socket stands for, and looks at
/// the socket before it believes itself.
class Descriptors {
public:
    static Descriptors& table();

    [[nodiscard]] std::shared_ptr<Descriptor> find(int fd);
    /// The same for devices alone.
    [[nodiscard]] std::shared_ptr<Descriptor> findDevice(int fd);
    void add(int fd, std::shared_ptr<Descriptor> descriptor);
    /// The number `to` has become a copy of `from`.
    void copy(int from, int to);
    /// A number that came from elsewhere: it may be one of the unit's.
    void adopt(Link& link, int fd);

    /// To be called before the number goes: tells the unit if it is the last one.
    void announce(int fd);
    /// A number that is about to go: what it stands for, and whether it was the last one of this process.
    struct Removed {
        std::shared_ptr<Descriptor> descriptor;
        bool last = false;

        /// To be called when the number has gone.
        void release() const
        {
            if (last && descriptor->device != nullptr)
                descriptor->device->close();
        }
    };
    [[nodiscard]] Removed remove(int fd);
    [[nodiscard]] std::vector<Removed> removeAll(unsigned first, unsigned last);

    /// Descriptors of the backend's own: a program that closes all it does not know must not close them.
    [[nodiscard]] bool isProtected(int fd) const { return slot(fd) == &own_; }
    [[nodiscard]] std::vector<unsigned> protectedIn(unsigned first, unsigned last) const;
    /// Moves a descriptor of the backend's own out of the way of the program's numbers, and protects it.
    int moveOutOfTheWay(int fd);
    void closeOwn(int fd);

    /// Whether this is the child of a vfork, or of a fork that the C library did not see: its memory may be its
    /// parent's, so it changes nothing here.
    [[nodiscard]] bool isBorrowed() const;

private:
    /// What is behind some numbers. Duplicating, using and closing them takes no memory and gives none back, so that a
    /// signal handler can: what is left over goes at the next `add`.
    struct Entry {
        std::shared_ptr<Descriptor> descriptor{};
        int numbers = 0;
        Entry* nextDead = nullptr;
    };

    static constexpr int kMost = 1 << 20; ///< the kernel's own limit where nobody has raised it

    Descriptors();
    [[nodiscard]] Entry* slot(int fd) const
    {
        return fd >= 0 && fd < kMost ? slots_[fd].load(std::memory_order_acquire) : nullptr;
    }
    [[nodiscard]] bool isOurs(int fd) const
    {
        const Entry* const entry = slot(fd);
        return entry != nullptr && entry != &own_;
    }
    void set(int fd, Entry* entry);
    Removed removeLocked(int fd);
    [[nodiscard]] int numberOf(std::uint64_t socket);
    void buryDead();

    std::atomic<Entry*>* const slots_;
    std::atomic<int> highest_{-1}; ///< number ever set
    std::atomic<pid_t> process_;
    Entry own_;           ///< stands in the slots of protected numbers
    SignalSafeLock lock_; ///< guards the slots against changes, and what follows
    Entry* dead_ = nullptr;
};

/// The kernel's number of a socket, never given to another one; 0 for what is no socket.
std::uint64_t socketNumber(int fd);

/// The flags that a file shows from its opening on.
int keptFlags(int flags);

} // namespace hxsim
