// SPDX-License-Identifier: LicenseRef-HXAux
#include "tests/src/upgrade/recorded/Recorder.h"

#include "platform/LinuxWrapper.h"
#include "testing/FirmwareFile.h"

#include <gtest/gtest.h>

#include <cstdlib>

using namespace Halvix;

namespace {

int semaphores = 0; ///< how many were created
Recorder* current = nullptr;

Recorder& recorder()
{
    if (current == nullptr)
        std::abort();
    return *current;
}

} // namespace

Recorder::Recorder()
{
    current = this;
}

Recorder::~Recorder()
{
    current = nullptr;
}

void Recorder::attach(IFlasher& flasher)
{
    flasher.attach(status_, run_);
}

bool Recorder::wait(int semaphore)
{
    EXPECT_EQ(semaphore, status_.lock.handle());
    EXPECT_FALSE(locked_);
    locked_ = !lockIsBroken_;
    return locked_;
}

void Recorder::post(int semaphore)
{
    if (semaphore == status_.lock.handle())
        locked_ = false;
    if (semaphore == run_.handle())
        ++runsReleased_;
    if (semaphore != status_.signal.handle())
        return;
    EXPECT_FALSE(locked_) << "a reader that is woken must get the lock";
    const UpgradeStatus& status = status_.record;
    std::string text = std::to_string(status.action) + " " + std::to_string(status.percent);
    if (status.error != ERR_SUCCESS)
        text += " !" + std::to_string(status.error);
    published_.push_back(text);
}

std::string Recorder::story() const
{
    std::string text;
    for (std::size_t i = 0; i < published_.size(); ++i) {
        const auto action = [&](std::size_t at) { return published_[at].substr(0, 2); };
        const auto percent = [&](std::size_t at) { return std::stoi(published_[at].substr(2)); };
        const auto isPlain = [&](std::size_t at) { return published_[at].find('!') == std::string::npos; };
        std::size_t last = i;
        while (last + 1 < published_.size() && action(last + 1) == action(i) && percent(last + 1) > percent(last) &&
               isPlain(last + 1) && isPlain(i))
            ++last;
        text += (text.empty() ? "" : ", ") + published_[i];
        if (last > i)
            text += ".." + std::to_string(percent(last));
        i = last;
    }
    return text;
}

// Replaces the library's semaphores, which stay in the archive.

namespace Halvix {

bool LinuxWrapper::CreateSema(int& sema, const char*)
{
    sema = ++semaphores;
    return true;
}

void* LinuxWrapper::CreateSemaHelper(const char*)
{
    return nullptr;
}

bool LinuxWrapper::WaitForSema(int sema, bool)
{
    return recorder().wait(sema);
}

void LinuxWrapper::ReleaseSema(int sema)
{
    recorder().post(sema);
}

void LinuxWrapper::CloseSema(int) {}

} // namespace Halvix

Outcome record(IFlasher& flasher, const std::string& file, IFlasher::Task task)
{
    Recorder recorder;
    recorder.attach(flasher);
    flasher.setFileName(file.c_str());
    const eErr result = flasher.Run(task);
    EXPECT_EQ(recorder.runsReleased(), 1);
    return {result, recorder.story()};
}

void checkRun(IFlasher& flasher, const StatusRow& row)
{
    const SimulatedUnit unit{row.description};

    const Outcome run = record(flasher, firmware::file(unit, row.content), row.task);

    EXPECT_EQ(run.result, row.result);
    EXPECT_EQ(run.story, row.story);
}
