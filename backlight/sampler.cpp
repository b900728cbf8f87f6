// SPDX-License-Identifier: LicenseRef-HXAux
#include "backlight/sampler.h"

#include "backlight/Log.h"

#include <cerrno>

namespace Halvix {

namespace {

constexpr unsigned kValueBits = 0x7F;
constexpr unsigned kSaturated = 127; // top of the converter
constexpr unsigned kDimEnough = 85;  // below it the standard range will do; the gap is the hysteresis
constexpr int kPauses = 80;
constexpr unsigned long kPauseMs = 10;

/// A signal does not end the wait: what is posted later must have been taken.
void take(int lock)
{
    while (!LinuxWrapper::WaitForSema(lock, true) && errno == EINTR) {
    }
}

} // namespace

sampler::sampler()
{
    (void)LinuxWrapper::CreateSema(lock_, nullptr); // prints its own message; later waits then fail
}

sampler::~sampler()
{
    deInitSampler();
}

void sampler::attach(LightsensorIDrv* driver, int averagingLock)
{
    driver_ = driver;
    averagingLock_ = averagingLock;
}

eErr sampler::startAverageCalc(unsigned long averageWndSize, unsigned long rejectWndSize,
                               unsigned long rejectDeltaInLux, LightSensorSamplingMode mode)
{
    take(lock_);
    sCtrlData_ = {static_cast<std::uint32_t>(averageWndSize), static_cast<std::uint32_t>(rejectWndSize),
                  static_cast<std::uint32_t>(rejectDeltaInLux)};
    mode_ = mode;
    deInitSampler();
    eErr result = ERR_SUCCESS;
    if (initSampler()) {
        result = initRange();
    } else {
        stop_ = true;
        result = ERR_INIT_FAILED;
    }
    LinuxWrapper::ReleaseSema(lock_);
    if (running_ || result != ERR_SUCCESS)
        return result; // the averaging lock stays taken after a failure; callers know it so
    logSampler("startThread\n");
    stop_ = false;
    ++threads_;
    result = LinuxWrapper::startThread(threadProc, this);
    if (result != ERR_SUCCESS)
        --threads_;
    return result;
}

eErr sampler::stopAverageCalc()
{
    take(lock_);
    stop_ = true;
    LinuxWrapper::ReleaseSema(lock_);
    return ERR_SUCCESS;
}

eErr sampler::getAverageIlluminance(unsigned short* lux)
{
    take(lock_);
    const bool running = running_;
    if (running)
        *lux = static_cast<unsigned short>(averageLux_);
    LinuxWrapper::ReleaseSema(lock_);
    return running ? ERR_SUCCESS : ERR_NOT_RUNNING;
}

bool sampler::initSampler()
{
    pReject_ = nullptr;
    pAverage_ = nullptr;
    if (sCtrlData_.rejectWndSize > 1) {
        pReject_ = makeSampleRing(sCtrlData_.rejectWndSize);
        if (pReject_ == nullptr) {
            logSampler("Memory alocation faild\n");
            return false;
        }
    }
    pAverage_ = makeSampleRing(sCtrlData_.averageWndSize);
    if (pAverage_ == nullptr)
        logSampler("Memory alocation faild\n");
    return pAverage_ != nullptr;
}

bool sampler::deInitSampler()
{
    freeSampleRing(pReject_);
    freeSampleRing(pAverage_);
    return true;
}

eErr sampler::initRange()
{
    if (mode_ == SamplingModeExtended)
        range_ = RangeExtended;
    else if (mode_ == SamplingModeStandard || mode_ == SamplingModeAuto)
        range_ = RangeStandard;
    return driver_->setOperatingRange(range_);
}

void sampler::threadProc(const void* itself)
{
    // Threads are started with a pointer to const; this one is the sampler that started it.
    const_cast<sampler*>(static_cast<const sampler*>(itself))->exec();
}

void sampler::exec()
{
    logSampler("Thread started.\n");
    running_ = true;
    for (;;) {
        waitForNextSample();
        take(lock_);
        if (stop_)
            break;
        const eErr err = lightSensorSample();
        LinuxWrapper::ReleaseSema(lock_);
        if (err != ERR_SUCCESS)
            break; // the lock is posted once more below: callers know that its count is then 2
    }
    LinuxWrapper::ReleaseSema(lock_);
    LinuxWrapper::ReleaseSema(averagingLock_);
    running_ = false;
    logSampler("Exit Loop\n");
    --threads_; // the last step that uses the object
}

void sampler::waitForNextSample() const
{
    for (int i = 0; i < kPauses; ++i) {
        LinuxWrapper::Sleep(kPauseMs);
        if (stop_)
            return;
    }
}

eErr sampler::lightSensorSample()
{
    unsigned short lux = 0;
    unsigned char ch0 = 0;
    unsigned char ch1 = 0;
    const eErr err = driver_->getIlluminance(&lux, &ch0, &ch1, &range_);
    logSampler("brightness[%d], ch1 [%d] ch2[%d]\n", lux, ch0, ch1);
    if (err == ERR_INVALID_DATA) {
        logSampler("Measure not ready!\n");
        return ERR_SUCCESS;
    }
    if (err != ERR_SUCCESS) {
        logSampler("Error getIlluminance\n");
        return err;
    }
    const unsigned visible = ch0 & kValueBits;
    if (visible == kSaturated)
        return saturated();
    if (visible < kDimEnough && range_ == RangeExtended && mode_ == SamplingModeAuto) {
        logSampler("Set range standard\n");
        return switchRange(RangeStandard);
    }
    if (isEmpty(*pAverage_))
        firstSample(lux);
    if (pReject_ != nullptr) {
        push(*pReject_, lux); // a rejected sample stays and counts against later ones
        if (spread(*pReject_) > sCtrlData_.rejectDeltaInLux) {
            logSampler("Sample rejected\n");
            return ERR_SUCCESS;
        }
    }
    return average(lux);
}

eErr sampler::saturated()
{
    if (range_ != RangeExtended && mode_ == SamplingModeAuto) {
        logSampler("Set range extended\n");
        return switchRange(RangeExtended);
    }
    logSampler("Error light sensor saturation\n");
    return ERR_SUCCESS;
}

eErr sampler::switchRange(LightSensorOperationRange wanted)
{
    const eErr err = driver_->setOperatingRange(wanted);
    if (err == ERR_SUCCESS)
        range_ = wanted;
    else
        logSampler("Error setOperatingRange\n");
    return err;
}

void sampler::firstSample(std::uint32_t lux)
{
    logSampler("First sample\n");
    if (pReject_ != nullptr) {
        for (std::uint32_t i = 0; i < pReject_->size; ++i)
            logSampler("pReject->brightnessInLux[%ld]\n", static_cast<long>(i));
        fill(*pReject_, lux);
    }
    for (std::uint32_t i = 0; i < pAverage_->size; ++i)
        logSampler("pAverage->brightnessInLux[%ld]\n", static_cast<long>(i));
    fill(*pAverage_, lux);
    averageLux_ = lux;
    luxSum_ = lux * sCtrlData_.averageWndSize;
}

eErr sampler::average(std::uint32_t lux)
{
    luxSum_ = exchange(*pAverage_, lux, luxSum_);
    if (sCtrlData_.averageWndSize == 0) {
        logSampler("Error sCtrlData.averageWndSize = 0\n");
        return ERR_INVALID_DATA;
    }
    averageLux_ = luxSum_ / sCtrlData_.averageWndSize;
    advanceHead(*pAverage_);
    logSampler("Brightness in Lux: %ld\n", static_cast<long>(averageLux_.load()));
    return ERR_SUCCESS;
}

} // namespace Halvix
