// SPDX-License-Identifier: LicenseRef-HXAux
#pragma once

#include "backlight/Illuminance.h"
#include "testing/Released.h"
#include "testing/SimulatedUnit.h"

#include <optional>
#include <string>

/// Names in the journal.
inline const std::string kBacklightDevice = "/dev/backlight";
inline const std::string kSensorDevice = "/dev/lightsensor";
inline const std::string kNewSettings = "/Global\\HXAUX_BACKLIGHT_NEW_SETTINGS_TO_READ";
inline const std::string kAveragingLock = "/HXAUX_LIGHT_SENSOR_AVERAGE_LOCKED";
inline const std::string kFileLock = "/FILE_HXAUXINI_IS_IN_USE";

inline void putChannels(SimulatedUnit& unit, unsigned ch0, unsigned ch1)
{
    unit.set("light.channels", std::to_string(ch0) + " " + std::to_string(ch1));
}

/// Two bytes that read as exactly this many lux in the standard range; channel 0 stays below the converter's maximum.
inline std::optional<Halvix::_ValueType> readingOf(unsigned lux)
{
    for (unsigned ch0 = 0x80; ch0 < 0xFF; ++ch0)
        for (unsigned ch1 = 0x80; ch1 < 0xFF; ++ch1) {
            unsigned short read = 0;
            const Halvix::_ValueType bytes{static_cast<unsigned char>(ch0), static_cast<unsigned char>(ch1)};
            if (measureToLux(&read, bytes) == Halvix::ERR_SUCCESS && read == lux)
                return bytes;
        }
    return std::nullopt;
}

inline bool canShine(unsigned lux)
{
    return readingOf(lux).has_value();
}

inline void shine(SimulatedUnit& unit, unsigned lux)
{
    const std::optional<Halvix::_ValueType> bytes = readingOf(lux);
    ASSERT_TRUE(bytes) << "no reading gives " << lux << " lux";
    putChannels(unit, bytes->channel0, bytes->channel1);
}
