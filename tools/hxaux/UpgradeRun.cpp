// SPDX-License-Identifier: LicenseRef-HXAux
#include "tools/hxaux/UpgradeRun.h"

#include "hx-aux/AuxVersion.h"
#include "tools/hxaux/Call.h"
#include "tools/hxaux/Interface.h"
#include "tools/hxaux/MemoryFile.h"
#include "tools/hxaux/Progress.h"
#include "tools/hxaux/Signals.h"
#include "tools/hxaux/StatusReader.h"

#include <algorithm>
#include <array>
#include <csignal>
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

// A task and its target.
struct Job {
    UpgradeTask task;
    FirmwareTarget target;
};

eErr start(FirmwareUpgrade& upgrade, const Job& job, const std::string& file)
{
    const bool writes = job.task == UpgradeTask::Upgrade;
    constexpr bool kOnItsOwnThread = false;
    switch (job.target) {
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

void say(const std::string& text)
{
    std::fputs(("\n" + text + "\n").c_str(), stderr);
}

// The first signal prints an explanation, the second one ends the tool.
class InterruptGuard {
public:
    void signalCame(int number, UpgradeTask task)
    {
        if (++count_ == 1)
            return say(task == UpgradeTask::Upgrade
                           ? "Interrupting now would leave the target without firmware, so the upgrade continues. "
                             "Press Ctrl-C again to interrupt anyway."
                           : "Interrupting now would leave the target in its bootloader, so the verification "
                             "continues. Press Ctrl-C again to interrupt anyway.");
        say(std::string("Interrupted. The upgrade lock is still held and the service UART is still routed to the "
                        "target. Release the lock with 'hxaux locks reset HXAUX_FIRMWARE_UPGRADE_IN_PROGRESS', then "
                        "run the ") +
            (task == UpgradeTask::Upgrade ? "upgrade" : "verification") + " again; it resets the routing.");
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

// The final status comes a moment before the run releases the unit's lock, and a program must not end in between. A
// start with a missing file is refused with 11 while the lock is held, and touches nothing afterwards. Only a run of
// another process can hold the lock longer than this.
void waitForTheLock(FirmwareUpgrade& upgrade, const HeldSignals& held)
{
    constexpr char kNoFile[] = "";
    constexpr int kLooks = 200;
    for (int i = 0; i < kLooks && upgrade.startSSVerification(kNoFile, true) == Halvix::ERR_IN_PROGRESS; ++i)
        (void)held.take(kLookEvery);
}

// Shows the progress of a run, with the transfer rate.
class ShownProgress {
public:
    ShownProgress(Call& call, unsigned long imageSize)
        : progress_(call), imageSize_(imageSize), onTerminal_(call.onTerminal())
    {
    }
    ~ShownProgress() { progress_.end(); }
    ShownProgress(const ShownProgress&) = delete;
    ShownProgress& operator=(const ShownProgress&) = delete;

    void complete() { progress_.complete(); }
    void show(const UpgradeStatus& status)
    {
        const bool isEnd =
            status.action == Halvix::UpgradeActionFinished || status.action == Halvix::UpgradeActionFailed;
        if (isEnd && onTerminal_)
            return; // the result follows
        if (status.action != phase_)
            began_ = steady_clock::now();
        phase_ = status.action;
        const auto elapsed = std::chrono::duration_cast<milliseconds>(steady_clock::now() - began_);
        const bool transfers = phase_ == Halvix::UpgradeActionWrite || phase_ == Halvix::UpgradeActionVerify;
        progress_.update(phaseName(phase_), status.percent,
                         transfers ? transferRate(imageSize_, status.percent, elapsed) : "");
    }

private:
    Progress progress_;
    unsigned long imageSize_;
    bool onTerminal_;
    Halvix::UpgradeAction phase_ = Halvix::UpgradeActionReserved;
    steady_clock::time_point began_;
};

// One run, until the unit is free for the next one. Its failure ends the verb.
class Run {
public:
    Run(Call& call, const Job& job, const HeldSignals& held) : call_(call), job_(job), held_(held) {}

    // The highest percentage of the file that a verification reported as compared.
    int of(const std::string& text, unsigned long imageSize)
    {
        const MemoryFile file(text);
        const Interface<FirmwareUpgrade> upgrade(GetFirmwareUpgrade());
        const int compared = follow(*upgrade, file.name(), imageSize);
        waitForTheLock(*upgrade, held_);
        return compared;
    }
    [[nodiscard]] eErr code() const { return code_; }
    [[nodiscard]] const Cause& cause() const { return cause_; }

private:
    int follow(FirmwareUpgrade& upgrade, const std::string& file, unsigned long imageSize)
    {
        StatusReader reader(upgrade);
        if (const eErr code = start(upgrade, job_, file); code != Halvix::ERR_SUCCESS)
            call_.fail(statusOfStart(code), "", code);
        reader.begin();
        ShownProgress progress(call_, imageSize);
        InterruptGuard interrupts;
        while (!reader.result()) {
            for (const UpgradeStatus& status : reader.news())
                progress.show(status);
            if (const auto number = held_.take(kLookEvery))
                interrupts.signalCame(*number, job_.task);
        }
        for (const UpgradeStatus& status : reader.news())
            progress.show(status);
        code_ = *reader.result();
        if (code_ == Halvix::ERR_SUCCESS)
            progress.complete();
        cause_ = causeOf(job_.task, job_.target, code_);
        if (!cause_.phase)
            cause_.phase = reader.failedIn();
        return reader.compared();
    }

    Call& call_;
    Job job_;
    const HeldSignals& held_;
    eErr code_ = Halvix::ERR_SUCCESS;
    Cause cause_;
};

void failUnlessDone(Call& call, const Run& run)
{
    if (run.code() != Halvix::ERR_SUCCESS)
        call.fail(run.cause().status, run.cause().phase ? phaseName(*run.cause().phase) : "", run.code());
}

// A microcontroller's flash that is smaller than the image is compared up to its end, with success. A percentage of 100
// proves a complete comparison; without one, the same file with another last byte must differ.
void verifyMicrocontroller(Call& call, const Job& job, const FirmwareCheck& check, const HeldSignals& held)
{
    Run run(call, job, held);
    int compared = run.of(check.text, check.imageSize);
    failUnlessDone(call, run);
    if (compared == 100)
        return;
    Run again(call, job, held);
    compared = std::max(compared, again.of(withOtherLastByte(check), check.imageSize));
    if (again.code() == Halvix::ERR_VERIFY_FAILED)
        return;
    failUnlessDone(call, again);
    call.fail(Exit::Difference, "only " + std::to_string(compared) +
                                    " % of the file could be compared: the flash is smaller or of an unknown kind");
}

// Empty when the unit does not answer.
std::string installedVersion(FirmwareTarget target)
{
    const Interface<Halvix::AuxVersion> versions(GetAuxVersion());
    std::array<unsigned char, 4> numbers{};
    const auto read = [&](auto get) {
        return ((*versions).*get)(&numbers[0], &numbers[1], &numbers[2], &numbers[3]) == Halvix::ERR_SUCCESS;
    };
    const bool known = target == FirmwareTarget::Supervisor ? read(&Halvix::AuxVersion::getSSVersion)
                       : target == FirmwareTarget::Front    ? read(&Halvix::AuxVersion::getFrontVersion)
                                                            : read(&Halvix::AuxVersion::getFPGAVersion);
    std::string text;
    for (const unsigned char number : numbers)
        text += (text.empty() ? "" : ".") + std::to_string(number);
    return known ? text : "";
}

void carryOut(Call& call, const Job& job, const FirmwareCheck& check, const HeldSignals& held)
{
    if (job.task == UpgradeTask::Verify && job.target != FirmwareTarget::Fpga)
        return verifyMicrocontroller(call, job, check, held);
    Run run(call, job, held);
    (void)run.of(check.text, check.imageSize);
    failUnlessDone(call, run);
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
    constexpr milliseconds kLeastKnown(1000);
    if (imageSize == 0 || percent == 0 || elapsed < kLeastKnown)
        return "";
    const double bytes = static_cast<double>(imageSize) * percent / 100;
    std::array<char, 32> text{};
    std::snprintf(text.data(), text.size(), "%.1f KB/s", bytes / static_cast<double>(elapsed.count()));
    return text.data();
}

Cause causeOf(UpgradeTask task, FirmwareTarget target, eErr code)
{
    using namespace Halvix;
    const bool fpga = target == FirmwareTarget::Fpga;
    const bool writes = task == UpgradeTask::Upgrade;
    switch (code) {
    case ERR_OPEN_FAILED: // the file was opened before
        return fpga ? Cause{UpgradeActionPrepareHardware, Exit::Refused}
                    : Cause{UpgradeActionConnect, Exit::NoConnection};
    case ERR_BUFFER_SIZE:
        return {UpgradeActionPrepareHardware, Exit::Refused};
    case ERR_INIT_FAILED:
        return {fpga ? UpgradeActionPrepareHardware : UpgradeActionReadFile, Exit::Refused};
    case ERR_CHECKSUM:
        return {UpgradeActionReadFile, Exit::File};
    case ERR_INVALID_DATA: // an image that is larger than the flash
        return {writes ? UpgradeActionWrite : UpgradeActionVerify, Exit::File};
    case ERR_DEVICE_WRITE_DATA_FAILED:
        return {UpgradeActionWrite, Exit::Refused};
    case ERR_DEVICE_READ_DATA_FAILED:
        return {UpgradeActionVerify, Exit::Refused};
    case ERR_VERIFY_FAILED:
        return {UpgradeActionVerify, Exit::Difference};
    default: // the FPGA's driver refuses requests (7), or out of memory (32), in several phases
        return {std::nullopt, statusOf(code)};
    }
}

Exit statusOfStart(eErr code)
{
    return code == Halvix::ERR_OPEN_FAILED || code == Halvix::ERR_DATATYPE_MISMATCH ? Exit::File : statusOf(code);
}

std::string withOtherLastByte(const FirmwareCheck& check)
{
    const auto byteAt = [&](std::size_t at) { return std::stoi(check.text.substr(at, 2), nullptr, 16); };
    const int byte = byteAt(check.lastByteAt);
    const int other = byte ^ 1;
    const int checksum = byteAt(check.lastByteAt + 2) + byte - other;
    std::array<char, 5> digits{};
    std::snprintf(digits.data(), digits.size(), "%02X%02X", static_cast<unsigned>(other) & 0xFF,
                  static_cast<unsigned>(checksum) & 0xFF);
    std::string text = check.text;
    return text.replace(check.lastByteAt, 4, digits.data());
}

void runUpgrade(Call& call, UpgradeTask task, FirmwareTarget target, const std::string& file)
{
    const FirmwareCheck check = checkFirmwareFile(target, file);
    if (!check.problem.empty())
        call.fail(Exit::File, file + ": " + check.problem);

    const HeldSignals held;
    if (const std::string version = installedVersion(target); task == UpgradeTask::Upgrade && !version.empty()) {
        call.print("installed version", version);
        call.show();
    }
    try {
        carryOut(call, {task, target}, check, held);
        if (const std::string version = installedVersion(target); task == UpgradeTask::Upgrade && !version.empty())
            call.print("version now", version);
        call.print(task == UpgradeTask::Upgrade ? "written and verified" : "verified", check.imageSize, "bytes");
        call.show(); // before a held signal takes effect
    } catch (const Stop&) {
        call.show();
        throw;
    }
}

} // namespace hxaux
