// SPDX-License-Identifier: LicenseRef-HXAux
#include "backlight/sampler.h"

#include "backlight/Log.h"

#include <utility>

namespace Halvix {

namespace {

constexpr unsigned kValueBits = 0x7F;
constexpr unsigned kSaturated = 127; // top of the converter
constexpr unsigned kDimEnough = 85;  // below it the standard range is sufficient; the gap is the hysteresis
constexpr int kPauses = 80;
constexpr unsigned long kPauseMs = 10;
constexpr unsigned long kEndOfThreadMs = 1;

} // namespace

sampler::~sampler()
{
    deInitSampler();
}

void sampler::attach(LightsensorIDrv& driver, Semaphore& averagingLock, std::weak_ptr<void> owner)
{
    driver_ = &driver;
    averagingLock_ = &averagingLock;
    owner_ = std::move(owner);
}

eErr sampler::startAverageCalc(unsigned long averageWndSize, unsigned long rejectWndSize,
                               unsigned long rejectDeltaInLux, LightSensorSamplingMode mode)
{
    lock_.acquire();
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
    lock_.post();
    if (result != ERR_SUCCESS)
        return result; // the averaging lock stays taken after a failure; callers rely on it
    // A thread that has already released the averaging lock takes no more samples and ends shortly.
    while (running_ && ending_)
        LinuxWrapper::Sleep(kEndOfThreadMs);
    return running_ ? ERR_SUCCESS : startThread();
}

eErr sampler::startThread()
{
    logSampler("startThread\n");
    stop_ = false;
    ending_ = false;
    ownerOfThread_ = owner_.lock();
    const eErr result = LinuxWrapper::startThread(threadProc, this);
    if (result != ERR_SUCCESS)
        ownerOfThread_.reset();
    return result;
}

eErr sampler::stopAverageCalc()
{
    lock_.acquire();
    stop_ = true;
    lock_.post();
    return ERR_SUCCESS;
}

eErr sampler::getAverageIlluminance(unsigned short* lux)
{
    lock_.acquire();
    const bool running = running_;
    if (running)
        *lux = static_cast<unsigned short>(averageLux_);
    lock_.post();
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
    const std::shared_ptr<void> owner = std::move(ownerOfThread_); // released last: it may destroy this object
    logSampler("Thread started.\n");
    running_ = true;
    for (;;) {
        waitForNextSample();
        lock_.acquire();
        const bool stopped = stop_;
        const eErr err = stopped ? ERR_SUCCESS : lightSensorSample();
        lock_.post();
        if (err != ERR_SUCCESS)
            lock_.signal(); // a second time: callers rely on the count of 2
        if (stopped || err != ERR_SUCCESS)
            break;
    }
    ending_ = true;
    releaseAveragingLock();
    running_ = false; // from now on another thread may be started
    logSampler("Exit Loop\n");
}

// Acquired by the caller that started the thread.
void sampler::releaseAveragingLock() const HX_UNCHECKED_LOCKING
{
    averagingLock_->post();
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
