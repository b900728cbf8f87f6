// SPDX-License-Identifier: LicenseRef-HXAux
#pragma once

#include "backlight/BacklightIDrv.h"
#include "hx-aux/Backlight.h"
#include "platform/Semaphore.h"
#include "platform/SharedInstance.h"

namespace Halvix {

/// The settings of the automatic backlight are in the file; this class keeps no copy. A setter writes its keys,
/// releases the file and then notifies the controller, so that the controller never waits for this process.
class Backlight_Imp : public Backlight, public SharedInstance<Backlight_Imp> {
public:
    Backlight_Imp() = default;
    virtual ~Backlight_Imp() = default;
    Backlight_Imp(const Backlight_Imp&) = delete;
    Backlight_Imp& operator=(const Backlight_Imp&) = delete;

    eErr getIntensity(unsigned char* level) override { return driver_.getIntensity(level); }
    eErr setIntensity(unsigned char level) override { return driver_.setIntensity(level); }
    eErr getStatus(unsigned char* status) override { return driver_.getStatus(status); }
    eErr startAutomaticBL() override;
    eErr stopAutomaticBL() override;
    eErr getAutomaticBLStatus(unsigned char* enabled) override;
    eErr setAutomaticBLParams(bool softTransitions) override;
    eErr getAutomaticBLParams(bool* softTransitions, double* k) override;
    eErr setAutomaticBLFilter(unsigned long averageWndSize, unsigned long rejectWndSize, unsigned long rejectDeltaInLux,
                              LightSensorSamplingMode mode) override;
    eErr getAutomaticBLFilter(unsigned long* averageWndSize, unsigned long* rejectWndSize,
                              unsigned long* rejectDeltaInLux, LightSensorSamplingMode* mode) override;
    eErr getLedDimming(HXStatus* status) override;
    eErr setLedDimming(HXStatus status) override;
    eErr Release() override;

private:
    eErr setAndNotify(const char* key, const char* value);

    BacklightIDrv driver_;
    Semaphore newSettings_{"Global\\HXAUX_BACKLIGHT_NEW_SETTINGS_TO_READ"};
};

} // namespace Halvix
