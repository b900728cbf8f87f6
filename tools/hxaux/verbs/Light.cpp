// SPDX-License-Identifier: LicenseRef-HXAux
#include "hx-aux/Backlight.h"
#include "hx-aux/Lightsensor.h"
#include "tools/hxaux/Call.h"
#include "tools/hxaux/Interface.h"
#include "tools/hxaux/Objects.h"
#include "tools/hxaux/SamplingModes.h"
#include "tools/hxaux/Signals.h"

#include <algorithm>
#include <cmath>
#include <thread>

namespace hxaux {

namespace {

using namespace std::chrono_literals;
using Halvix::Lightsensor;

const Names kRanges = namesOf<Halvix::LightSensorOperationRange>(
    {{Halvix::RangeStandard, "standard"}, {Halvix::RangeExtended, "extended"}});

// The averaging parameters: those of the automatic backlight, or their defaults.
struct Filter {
    unsigned long average = 5;
    unsigned long reject = 5;
    unsigned long spread = 50;
    Halvix::LightSensorSamplingMode mode = Halvix::SamplingModeAuto;
};

Filter storedFilter()
{
    const Interface<Halvix::Backlight> backlight(GetBacklight());
    Filter stored;
    const auto code = backlight->getAutomaticBLFilter(&stored.average, &stored.reject, &stored.spread, &stored.mode);
    return code == Halvix::ERR_SUCCESS && stored.average != 0 && stored.spread != 0 ? stored : Filter{};
}

// Averages during its lifetime. It must be destroyed: no other program releases the averaging after a crash.
class Averaging {
public:
    explicit Averaging(Call& call) : sensor_(GetLightsensor())
    {
        const Filter filter = storedFilter();
        call.check(sensor_->startAverageCalc(filter.average, filter.reject, filter.spread, filter.mode));
        held_.beforeTheEnd([this] { sensor_->stopAverageCalc(); });
        waitForFirstSample();
    }
    ~Averaging()
    {
        held_.beforeTheEnd({});
        sensor_->stopAverageCalc();
    }
    Averaging(const Averaging&) = delete;
    Averaging& operator=(const Averaging&) = delete;

    Lightsensor& sensor() { return *sensor_; }

private:
    // It comes after 800 ms, later on a busy machine. Until then the average is 0, as it stays in the dark.
    void waitForFirstSample()
    {
        unsigned short average = 0;
        unsigned short lux = 1;
        for (int tries = 0; tries < 60 && average == 0; ++tries) {
            std::this_thread::sleep_for(100ms);
            (void)sensor_->getAverageIlluminance(&average);
            if (tries > 20 && sensor_->getIlluminance(&lux) == Halvix::ERR_SUCCESS && lux == 0)
                return;
        }
    }

    HeldSignals held_;
    Interface<Lightsensor> sensor_;
};

void readAverage(Call& call)
{
    unsigned short lux = 0;
    call.check(call.kept<Averaging>().sensor().getAverageIlluminance(&lux));
    call.print("average", lux, "lux");
}

// The automatic backlight begins with it.
constexpr double kDefaultSlope = 50;

// The level now, and the one that the stored slope gives for this light.
void readLevels(Call& call, unsigned short lux)
{
    const Interface<Halvix::Backlight> backlight(GetBacklight());
    unsigned char level = 0;
    if (call.attempt("level", backlight->getIntensity(&level)))
        call.print("level", level);
    bool soft = false;
    double slope = 0;
    if (backlight->getAutomaticBLParams(&soft, &slope) != Halvix::ERR_SUCCESS)
        slope = kDefaultSlope; // nothing is learned yet
    const double curve = slope * std::log(std::max<double>(lux, 2)) - 10;
    call.print("level by slope", static_cast<int>(std::clamp(curve, 0.0, 254.0)));
}

// Retries while the conversion is not complete: it takes up to 800 ms.
Halvix::eErr measure(Lightsensor& sensor, unsigned short& lux, unsigned char& channel0, unsigned char& channel1)
{
    for (int tries = 0; tries < 20; ++tries) {
        const Halvix::eErr code = sensor.getIlluminance(&lux, &channel0, &channel1);
        if (code != Halvix::ERR_INVALID_DATA)
            return code;
        std::this_thread::sleep_for(50ms);
    }
    return Halvix::ERR_INVALID_DATA;
}

void readLight(Call& call)
{
    const HeldSignals held;
    const Interface<Lightsensor> sensor(GetLightsensor());
    unsigned short lux = 0;
    unsigned char channel0 = 0;
    unsigned char channel1 = 0;
    call.check(measure(*sensor, lux, channel0, channel1));
    call.print("light", lux, "lux");
    if (call.has("average"))
        readAverage(call);
    auto range = Halvix::RangeStandard;
    if (call.attempt("range", sensor->getOperatingRange(&range)))
        call.print("range", kRanges.nameOf(range));
    call.print("channel 0", channel0);
    call.print("channel 1", channel1);
    if (call.has("watch") || call.has("every") || call.has("count"))
        readLevels(call, lux);
}

void range(Call& call)
{
    const HeldSignals held;
    const Interface<Lightsensor> sensor(GetLightsensor());
    if (call.has("range"))
        return call.check(sensor->setOperatingRange(call.as<Halvix::LightSensorOperationRange>("range")));
    auto now = Halvix::RangeStandard;
    call.check(sensor->getOperatingRange(&now));
    call.print("range", kRanges.nameOf(now));
}

} // namespace

const Object objects::Light{
    "light",
    "the ambient light sensor",
    {
        {.name = "",
         .help = "Measures the light, with the bytes of the sensor's two channels.",
         .example = "hxaux light --watch",
         .run = readLight,
         .options = {flag("average", "averages as the automatic backlight does; only one program of the unit can")},
         .repeat = Repeat::Watch,
         .details = "With --watch also the backlight's level, and the level that the stored slope gives for this "
                    "light."},
        {.name = "range",
         .help = "Shows the measuring range, or sets it.",
         .example = "hxaux light range extended",
         .run = range,
         .values = {choice("range", kRanges, "the new range").optional()},
         .details = "It cannot be set while a program averages the light."},
    }};

} // namespace hxaux
