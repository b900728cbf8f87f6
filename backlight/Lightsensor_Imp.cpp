// SPDX-License-Identifier: LicenseRef-HXAux
#include "backlight/Lightsensor_Imp.h"

namespace Halvix {

namespace {

constexpr const char* kAveragingLockName = "HXAUX_LIGHT_SENSOR_AVERAGE_LOCKED";
/// The sampler's thread looks at its stop flag every 10 ms; after this time it has ended.
constexpr unsigned long kThreadEndMs = 70;

} // namespace

Lightsensor_Imp::Lightsensor_Imp()
{
    handle_ = openHWConnection();
    (void)LinuxWrapper::CreateSema(averagingLock_, kAveragingLockName); // without it every start answers 20
    sampler_.attach(&driver_, averagingLock_);
}

Lightsensor_Imp::~Lightsensor_Imp() = default;

int Lightsensor_Imp::openHWConnection()
{
    int handle = -1;
    initialised_ = LinuxWrapper::open(handle, "/dev/lightsensor", true);
    return handle;
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
    return driver_.getIlluminance(lux, ch0, ch1, &range);
}

eErr Lightsensor_Imp::getAverageIlluminance(unsigned short* lux)
{
    return sampler_.getAverageIlluminance(lux);
}

eErr Lightsensor_Imp::startAverageCalc(unsigned long averageWndSize, unsigned long rejectWndSize,
                                       unsigned long rejectDeltaInLux, LightSensorSamplingMode mode)
{
    if (averageWndSize == 0 || rejectDeltaInLux == 0)
        return ERR_INVALID_DATA;
    if (!LinuxWrapper::WaitForSema(averagingLock_, false))
        return ERR_AVERAGE_CALC_STARTED;
    return sampler_.startAverageCalc(averageWndSize, rejectWndSize, rejectDeltaInLux, mode);
}

eErr Lightsensor_Imp::stopAverageCalc()
{
    const eErr err = sampler_.stopAverageCalc();
    LinuxWrapper::Sleep(kThreadEndMs);
    return err;
}

eErr Lightsensor_Imp::getOperatingRange(LightSensorOperationRange* range)
{
    return driver_.getOperatingRange(range);
}

eErr Lightsensor_Imp::setOperatingRange(LightSensorOperationRange range)
{
    if (isAverageStarted())
        return ERR_AVERAGE_CALC_STARTED;
    return driver_.setOperatingRange(range);
}

bool Lightsensor_Imp::isAverageStarted()
{
    if (!LinuxWrapper::WaitForSema(averagingLock_, false))
        return true;
    LinuxWrapper::ReleaseSema(averagingLock_);
    return false;
}

eErr Lightsensor_Imp::Release()
{
    if (initialised_)
        LinuxWrapper::close(handle_);
    LinuxWrapper::Sleep(kThreadEndMs);
    if (!sampler_.mayBeDestroyed())
        return ERR_SUCCESS; // the thread uses the rest of the object until the process ends
    LinuxWrapper::CloseSema(averagingLock_);
    delete this;
    return ERR_SUCCESS;
}

} // namespace Halvix

Halvix::Lightsensor* GetLightsensor()
{
    return new Halvix::Lightsensor_Imp;
}
