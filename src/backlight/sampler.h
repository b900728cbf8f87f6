// SPDX-License-Identifier: LicenseRef-HXAux
#pragma once

#include "backlight/LightsensorIDrv.h"
#include "backlight/SampleRing.h"
#include "platform/Semaphore.h"

#include <atomic>
#include <cstdint>
#include <memory>

namespace Halvix {

/// Averages the light sensor in a thread of its own, one sample about every 800 ms.
///
/// The caller holds the unit's averaging lock when it starts the sampler; the thread releases it when it ends. A failed
/// start leaves it taken; callers rely on it.
///
/// The private lock guards the fields between the thread and callers. A thread that ends after a sensor fault posts it
/// twice, and it then no longer excludes: fields that callers read while a thread runs are therefore atomic. The rings
/// stay safe, because a new start first needs the averaging lock. A thread keeps the sampler's owner alive until its
/// last step; without an owner the sampler must outlive its thread.
class sampler {
public:
    sampler() = default;
    ~sampler();
    sampler(const sampler&) = delete;
    sampler& operator=(const sampler&) = delete;

    /// Objects that the sampler uses but does not own, and the owner of the sampler and of them.
    void attach(LightsensorIDrv& driver, Semaphore& averagingLock, std::weak_ptr<void> owner = {});

    /// 0, 13 (out of memory), the code of setting the range, or 10 (no thread). A running thread continues with the new
    /// parameters and empty rings.
    [[nodiscard]] eErr startAverageCalc(unsigned long averageWndSize, unsigned long rejectWndSize,
                                        unsigned long rejectDeltaInLux, LightSensorSamplingMode mode);
    eErr stopAverageCalc();
    /// 0, or 21 when no thread runs.
    [[nodiscard]] eErr getAverageIlluminance(unsigned short* lux);

    [[nodiscard]] bool initSampler() HX_REQUIRES(lock_);
    bool deInitSampler() HX_REQUIRES(lock_);
    [[nodiscard]] eErr initRange() HX_REQUIRES(lock_);
    static void threadProc(const void* itself);
    void exec();
    /// One reading, with the private lock held. 0 to continue, anything else ends the thread.
    [[nodiscard]] eErr lightSensorSample() HX_REQUIRES(lock_);

private:
    struct CtrlData {
        std::uint32_t averageWndSize = 0;
        std::uint32_t rejectWndSize = 0;
        std::uint32_t rejectDeltaInLux = 0;
    };

    [[nodiscard]] eErr startThread();
    void waitForNextSample() const;
    void releaseAveragingLock() const;
    [[nodiscard]] eErr saturated() HX_REQUIRES(lock_);
    [[nodiscard]] eErr switchRange(LightSensorOperationRange wanted) HX_REQUIRES(lock_);
    void firstSample(std::uint32_t lux) HX_REQUIRES(lock_);
    [[nodiscard]] eErr average(std::uint32_t lux) HX_REQUIRES(lock_);

    LightsensorIDrv* driver_ = nullptr;
    Semaphore* averagingLock_ = nullptr;
    LightSensorSamplingMode mode_ HX_GUARDED_BY(lock_) = SamplingModeStandard;
    LightSensorOperationRange range_ HX_GUARDED_BY(lock_) = RangeStandard;
    SampleRing* pReject_ HX_GUARDED_BY(lock_) = nullptr;
    SampleRing* pAverage_ HX_GUARDED_BY(lock_) = nullptr;
    std::uint32_t luxSum_ HX_GUARDED_BY(lock_) = 0;
    CtrlData sCtrlData_ HX_GUARDED_BY(lock_);
    std::atomic<std::uint32_t> averageLux_{0};
    std::atomic<bool> running_{false};
    std::atomic<bool> ending_{false}; ///< the thread takes no more samples; its unit lock may already be free
    std::atomic<bool> stop_{false};
    Semaphore lock_{nullptr};
    std::weak_ptr<void> owner_;
    std::shared_ptr<void> ownerOfThread_; ///< passed from a start to its thread
};

} // namespace Halvix
