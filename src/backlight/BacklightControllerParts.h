// SPDX-License-Identifier: LicenseRef-HXAux
#pragma once

#include "backlight/BacklightController.h"
#include "backlight/BacklightIDrv.h"
#include "platform/Semaphore.h"

#include <cstdint>

namespace Halvix {

/// The contents of the settings file, with the defaults of missing settings.
struct AblSettings {
    bool bSoftTransitions = true;
    std::uint8_t maxIntensity = 255;
    double k = 50.0;
    bool enabled = false;
    std::uint32_t rejectWndSize = 5;
    std::uint32_t averageWndSize = 5;
    std::uint32_t rejectDeltaInLux = 50;
    LightSensorSamplingMode mode = SamplingModeAuto;
};

/// Shared by the controller and its thread. Written before the thread starts, then only by the thread.
struct BacklightController::Parts {
    Parts() = default;
    ~Parts()
    {
        if (lightSensor != nullptr)
            lightSensor->Release();
    }
    Parts(const Parts&) = delete;
    Parts& operator=(const Parts&) = delete;

    Lightsensor* lightSensor = nullptr;
    BacklightIDrv driver;
    AblSettings settings;
    Semaphore started{nullptr}; ///< Acquired by the one `init` that succeeds.
    Semaphore newSettings{"Global\\HXAUX_BACKLIGHT_NEW_SETTINGS_TO_READ"};
};

} // namespace Halvix
