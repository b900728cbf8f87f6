// SPDX-License-Identifier: LicenseRef-HXAux
#include "simulator/model/LightSensor.h"

#include "simulator/model/Text.h"

#include <algorithm>
#include <cmath>
#include <cstdio>

namespace hxsim {

namespace {

constexpr std::uint8_t kComplete = 0x80;
constexpr double kExtendedFactor = 5;
constexpr double kLuxPerCount = 0.39;
constexpr double kInfraredCorrection = 0.181;
constexpr int kLargestCode = 0x7F;

/// Counts of a seven-bit code, from the converter's principle: each chord begins at the seventeenth step of the
/// previous one, plus half a step, and doubles the step.
double countsOf(int code)
{
    const int chord = code >> 4;
    const int step = code & 15;
    const double stepCounts = std::ldexp(1.0, chord);
    return std::floor(16.5 * (stepCounts - 1)) + stepCounts * step;
}

/// The highest code that the counts reach: the converter truncates.
std::uint8_t codeOf(double counts)
{
    int code = 0;
    while (code < kLargestCode && countsOf(code + 1) <= counts)
        ++code;
    return static_cast<std::uint8_t>(code);
}

double correction(double ratio)
{
    return std::exp(-kInfraredCorrection * ratio * ratio);
}

std::string shown(double value)
{
    std::array<char, 32> text{};
    std::snprintf(text.data(), text.size(), "%.6g", value);
    return text.data();
}

double parseWithin(const std::string& text, double low, double high)
{
    const double value = parseReal(text);
    if (!(value >= low && value <= high))
        throw BadText{"'" + text + "' is not from " + shown(low) + " to " + shown(high)};
    return value;
}

} // namespace

LightSensor::LightSensor(Unit& unit) : clock_{unit.clock()}
{
    Node& node = unit.addNode("/dev/lightsensor");
    node.request(0x80020048, Takes{0}, Gives{2}, [this](Request& request) {
        const Bytes bytes = convert();
        std::copy(bytes.begin(), bytes.end(), request.out.begin());
        if (onRead && (bytes[0] & bytes[1] & kComplete) != 0)
            onRead(lux(), reported(bytes));
        return 0;
    });
    node.request(0x80010049, Takes{0}, Gives{1}, [this](Request& request) {
        request.put8(0, range);
        return 0;
    });
    node.request(0x4001004A, Takes{2}, Gives{0}, [this](Request& request) {
        if (request.u8(1) > 1)
            return -EINVAL;
        if (range != request.u8(1))
            completeAt_ = clock_.now() + std::chrono::milliseconds{conversionMs};
        range = request.u8(1);
        return 0;
    });
    unit.whenSupplyFails([this] { range = 0; });
    describeLight(unit.properties());
    describeReadings(unit.properties());
}

void LightSensor::describeLight(Properties& properties)
{
    properties.add(
        "light", [this] { return shown(lux()); },
        [this](const std::string& text) { setLux(parseWithin(text, 0, 200000)); },
        "light on the sensor in lux; setting it ends a profile");
    properties.add(
        "light.profile", [this] { return std::string{profile_ ? "playing" : ""}; },
        [this](const std::string& text) { play(LightProfile::parse(text)); },
        "light over time from now on: SECONDS LUX; SECONDS LUX; ...");
    properties.add(
        "light.infrared", [this] { return shown(infraredShare); },
        [this](const std::string& text) { infraredShare = parseWithin(text, 0, 0.9); },
        "infrared part of the light, 0 to 0.9");
    properties.add(
        "light.noise", [this] { return shown(noisePercent); },
        [this](const std::string& text) { noisePercent = parseWithin(text, 0, 50); },
        "standard deviation of the readings in percent");
    properties.add(
        "light.seed", [this] { return std::to_string(seed_); },
        [this](const std::string& text) {
            seed_ = static_cast<std::uint32_t>(parseNumber(text, 0, 0xFFFFFFFF));
            random_.seed(seed_);
        },
        "where the noise begins");
}

void LightSensor::describeReadings(Properties& properties)
{
    properties.number("light.range", range, 0, 255, "measuring range: 0 standard, 1 extended");
    properties.number("light.not-ready", notReady, 0, 1000000, "readings to come that are not complete");
    properties.number("light.conversion", conversionMs, 0, 60000,
                      "milliseconds after a change of range until a reading is complete");
    properties.add(
        "light.channels", [this] { return forced ? hexBytes(*forced) : std::string{"light"}; },
        [this](const std::string& text) { force(text); },
        "the two bytes that are read, whatever the light is; 'light' to follow it again");
}

void LightSensor::force(const std::string& channels)
{
    if (channels == "light") {
        forced.reset();
        return;
    }
    const std::vector<std::string> parts = words(channels);
    if (parts.size() != 2)
        throw BadText{"two bytes as '0xc5 0xa3', or 'light'"};
    forced = Bytes{static_cast<std::uint8_t>(parseNumber(parts[0], 0, 255)),
                   static_cast<std::uint8_t>(parseNumber(parts[1], 0, 255))};
}

double LightSensor::lux() const
{
    return profile_ ? profile_->luxAt(clock_.now() - profileStart_) : lux_;
}

void LightSensor::setLux(double lux)
{
    profile_.reset();
    lux_ = lux;
}

void LightSensor::play(LightProfile profile)
{
    profile_ = std::move(profile);
    profileStart_ = clock_.now();
}

bool LightSensor::isComplete()
{
    if (notReady > 0) {
        --notReady;
        return false;
    }
    return clock_.now() >= completeAt_;
}

double LightSensor::noise()
{
    if (noisePercent == 0)
        return 1;
    // The sum of twelve uniform numbers approximates a normal one, and is the same on every machine.
    double sum = -6;
    for (int i = 0; i < 12; ++i)
        sum += static_cast<double>(random_()) / 4294967296.0;
    return std::max(0.0, 1 + sum * noisePercent / 100);
}

LightSensor::Bytes LightSensor::convert()
{
    if (forced)
        return *forced;
    const double seen = lux() * noise() / (range == 1 ? kExtendedFactor : 1);
    const double ratio = infraredShare / (1 - infraredShare);
    const double visible = seen / (kLuxPerCount * correction(ratio));
    const double all = visible / (1 - infraredShare);
    const auto complete = static_cast<std::uint8_t>(isComplete() ? kComplete : 0);
    return {static_cast<std::uint8_t>(complete | codeOf(all)),
            static_cast<std::uint8_t>(complete | codeOf(all * infraredShare))};
}

double LightSensor::reported(const Bytes& bytes) const
{
    const double all = countsOf(bytes[0] & kLargestCode);
    const double infrared = countsOf(bytes[1] & kLargestCode);
    if (all <= infrared)
        return 0;
    const double visible = all - infrared;
    return std::floor(correction(infrared / visible) * visible * kLuxPerCount) * (range == 1 ? kExtendedFactor : 1);
}

HXSIM_HARDWARE(LightSensor)

} // namespace hxsim
