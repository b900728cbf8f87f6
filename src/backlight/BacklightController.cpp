// SPDX-License-Identifier: LicenseRef-HXAux
#include "backlight/BacklightController.h"

#include "backlight/BacklightControllerParts.h"
#include "backlight/Log.h"

#include <exception>
#include <utility>

namespace Halvix {

namespace {

constexpr unsigned long kSettleMs = 800; // a new sampler's first value takes this long
constexpr unsigned long kRetryMs = 1000;

} // namespace

BacklightController::BacklightController() : parts_{std::make_shared<Parts>()}
{
    logController("%s", parts_->newSettings.isOpen() ? "Sema create ok\n" : "Sema create error\n");
}

BacklightController::BacklightController(std::shared_ptr<Parts> parts) : parts_{std::move(parts)} {}

BacklightController::~BacklightController()
{
    logController("Destructor\n");
}

eErr BacklightController::init()
try {
    if (!parts_->started.takeSignal(false))
        return ERR_INIT_FAILED;
    LinuxWrapper::SleepFully(kSettleMs);
    Lightsensor* const previous = std::exchange(parts_->lightSensor, GetLightsensor());
    if (previous != nullptr)
        previous->Release(); // of an earlier call whose thread could not be started
    parts_->settings = AblSettings{};
    return start();
} catch (const std::exception&) {
    parts_->started.signal();
    return ERR_MEM_ALLOC_FAIL;
}

eErr BacklightController::start()
{
    logController("startThread\n");
    auto shared = std::make_unique<std::shared_ptr<Parts>>(parts_);
    const eErr err = LinuxWrapper::startThread(threadProc, shared.get());
    if (err != ERR_SUCCESS) {
        parts_->started.signal();
        return err;
    }
    (void)shared.release(); // the thread's
    return ERR_SUCCESS;
}

void BacklightController::threadProc(const void* sharedParts)
{
    const std::unique_ptr<const std::shared_ptr<Parts>> shared{static_cast<const std::shared_ptr<Parts>*>(sharedParts)};
    BacklightController{*shared}.execute();
}

void BacklightController::execute()
{
    logController("Main started\n");
    for (;;) {
        if (readSettings() && parts_->settings.enabled)
            executeABL(); // its result does not matter: only the next notification starts it again
        waitForNewSettings();
    }
}

void BacklightController::waitForNewSettings()
{
    if (!parts_->newSettings.awaitSignal())
        LinuxWrapper::Sleep(kRetryMs); // without the semaphore there are no notifications: poll the file
}

eErr BacklightController::InitLightSensor()
{
    const AblSettings& settings = parts_->settings;
    for (;;) {
        const eErr err = parts_->lightSensor->startAverageCalc(settings.averageWndSize, settings.rejectWndSize,
                                                               settings.rejectDeltaInLux, settings.mode);
        if (err != ERR_AVERAGE_CALC_STARTED) {
            if (err != ERR_SUCCESS)
                logController("Error startAverageCalc\n");
            return err;
        }
        logController("Error ERR_AVERAGE_CALC_STARTED, sleep(1000)\n");
        LinuxWrapper::Sleep(kRetryMs);
    }
}

bool BacklightController::executeABL()
{
    law::Run run;
    logController("executeABL started\n");
    if (InitLightSensor() != ERR_SUCCESS)
        return false; // the sampler is not stopped: a failed start keeps the averaging lock; callers rely on it
    LinuxWrapper::SleepFully(kSettleMs);
    while (pass(run)) {
    }
    parts_->lightSensor->stopAverageCalc();
    logController("Stop ABL loop\n");
    return true;
}

bool BacklightController::pass(law::Run& run)
{
    logController("Time pasted %d\n", run.elapsedMs);
    if (parts_->newSettings.takeSignal(false) && !readSettings()) {
        logController("Error readSettings\n");
        return false;
    }
    if (!parts_->settings.enabled) {
        logController("Exit the thread\n");
        return false;
    }
    if (law::measurementIsDue(run) && !measure(run))
        return false;
    if (run.currentLevel != run.targetLevel && !changeLevel(run))
        return false;
    LinuxWrapper::Sleep(run.sleepMs);
    run.elapsedMs += static_cast<std::int32_t>(run.sleepMs);
    return true;
}

bool BacklightController::measure(law::Run& run)
{
    AblSettings& settings = parts_->settings;
    if (parts_->lightSensor->getAverageIlluminance(&run.averageLux) != ERR_SUCCESS) {
        logController("Error getAverageIlluminance\n");
        return false;
    }
    unsigned char measured = 0;
    if (parts_->driver.getIntensity(&measured) != ERR_SUCCESS) {
        logController("Error getIntensity\n");
        return false;
    }
    if (run.firstTime) {
        run.currentLevel = measured;
        run.firstTime = false;
        logController("firstTime: %d, %d\n", measured, run.currentLevel);
    }
    run.x = law::curveArgument(run.averageLux);
    if (measured != run.currentLevel) {
        logController("Adaption, dev level %d current: %d\n", measured, run.currentLevel);
        run.y = measured;
        settings.k = law::learntSlope(run.y, run.x);
        run.currentLevel = measured;
        logController("New y: %.4f, x: %.4f, k: %.4f,\n", run.y, run.x, settings.k);
        updateK(settings.k);
    } else {
        run.y = law::curveLevel(settings.k, run.x, settings.maxIntensity);
        logController("Calculated y: %.4f, x: %.4f, k: %.4f,\n", run.y, run.x, settings.k);
    }
    logController("Used y: %.4f\n", run.y);
    law::aim(run);
    return true;
}

bool BacklightController::changeLevel(law::Run& run)
{
    logController("Change level from %d to %d\n", run.currentLevel, run.targetLevel);
    const bool soft = parts_->settings.bSoftTransitions;
    law::move(run, soft ? law::Transition::Soft : law::Transition::AtOnce);
    if (parts_->driver.setIntensity(run.currentLevel) == ERR_SUCCESS)
        return true;
    logController("Error setIntensity\n");
    return false;
}

} // namespace Halvix
