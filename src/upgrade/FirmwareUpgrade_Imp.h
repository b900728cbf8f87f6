// SPDX-License-Identifier: LicenseRef-HXAux
#pragma once

#include "hx-aux/FirmwareUpgrade.h"
#include "upgrade/Flasher_STM32.h"

#include <memory>

namespace Halvix {

/// Starts upgrades and verifications, one at a time on the unit, and reports their progress.
///
/// This object and the worker thread share ownership of what a run uses (flashers, semaphores, status record): an
/// application may release the object as soon as it gets the final status, while the worker is still closing.
class FirmwareUpgrade_Imp : public FirmwareUpgrade {
public:
    FirmwareUpgrade_Imp();
    virtual ~FirmwareUpgrade_Imp();

    eErr startFpgaUpgrade(const char* file, bool blocking) override;
    eErr startFpgaVerification(const char* file, bool blocking) override;
    eErr startSSUpgrade(const char* file, bool blocking) override;
    eErr startSSVerification(const char* file, bool blocking) override;
    eErr startFrontUpgrade(const char* file, bool blocking) override;
    eErr startFrontVerification(const char* file, bool blocking) override;
    eErr getUpgradeStatus(UpgradeStatus* status, bool wait) override;
    eErr shutDown() override;
    eErr Release() override;

    /// Entry points of the worker thread; the argument is the flasher.
    static void threadProcProgram(const void* flasher);
    static void threadProcVerify(const void* flasher);
    /// 1, 32, 4.
    eErr CheckFile(const char* file, Flasher_STM32::eDeviceType type);

private:
    struct Job;
    using Task = IFlasher::Task;

    eErr startMicrocontroller(const char* file, Flasher_STM32::eDeviceType type, Task task, bool blocking);
    eErr startFpga(const char* file, Task task, bool blocking);
    eErr run(IFlasher& flasher, const char* file, Task task, bool blocking);
    void resetStatus();

    UpgradeStatus lastRead_{};
    std::shared_ptr<Job> job_;
};

} // namespace Halvix
