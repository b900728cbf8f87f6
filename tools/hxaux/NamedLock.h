// SPDX-License-Identifier: LicenseRef-HXAux
// What the system knows of one of the library's named semaphores, and of the processes that use it.
#ifndef HXAUX_NAMED_LOCK_H
#define HXAUX_NAMED_LOCK_H

#include <array>
#include <semaphore.h>
#include <string>
#include <string_view>
#include <vector>

namespace hxaux {

// The library's locks, all but the counter of settings that the automatic backlight has still to read.
constexpr std::array<std::string_view, 4> kLockNames = {"FILE_HXAUXINI_IS_IN_USE", "HXAUX_BUZZING_IN_PROGRESS",
                                                        "HXAUX_FIRMWARE_UPGRADE_IN_PROGRESS",
                                                        "HXAUX_LIGHT_SENSOR_AVERAGE_LOCKED"};

// A process that has a semaphore mapped.
struct LockUser {
    int pid = 0;
    std::string program;
    bool waits = false;  // one of its threads waits in the semaphore
    bool visible = true; // whether its threads could be looked at
};

// One look at a semaphore.
struct LockState {
    enum class Kind { Missing, Refused, OtherAbi, Known };
    Kind kind = Kind::Missing;
    std::string error = ""; // why it is Refused
    unsigned value = 0;
    std::vector<LockUser> users = {}; // this process is not among them
    bool everyoneSeen = true;         // false when processes of other users may have it as well

    // Value 0, and nobody is left who could give it back: every process that maps it waits in it itself.
    [[nodiscard]] bool looksStale() const;
};

// A named semaphore as it is; it is never made here. Semaphores of 32-bit and 64-bit programs differ, so a program sees
// only those of its own kind.
class NamedLock {
public:
    explicit NamedLock(const std::string& name); // without the leading slash
    ~NamedLock();
    NamedLock(const NamedLock&) = delete;
    NamedLock& operator=(const NamedLock&) = delete;

    [[nodiscard]] LockState look() const;
    // Stale at two looks: a process may give a lock back between one glance and the next, what is stale stays so.
    [[nodiscard]] bool isStale() const;
    // Adds one to the count, unless that makes it more than one.
    void giveBack() const;

private:
    sem_t* semaphore_;
    int error_ = 0;
};

} // namespace hxaux

#endif
