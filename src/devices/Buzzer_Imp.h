// SPDX-License-Identifier: LicenseRef-HXAux
#pragma once

#include "hx-aux/Buzzer.h"
#include "platform/DeviceChannel.h"
#include "platform/Semaphore.h"

#include <atomic>

namespace Halvix {

/// Tone and volume in the form of the driver.
struct _SetupType {
    unsigned short frequency; ///< hertz
    unsigned short volume;    ///< 0 to 51
};
static_assert(sizeof(_SetupType) == 4);

/// A beep without blocking runs on a thread that uses the object after `buzze` has returned, and possibly after
/// `Release`: the last user closes and deletes it.
class Buzzer_Imp : public Buzzer {
public:
    virtual ~Buzzer_Imp() = default; // after the interface's slots, so no slot moves

    eErr getFrequency(unsigned short* hertz) override;
    eErr getVolume(unsigned short* volume) override;
    eErr getTrigger(bool* on) override;
    eErr setFrequency(unsigned short hertz) override;
    eErr setVolume(unsigned short volume) override;
    eErr setTrigger(bool on) override;
    eErr buzze(int time, bool blocking) override;
    eErr Release() override;

    /// 1, 7, 6. The driver writes into `*s`: after a failure it contains whatever arrived.
    eErr getSetup(_SetupType* s);
    /// 1, 7.
    eErr setSetup(_SetupType s);

private:
    [[nodiscard]] eErr beep(int time);
    static void soundPendingBeep(const void* buzzer);

    void leave();

    std::atomic<int> users_{1}; ///< the caller, and the thread of a beep
    Semaphore oneBeep_{"HXAUX_BUZZING_IN_PROGRESS"};
    int pendingTime_ HX_GUARDED_BY(oneBeep_) = 0; ///< duration in milliseconds of the beep in the background
    DeviceChannel channel_{"/dev/buzzer"};        // after the semaphore: opened second, closed first
};

} // namespace Halvix
