// SPDX-License-Identifier: LicenseRef-HXAux
#pragma once

#include "hx-aux/FrontLED.h"
#include "platform/DeviceChannel.h"
#include "platform/SharedInstance.h"

namespace Halvix {

/// The pattern in the form of the front panel. Times are in units of 10 ms.
struct _TimingType {
    unsigned char onTime;
    unsigned char offTime;
    unsigned char idleTime;
    unsigned char nrOfPulses;
};
static_assert(sizeof(_TimingType) == 4);

class FrontLED_Imp : public FrontLED, public SharedInstance<FrontLED_Imp> {
public:
    virtual ~FrontLED_Imp() = default; // after the interface's slots, so no slot moves

    eErr getSignal(double* frequency, unsigned char* dutyCycle) override;
    eErr getOnTime(unsigned char* onTime) override;
    eErr getOffTime(unsigned char* offTime) override;
    eErr getIdleTime(unsigned char* idleTime) override;
    eErr getNrOfPulses(unsigned char* pulses) override;
    eErr getColor(unsigned char* red, unsigned char* green, unsigned char* blue) override;
    eErr getColor(HXAuxColor* color) override;
    eErr getEnabledDuringStartup(HXStatus* status) override;
    eErr setSignal(double frequency, unsigned char dutyCycle) override;
    eErr setOnTime(unsigned char onTime) override;
    eErr setOffTime(unsigned char offTime) override;
    eErr setIdleTime(unsigned char idleTime) override;
    eErr setNrOfPulses(unsigned char pulses) override;
    eErr setColor(unsigned char red, unsigned char green, unsigned char blue) override;
    eErr setColor(HXAuxColor color) override;
    eErr setOff() override;
    eErr setEnabledDuringStartup(HXStatus status) override;
    eErr Release() override;

    /// 1, 7, 6. The driver writes into `*t`: after a failure it contains whatever arrived.
    eErr getTiming(_TimingType* t);
    /// 1, 7.
    eErr setTiming(_TimingType t);

protected:
    FrontLED_Imp() = default; // created only by getInstance
    friend class SharedInstance<FrontLED_Imp>;

private:
    [[nodiscard]] eErr getPart(unsigned char _TimingType::*part, unsigned char* value);
    [[nodiscard]] eErr setPart(unsigned char _TimingType::*part, unsigned char value);

    DeviceChannel channel_{"/dev/frontled"};
};

} // namespace Halvix
