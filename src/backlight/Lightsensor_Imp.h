// SPDX-License-Identifier: LicenseRef-HXAux
#pragma once

#include "hx-aux/Lightsensor.h"
#include "platform/DeviceChannel.h"

#include <memory>

namespace Halvix {

/// All readings go through the driver object; the second handle of the device is only opened and closed again.
///
/// A sampler thread that is still running at `Release` continues. The object and the thread share ownership of what it
/// uses: the last owner closes it.
class Lightsensor_Imp : public Lightsensor {
public:
    Lightsensor_Imp();
    virtual ~Lightsensor_Imp() = default;
    Lightsensor_Imp(const Lightsensor_Imp&) = delete;
    Lightsensor_Imp& operator=(const Lightsensor_Imp&) = delete;

    eErr getIlluminance(unsigned short* lux) override;
    eErr getIlluminance(unsigned short* lux, unsigned char* ch0, unsigned char* ch1) override;
    eErr getAverageIlluminance(unsigned short* lux) override;
    eErr startAverageCalc(unsigned long averageWndSize, unsigned long rejectWndSize, unsigned long rejectDeltaInLux,
                          LightSensorSamplingMode mode) override;
    eErr stopAverageCalc() override;
    eErr getOperatingRange(LightSensorOperationRange* range) override;
    eErr setOperatingRange(LightSensorOperationRange range) override;
    eErr Release() override;

    /// Whether averaging is running in any process, including this one.
    [[nodiscard]] bool isAverageStarted();
    /// Returns the handle, negative when the device cannot be opened.
    int openHWConnection();

private:
    struct Averaging;

    BindableChannel device_;
    std::shared_ptr<Averaging> averaging_;
};

} // namespace Halvix
