// SPDX-License-Identifier: LicenseRef-HXAux
// The state of one of the library's named semaphores, and the processes that use it.
#pragma once

#include <array>
#include <semaphore.h>
#include <string>
#include <string_view>
#include <vector>

namespace hxaux {

/// The library's locks, without the counter of settings that the automatic backlight has not read yet.
constexpr std::array<std::string_view, 4> kLockNames = {"FILE_HXAUXINI_IS_IN_USE", "HXAUX_BUZZING_IN_PROGRESS",
                                                        "HXAUX_FIRMWARE_UPGRADE_IN_PROGRESS",
                                                        "HXAUX_LIGHT_SENSOR_AVERAGE_LOCKED"};

/// A process that has a semaphore mapped.
struct LockUser {
    int pid = 0;
    std::string program;
    bool waits = false;  // one of its threads waits in the semaphore
    bool visible = true; ///< whether its threads could be inspected
};

/// A snapshot of a semaphore.
struct LockState {
    enum class Kind { Missing, Refused, OtherAbi, Known };
    Kind kind = Kind::Missing;
    std::string error = ""; // why it is Refused
    unsigned value = 0;
    std::vector<LockUser> users = {}; ///< this process is not among them
    bool everyoneSeen = true;         // false when processes of other users may have it as well

    /// Value 0, and no process is left to release it: every process that maps it waits for it.
    [[nodiscard]] bool looksStale() const;
};

/// An existing named semaphore; never created here. Semaphores of 32-bit and 64-bit programs differ, so a program sees
/// only those of its own ABI.
class NamedLock {
public:
    explicit NamedLock(const std::string& name); ///< without the leading slash
    ~NamedLock();
    NamedLock(const NamedLock&) = delete;
    NamedLock& operator=(const NamedLock&) = delete;

    [[nodiscard]] LockState look() const;
    /// Stale in two snapshots: a process may release a lock between them, a stale lock stays stale.
    [[nodiscard]] bool isStale() const;
    /// Adds one to the count, unless that makes it more than one.
    void giveBack() const;

private:
    sem_t* semaphore_;
    int error_ = 0;
};

} // namespace hxaux
