// SPDX-License-Identifier: LicenseRef-HXAux
#include "tests/system/conformance/Checks.h"

#include <ctime>

namespace conformance {

using namespace Halvix;

namespace {

void pauseMs(long milliseconds)
{
    timespec time{milliseconds / 1000, milliseconds % 1000 * 1000000};
    nanosleep(&time, nullptr);
}

std::string averages()
{
    Held sensor{GetLightsensor()};
    unsigned short lux = 0;
    const eErr before = sensor->getAverageIlluminance(&lux);
    const eErr started = sensor->startAverageCalc(2, 0, 50, SamplingModeStandard);
    pauseMs(2500);
    const eErr running = sensor->getAverageIlluminance(&lux);
    const eErr range = sensor->setOperatingRange(RangeStandard);
    const eErr stopped = sensor->stopAverageCalc();
    const eErr after = sensor->getAverageIlluminance(&lux);
    return answer(before) + " " + answer(started) + " " + answer(running) + " " + answer(range) + " " +
           answer(stopped) + " " + answer(after);
}

std::string filter()
{
    Held backlight{GetBacklight()};
    const eErr set = backlight->setAutomaticBLFilter(7, 6, 55, SamplingModeExtended);
    unsigned long average = 0;
    unsigned long reject = 0;
    unsigned long delta = 0;
    LightSensorSamplingMode mode = SamplingModeAuto;
    const eErr got = backlight->getAutomaticBLFilter(&average, &reject, &delta, &mode);
    return answer(set) + " " + answer(got, average, reject, delta, mode);
}

std::string onAndOff()
{
    Held backlight{GetBacklight()};
    unsigned char enabled = 9;
    const eErr start = backlight->startAutomaticBL();
    const eErr on = backlight->getAutomaticBLStatus(&enabled);
    const std::string isOn = answer(on, enabled);
    const eErr stop = backlight->stopAutomaticBL();
    const eErr off = backlight->getAutomaticBLStatus(&enabled);
    return answer(start) + " " + isOn + " " + answer(stop) + " " + answer(off, enabled);
}

std::string softTransitions()
{
    Held backlight{GetBacklight()};
    Held service{GetHXAuxPrivate()};
    (void)service->setFileSetting("ABL_k", "50"); // nothing has been learned yet
    bool soft = false;
    double slope = 0;
    const eErr set = backlight->setAutomaticBLParams(true);
    const eErr got = backlight->getAutomaticBLParams(&soft, &slope);
    return answer(set) + " " + answer(got, soft, slope);
}

} // namespace

Checks light()
{
    return {
        keeps("Backlight.setIntensity 0", GetBacklight, &Backlight::setIntensity, &Backlight::getIntensity, 0),
        keeps("Backlight.setIntensity 255", GetBacklight, &Backlight::setIntensity, &Backlight::getIntensity, 255),
        {"Backlight.getStatus", "0",
         [] {
             Held backlight{GetBacklight()};
             unsigned char status = 0;
             return answer(backlight->getStatus(&status));
         }},
        {"Backlight.setAutomaticBLFilter", "0 0 7 6 55 1", filter},
        {"Backlight.startAutomaticBL", "0 0 1 0 0 0", onAndOff},
        {"Backlight.setAutomaticBLParams", "0 0 1 50.00", softTransitions},
        keeps("Backlight.setLedDimming", GetBacklight, &Backlight::setLedDimming, &Backlight::getLedDimming,
              HXStatusDisabled),
        keeps("Lightsensor.setOperatingRange", GetLightsensor, &Lightsensor::setOperatingRange,
              &Lightsensor::getOperatingRange, RangeStandard),
        sets("Lightsensor.setOperatingRange 2", "9", GetLightsensor, &Lightsensor::setOperatingRange,
             static_cast<LightSensorOperationRange>(2)),
        {"Lightsensor.getIlluminance", "0 measured",
         [] {
             Held sensor{GetLightsensor()};
             unsigned short lux = 0;
             const eErr err = sensor->getIlluminance(&lux);
             return answer(err) + (lux > 0 ? " measured" : " dark");
         }},
        {"Lightsensor.startAverageCalc", "21 0 0 20 0 21", averages},
        sets("Lightsensor.startAverageCalc 0", "8", GetLightsensor, &Lightsensor::startAverageCalc, 0, 5, 50,
             SamplingModeAuto),
    };
}

Checks automaticBacklight()
{
    return {
        {"HXAuxPrivate.automaticBacklightInit", "0 13",
         [] {
             Held service{GetHXAuxPrivate()};
             const eErr first = service->automaticBacklightInit();
             return answer(first) + " " + answer(service->automaticBacklightInit());
         }},
    };
}

} // namespace conformance
