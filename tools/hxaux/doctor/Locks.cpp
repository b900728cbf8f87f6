// SPDX-License-Identifier: LicenseRef-HXAux
#include "tools/hxaux/NamedLock.h"
#include "tools/hxaux/doctor/Doctor.h"

namespace hxaux::doctor {

namespace {

constexpr std::string_view kUpgradeLock = "HXAUX_FIRMWARE_UPGRADE_IN_PROGRESS";

Finding lookAtLock(const std::string& name)
{
    const NamedLock lock(name);
    const LockState state = lock.look();
    if (state.kind == LockState::Kind::Refused)
        return {name, "this user may not use it: " + state.error, "sudo chmod 666 /dev/shm/sem." + name};
    if (lock.isStale() && name == kUpgradeLock)
        return {name, "stale: an upgrade was interrupted, and its target may have no firmware",
                "hxaux locks reset " + name + " && hxaux upgrade TARGET FILE   # run the upgrade again"};
    if (lock.isStale())
        return {name, "stale: the program that held it died", "hxaux locks reset " + name};
    return {name, "", ""};
}

} // namespace

Findings locks()
{
    Findings findings;
    for (const std::string_view name : kLockNames)
        findings.push_back(lookAtLock(std::string(name)));
    return findings;
}

} // namespace hxaux::doctor
