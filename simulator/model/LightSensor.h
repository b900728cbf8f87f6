// SPDX-License-Identifier: LicenseRef-HXAux
#pragma once

#include "simulator/model/Hardware.h"
#include "simulator/model/LightProfile.h"

#include <array>
#include <functional>
#include <optional>
#include <random>

namespace hxsim {

/// "/dev/lightsensor": a converter with a channel for all light and one for infrared, each answering one byte of chord
/// and step with bit 7 for a completed conversion.
///
/// The light is a number of lux, or a profile that is played. The extended range sees a fifth of it. Light beyond the
/// converter's top reads as its top. Noise is relative and comes from a seed, so a run can be repeated.
class LightSensor : public Hardware {
public:
    using Bytes = std::array<std::uint8_t, 2>;

    explicit LightSensor(Unit& unit);

    /// The light that falls on the sensor now.
    [[nodiscard]] double lux() const;
    void setLux(double lux);
    /// The profile begins now.
    void play(LightProfile profile);
    /// The result of a conversion now; a new one, with noise, at each call.
    [[nodiscard]] Bytes convert();
    /// Lux that the sensor's data sheet gives for two bytes, in the present range.
    [[nodiscard]] double reported(const Bytes& bytes) const;

    std::uint8_t range = 0;         ///< 0 standard, 1 extended; anything else is a fault of the driver.
    double infraredShare = 0.2;     ///< channel 1 as a part of channel 0
    double noisePercent = 0;        ///< standard deviation of a reading
    int notReady = 0;               ///< number of following readings that are not complete
    std::uint32_t conversionMs = 0; ///< time after a change of range during which readings are not complete
    std::optional<Bytes> forced;    ///< bytes to read instead of the light

    /// Called with every completed conversion that a program reads.
    std::function<void(double luxSet, double luxReported)> onRead;

private:
    void describeLight(Properties& properties);
    void describeReadings(Properties& properties);
    void force(const std::string& channels);
    [[nodiscard]] bool isComplete();
    [[nodiscard]] double noise();

    Clock& clock_;
    double lux_ = 250;
    std::optional<LightProfile> profile_;
    Time profileStart_{0};
    Time completeAt_{0};
    std::uint32_t seed_ = 1;
    std::mt19937 random_{seed_};
};

} // namespace hxsim
