// SPDX-License-Identifier: LicenseRef-HXAux
#include "tools/UpgradeRun.h"

#include "tools/Call.h"
#include "tools/Interface.h"
#include "tools/Progress.h"
#include "tools/Signals.h"

#include <array>
#include <cstdio>
#include <unistd.h>

namespace hxaux {

namespace {

using Halvix::eErr;
using Halvix::FirmwareUpgrade;
using Halvix::UpgradeStatus;
using std::chrono::milliseconds;
using std::chrono::steady_clock;

constexpr milliseconds kLookEvery(10);

eErr start(FirmwareUpgrade& upgrade, UpgradeTask task, FirmwareTarget target, const std::string& file)
{
    const bool writes = task == UpgradeTask::Upgrade;
    constexpr bool kOnItsOwnThread = false;
    switch (target) {
    case FirmwareTarget::Supervisor:
        return writes ? upgrade.startSSUpgrade(file.c_str(), kOnItsOwnThread)
                      : upgrade.startSSVerification(file.c_str(), kOnItsOwnThread);
    case FirmwareTarget::Front:
        return writes ? upgrade.startFrontUpgrade(file.c_str(), kOnItsOwnThread)
                      : upgrade.startFrontVerification(file.c_str(), kOnItsOwnThread);
    case FirmwareTarget::Fpga:
        break;
    }
    return writes ? upgrade.startFpgaUpgrade(file.c_str(), kOnItsOwnThread)
                  : upgrade.startFpgaVerification(file.c_str(), kOnItsOwnThread);
}

bool hasEnded(const UpgradeStatus& status)
{
    return status.action == Halvix::UpgradeActionFinished || status.action == Halvix::UpgradeActionFailed;
}

void say(const std::string& text)
{
    std::fputs(("\n" + text + "\n").c_str(), stderr);
}

// The first signal is answered with an explanation, the second one ends the tool.
class Insistence {
public:
    void signalCame(int number, UpgradeTask task)
    {
        if (++count_ == 1)
            return say(task == UpgradeTask::Upgrade
                           ? "An upgrade cannot be stopped without leaving the target without firmware. It goes on; "
                             "a second signal ends it all the same."
                           : "The target waits in its bootloader until the verification ends. It goes on; a second "
                             "signal ends it all the same.");
        say("Ended in the middle. The unit's upgrade lock is still taken and the service UART still routed to the "
            "target.\n'hxaux locks reset HXAUX_FIRMWARE_UPGRADE_IN_PROGRESS' gives the lock back; then run the upgrade "
            "again. It\nroutes anew, and a target without firmware is still reached through its bootloader.");
        sigset_t only;
        sigemptyset(&only);
        sigaddset(&only, number);
        std::signal(number, SIG_DFL);
        std::raise(number);
        pthread_sigmask(SIG_UNBLOCK, &only, nullptr);
        _exit(128 + number);
    }

private:
    int count_ = 0;
};

// The final status comes a moment before the run gives the unit's lock back, and a program must not end in between. A
// start with a file that does not exist is refused with 11 as long as the lock is taken, and touches nothing after it.
// Longer than this only another process's run can hold it.
void waitForTheLock(FirmwareUpgrade& upgrade, const HeldSignals& held)
{
    constexpr char kNoFile[] = "";
    constexpr int kLooks = 200;
    for (int i = 0; i < kLooks && upgrade.startSSVerification(kNoFile, true) == Halvix::ERR_IN_PROGRESS; ++i)
        (void)held.take(kLookEvery);
}

struct End {
    Halvix::UpgradeAction failedIn = Halvix::UpgradeActionPrepareHardware;
    eErr code = Halvix::ERR_SUCCESS;
};

End follow(Call& call, FirmwareUpgrade& upgrade, UpgradeTask task, unsigned long imageSize, const HeldSignals& held)
{
    Progress progress(call);
    Insistence insistence;
    UpgradeStatus status{};
    End end;
    Halvix::UpgradeAction phase = Halvix::UpgradeActionReserved;
    auto began = steady_clock::now();
    for (;;) {
        upgrade.getUpgradeStatus(&status, false);
        if (hasEnded(status))
            break;
        if (status.action != phase)
            began = steady_clock::now();
        end.failedIn = phase = status.action;
        const auto elapsed = std::chrono::duration_cast<milliseconds>(steady_clock::now() - began);
        const bool transfers = phase == Halvix::UpgradeActionWrite || phase == Halvix::UpgradeActionVerify;
        progress.update(phaseName(phase), status.percent,
                        transfers ? transferRate(imageSize, status.percent, elapsed) : "");
        if (const auto number = held.take(kLookEvery))
            insistence.signalCame(*number, task);
    }
    progress.end();
    end.code = status.error;
    return end;
}

} // namespace

std::string phaseName(Halvix::UpgradeAction action)
{
    switch (action) {
    case Halvix::UpgradeActionPrepareHardware:
        return "preparing";
    case Halvix::UpgradeActionConnect:
        return "connecting";
    case Halvix::UpgradeActionReadFile:
        return "reading file";
    case Halvix::UpgradeActionWrite:
        return "writing";
    case Halvix::UpgradeActionVerify:
        return "verifying";
    case Halvix::UpgradeActionFinished:
        return "finished";
    case Halvix::UpgradeActionFailed:
        return "failed";
    default:
        return "action " + std::to_string(action);
    }
}

std::string transferRate(unsigned long imageSize, int percent, milliseconds elapsed)
{
    if (imageSize == 0 || percent == 0 || elapsed.count() == 0)
        return "";
    const double bytes = static_cast<double>(imageSize) * percent / 100;
    std::array<char, 32> text{};
    std::snprintf(text.data(), text.size(), "%.1f KB/s", bytes / static_cast<double>(elapsed.count()));
    return text.data();
}

Exit statusOfRun(Halvix::UpgradeAction failedIn, eErr code)
{
    using namespace Halvix;
    if (code == ERR_OPEN_FAILED && failedIn == UpgradeActionConnect)
        return Exit::NoConnection;
    const bool fileIsBad = failedIn == UpgradeActionReadFile && code != ERR_INIT_FAILED && code != ERR_MEM_ALLOC_FAIL;
    if (fileIsBad || code == ERR_INVALID_DATA || code == ERR_DATATYPE_MISMATCH)
        return Exit::File;
    return statusOf(code);
}

void runUpgrade(Call& call, UpgradeTask task, FirmwareTarget target, const std::string& file)
{
    const FirmwareCheck check = checkFirmwareFile(target, file);
    if (check.code != Halvix::ERR_SUCCESS)
        call.fail(Exit::File, file + ": " + check.problem);

    const HeldSignals held;
    const Interface<FirmwareUpgrade> upgrade(GetFirmwareUpgrade());
    if (const eErr code = start(*upgrade, task, target, file); code != Halvix::ERR_SUCCESS)
        call.fail(code == Halvix::ERR_OPEN_FAILED ? Exit::File : statusOfRun(Halvix::UpgradeActionReserved, code), "",
                  code);
    const End end = follow(call, *upgrade, task, check.imageSize, held);
    waitForTheLock(*upgrade, held);
    if (end.code != Halvix::ERR_SUCCESS)
        call.fail(statusOfRun(end.failedIn, end.code), phaseName(end.failedIn), end.code);
    call.print(task == UpgradeTask::Upgrade ? "written and verified" : "verified", check.imageSize, "bytes");
}

} // namespace hxaux
