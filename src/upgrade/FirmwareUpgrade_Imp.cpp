// SPDX-License-Identifier: LicenseRef-HXAux
#include "upgrade/FirmwareUpgrade_Imp.h"

#include "platform/File.h"
#include "platform/Semaphore.h"
#include "upgrade/FirmwareText.h"
#include "upgrade/Flasher_FPGA.h"

#include <algorithm>
#include <cstdlib>
#include <optional>

namespace Halvix {

struct FirmwareUpgrade_Imp::Job {
    /// Destroys the previous run's flasher, with its device and image, and creates a new one. Only for the holder of
    /// the upgrade lock.
    template <class Flasher, class... Arguments>
    Flasher& renew(std::optional<Flasher>& place, Arguments... arguments)
    {
        fpga.reset();
        microcontroller.reset();
        place.emplace(arguments...);
        place->attach(status, upgradeLock);
        return *place;
    }

    std::optional<Flasher_FPGA> fpga;
    std::optional<Flasher_STM32> microcontroller;
    // A semaphore that could not be created is 0: without the upgrade lock every start returns 11.
    SharedStatus status;
    Semaphore upgradeLock{"HXAUX_FIRMWARE_UPGRADE_IN_PROGRESS"}; ///< one run at a time on the unit
};

FirmwareUpgrade_Imp::FirmwareUpgrade_Imp() : job_{std::make_shared<Job>()} {}

FirmwareUpgrade_Imp::~FirmwareUpgrade_Imp() = default;

eErr FirmwareUpgrade_Imp::startFpgaUpgrade(const char* file, bool blocking)
{
    return startFpga(file, Task::Program, blocking);
}

eErr FirmwareUpgrade_Imp::startFpgaVerification(const char* file, bool blocking)
{
    return startFpga(file, Task::Verify, blocking);
}

eErr FirmwareUpgrade_Imp::startSSUpgrade(const char* file, bool blocking)
{
    return startMicrocontroller(file, Flasher_STM32::Supervisor, Task::Program, blocking);
}

eErr FirmwareUpgrade_Imp::startSSVerification(const char* file, bool blocking)
{
    return startMicrocontroller(file, Flasher_STM32::Supervisor, Task::Verify, blocking);
}

eErr FirmwareUpgrade_Imp::startFrontUpgrade(const char* file, bool blocking)
{
    return startMicrocontroller(file, Flasher_STM32::FrontController, Task::Program, blocking);
}

eErr FirmwareUpgrade_Imp::startFrontVerification(const char* file, bool blocking)
{
    return startMicrocontroller(file, Flasher_STM32::FrontController, Task::Verify, blocking);
}

// The upgrade lock is not released in the function that acquires it: the run does that.

eErr FirmwareUpgrade_Imp::startMicrocontroller(const char* file, Flasher_STM32::eDeviceType type, Task task,
                                               bool blocking) HX_UNCHECKED_LOCKING
{
    if (!job_->upgradeLock.tryWait())
        return ERR_IN_PROGRESS;
    if (const eErr err = CheckFile(file, type); err != ERR_SUCCESS) {
        job_->upgradeLock.post();
        return err;
    }
    return run(job_->renew(job_->microcontroller, type), file, task, blocking);
}

eErr FirmwareUpgrade_Imp::startFpga(const char* file, Task task, bool blocking) HX_UNCHECKED_LOCKING
{
    if (!job_->upgradeLock.tryWait())
        return ERR_IN_PROGRESS;
    return run(job_->renew(job_->fpga), file, task, blocking);
}

// From now on the flasher owns the upgrade lock: its run releases it, unless its thread could not be started.
eErr FirmwareUpgrade_Imp::run(IFlasher& flasher, const char* file, Task task, bool blocking) HX_UNCHECKED_LOCKING
{
    resetStatus();
    flasher.setFileName(file);
    if (blocking)
        return flasher.Run(task);
    flasher.holdOwner(job_);
    const eErr err = LinuxWrapper::startThread(task == Task::Program ? threadProcProgram : threadProcVerify, &flasher);
    if (err != ERR_SUCCESS) {
        (void)flasher.takeOwner();
        job_->upgradeLock.post(); // nothing was changed yet
    }
    return err;
}

void FirmwareUpgrade_Imp::resetStatus()
{
    lastRead_ = {};
    if (!job_->status.lock.wait())
        return;
    job_->status.record = {};
    job_->status.lock.post();
}

namespace {

void runAsWorker(const void* argument, IFlasher::Task task)
{
    auto* flasher = static_cast<IFlasher*>(const_cast<void*>(argument));
    const std::shared_ptr<void> owner = flasher->takeOwner();
    (void)flasher->Run(task); // its outcome is published
}

} // namespace

void FirmwareUpgrade_Imp::threadProcProgram(const void* flasher)
{
    runAsWorker(flasher, Task::Program);
}

void FirmwareUpgrade_Imp::threadProcVerify(const void* flasher)
{
    runAsWorker(flasher, Task::Verify);
}

eErr FirmwareUpgrade_Imp::CheckFile(const char* file, Flasher_STM32::eDeviceType type)
{
    const File opened{file};
    if (!opened.isOpen())
        return ERR_OPEN_FAILED;
    const unsigned size = opened.size();
    // A file whose size rules out firmware is read only far enough to show that it is readable.
    const unsigned wanted = isFirmwareSize(size, type) ? size : std::min(size, 1U);
    // One byte more than is read, so that the search ends at the end of the file.
    const std::unique_ptr<char, decltype(&std::free)> text{static_cast<char*>(std::calloc(wanted + std::size_t{1}, 1)),
                                                           &std::free};
    if (text == nullptr)
        return ERR_MEM_ALLOC_FAIL;
    if (!LinuxWrapper::read(opened.handle(), text.get(), static_cast<int>(wanted), nullptr))
        return ERR_OPEN_FAILED;
    return checkFirmwareText(text.get(), size, type);
}

eErr FirmwareUpgrade_Imp::getUpgradeStatus(UpgradeStatus* status, bool wait)
{
    if (!job_->status.signal.takeSignal(wait) || !job_->status.lock.wait()) {
        *status = lastRead_;
        return ERR_SUCCESS;
    }
    lastRead_ = job_->status.record;
    *status = lastRead_;
    job_->status.lock.post();
    return ERR_SUCCESS;
}

eErr FirmwareUpgrade_Imp::shutDown()
{
    constexpr int kShutDown = 129;
    return LinuxWrapper::ControlDaemon(kShutDown) == ERR_SUCCESS ? ERR_SUCCESS : ERR_COMMAND_FAILED;
}

eErr FirmwareUpgrade_Imp::Release()
{
    delete this;
    return ERR_SUCCESS;
}

} // namespace Halvix

Halvix::FirmwareUpgrade* GetFirmwareUpgrade()
{
    return new Halvix::FirmwareUpgrade_Imp;
}
