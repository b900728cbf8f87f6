// SPDX-License-Identifier: LicenseRef-HXAux
#pragma once

#include <array>
#include <atomic>
#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <termios.h>

#include "simulator/interpose/Link.h"

namespace hxsim {

/// What a file descriptor of the unit stands for. Duplicates share one.
struct Descriptor {
    Descriptor(std::string itsPath, int itsFlags) : path{std::move(itsPath)}, flags{itsFlags} {}

    std::string path;
    std::atomic<int> flags;
    bool text = false;
    bool serial = false;
    bool stream = false;                ///< of a C stream: the journal shows the stream's opening alone
    std::shared_ptr<DeviceFile> device; ///< null: a real file in the unit's folder
    std::mutex lock;                    ///< guards `terminal`
    termios terminal{};
};

/// The descriptors of this process that belong to a unit. Every read and write of the program asks here first, so a
/// descriptor that is none of ours costs one load.
class Descriptors {
public:
    static Descriptors& table();

    [[nodiscard]] std::shared_ptr<Descriptor> find(int fd);
    void add(int fd, std::shared_ptr<Descriptor> descriptor);
    /// Forgets the number. Gives the descriptor, and in `last` whether no other number stands for it.
    std::shared_ptr<Descriptor> remove(int fd, bool& last);

    /// Descriptors of the door's own: a program that closes all it does not know must not close them.
    void protect(int fd) { setProtected(fd, true); }
    void unprotect(int fd) { setProtected(fd, false); }
    [[nodiscard]] bool isProtected(int fd) const { return isValid(fd) && protected_[std::size_t(fd)].load(); }

private:
    static constexpr int kMost = 65536;

    static bool isValid(int fd) { return fd >= 0 && fd < kMost; }
    void setProtected(int fd, bool value)
    {
        if (isValid(fd))
            protected_[std::size_t(fd)].store(value);
    }
    [[nodiscard]] bool isOurs(int fd) const
    {
        return isValid(fd) && ours_[std::size_t(fd)].load(std::memory_order_acquire);
    }

    std::array<std::atomic<bool>, kMost> ours_{};
    std::array<std::atomic<bool>, kMost> protected_{};
    std::mutex lock_;
    std::map<int, std::shared_ptr<Descriptor>> open_;
};

} // namespace hxsim
