// SPDX-License-Identifier: LicenseRef-HXAux
#pragma once

#include "simulator/interpose/Link.h"
#include "simulator/interpose/SignalSafeLock.h"

#include <atomic>
#include <memory>
#include <string>
#include <sys/types.h>
#include <utility>
#include <vector>

namespace hxsim {

/// The open file behind a descriptor of the unit. Duplicates share one.
struct Descriptor {
    Descriptor(std::string itsPath, int itsFlags) : path{std::move(itsPath)}, flags{itsFlags} {}

    const std::string path;
    const int flags; ///< as given to open; the kernel keeps what fcntl changes, shared by all holders of the file
    bool text = false;
    bool serial = false;
    bool stream = false;                ///< of a C stream: the journal shows the stream's opening alone
    std::shared_ptr<DeviceFile> device; ///< null: a real file in the unit's folder
    std::uint64_t socket = 0;           ///< of a device: the kernel's number of the socket that represents it
};

/// The descriptors of this process that belong to a unit. Every read and write of the program looks here first, so any
/// other descriptor costs one load.
///
/// A device's descriptor is a socket without traffic: the kernel numbers, duplicates, inherits, passes on and counts
/// it. This table only maps sockets to open files, and verifies the socket before it uses an entry.
class Descriptors {
public:
    static Descriptors& table();

    [[nodiscard]] std::shared_ptr<Descriptor> find(int fd);
    /// The same for devices alone.
    [[nodiscard]] std::shared_ptr<Descriptor> findDevice(int fd);
    void add(int fd, std::shared_ptr<Descriptor> descriptor);
    /// The number `to` has become a copy of `from`.
    void copy(int from, int to);
    /// A descriptor of unknown origin: it may be one of the unit's.
    void adopt(Link& link, int fd);

    /// Call before the number is closed: notifies the unit if it is the last one.
    void announce(int fd);
    /// A number that is about to be closed: its open file, and whether it was the last one of this process.
    struct Removed {
        std::shared_ptr<Descriptor> descriptor;
        bool last = false;

        /// Call after the number is closed.
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
    /// Moves a descriptor of the backend's own above the program's numbers, and protects it.
    int moveOutOfTheWay(int fd);
    void closeOwn(int fd);

    /// Whether this is the child of a vfork, or of a fork that the C library did not see: its memory may be its
    /// parent's, so it changes nothing here.
    [[nodiscard]] bool isBorrowed() const;

private:
    /// The open files of a range of numbers. Duplicating, using and closing them neither allocates nor frees memory, so
    /// that signal handlers can do it: the next `add` frees unused entries.
    struct Entry {
        std::shared_ptr<Descriptor> descriptor{};
        int numbers = 0;
        Entry* nextDead = nullptr;
    };

    static constexpr int kMost = 1 << 20; ///< the kernel's default limit

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
    Removed removeLocked(int fd) HXSIM_REQUIRES(lock_);
    [[nodiscard]] int numberOf(std::uint64_t socket);
    void buryDead() HXSIM_REQUIRES(lock_);

    std::atomic<Entry*>* const slots_;
    std::atomic<int> highest_{-1}; ///< number ever set
    std::atomic<pid_t> process_;
    Entry own_;           ///< marks the slots of protected numbers
    SignalSafeLock lock_; ///< also guards the program's slots against changes; reading one is atomic
    Entry* dead_ HXSIM_GUARDED_BY(lock_) = nullptr;
};

/// The kernel's number of a socket, never reused; 0 for anything else.
std::uint64_t socketNumber(int fd);

/// The flags that a file has after its opening.
int keptFlags(int flags);

} // namespace hxsim
