// SPDX-License-Identifier: LicenseRef-HXAux
#include "backlight/Lightsensor_Imp.h"

#include "backlight/LightsensorIDrv.h"
#include "backlight/sampler.h"
#include "platform/Semaphore.h"

#include <optional>

namespace Halvix {

namespace {

constexpr const char* kAveragingLockName = "HXAUX_LIGHT_SENSOR_AVERAGE_LOCKED";
/// The sampler's thread checks its stop flag every 10 ms; after this time it has ended.
constexpr unsigned long kThreadEndMs = 70;

} // namespace

/// Closed in the order unit lock, driver, the sampler's own lock.
struct Lightsensor_Imp::Averaging {
    sampler average;
    LightsensorIDrv driver;
    std::optional<Semaphore> lock; ///< one averaging at a time on the unit; opened last
};

Lightsensor_Imp::Lightsensor_Imp() : averaging_{std::make_shared<Averaging>()}
{
    openHWConnection();
    averaging_->lock.emplace(kAveragingLockName); // when it cannot be opened, every start returns 20
    averaging_->average.attach(averaging_->driver, *averaging_->lock, averaging_);
}

int Lightsensor_Imp::openHWConnection()
{
    (void)device_.bind("/dev/lightsensor"); // no request is sent through it
    return device_.handle();
}

eErr Lightsensor_Imp::getIlluminance(unsigned short* lux)
{
    unsigned char ch0 = 0;
    unsigned char ch1 = 0;
    return getIlluminance(lux, &ch0, &ch1); // through the slot: an override of it changes this one too
}

eErr Lightsensor_Imp::getIlluminance(unsigned short* lux, unsigned char* ch0, unsigned char* ch1)
{
    LightSensorOperationRange range = RangeStandard;
    return averaging_->driver.getIlluminance(lux, ch0, ch1, &range);
}

eErr Lightsensor_Imp::getAverageIlluminance(unsigned short* lux)
{
    return averaging_->average.getAverageIlluminance(lux);
}

// The sampler's thread releases the lock; a failed start leaves it acquired.
eErr Lightsensor_Imp::startAverageCalc(unsigned long averageWndSize, unsigned long rejectWndSize,
                                       unsigned long rejectDeltaInLux,
                                       LightSensorSamplingMode mode) HX_UNCHECKED_LOCKING
{
    if (averageWndSize == 0 || rejectDeltaInLux == 0)
        return ERR_INVALID_DATA;
    if (!averaging_->lock->tryWait())
        return ERR_AVERAGE_CALC_STARTED;
    return averaging_->average.startAverageCalc(averageWndSize, rejectWndSize, rejectDeltaInLux, mode);
}

eErr Lightsensor_Imp::stopAverageCalc()
{
    const eErr err = averaging_->average.stopAverageCalc();
    LinuxWrapper::SleepFully(kThreadEndMs);
    return err;
}

eErr Lightsensor_Imp::getOperatingRange(LightSensorOperationRange* range)
{
    return averaging_->driver.getOperatingRange(range);
}

eErr Lightsensor_Imp::setOperatingRange(LightSensorOperationRange range)
{
    if (isAverageStarted())
        return ERR_AVERAGE_CALC_STARTED;
    return averaging_->driver.setOperatingRange(range);
}

bool Lightsensor_Imp::isAverageStarted()
{
    Semaphore& lock = *averaging_->lock;
    if (!lock.tryWait())
        return true;
    lock.post();
    return false;
}

eErr Lightsensor_Imp::Release()
{
    device_.close();
    LinuxWrapper::SleepFully(kThreadEndMs);
    delete this;
    return ERR_SUCCESS;
}

} // namespace Halvix

Halvix::Lightsensor* GetLightsensor()
{
    return new Halvix::Lightsensor_Imp;
}
