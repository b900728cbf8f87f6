// SPDX-License-Identifier: LicenseRef-HXAux
#include "tests/system/conformance/Checks.h"

namespace conformance {

using namespace Halvix;

namespace {

using SetRgb = eErr (FrontLED::*)(unsigned char, unsigned char, unsigned char);
using GetRgb = eErr (FrontLED::*)(unsigned char*, unsigned char*, unsigned char*);
using SetNamed = eErr (FrontLED::*)(HXAuxColor);
using GetNamed = eErr (FrontLED::*)(HXAuxColor*);

std::string signal()
{
    Held led{GetFrontLED()};
    const eErr set = led->setSignal(2.0, 50);
    double hertz = 0;
    unsigned char duty = 0;
    const eErr got = led->getSignal(&hertz, &duty);
    return answer(set) + " " + answer(got, hertz, duty);
}

std::string beep()
{
    Held buzzer{GetBuzzer()};
    bool on = true;
    const eErr sounded = buzzer->buzze(30, true);
    const eErr queried = buzzer->getTrigger(&on);
    return answer(sounded) + " " + answer(queried, on);
}

} // namespace

Checks signals()
{
    return {
        {"FrontLED.setSignal", "0 0 2.00 50", signal},
        keeps("FrontLED.setOnTime", GetFrontLED, &FrontLED::setOnTime, &FrontLED::getOnTime, 20),
        keeps("FrontLED.setOffTime", GetFrontLED, &FrontLED::setOffTime, &FrontLED::getOffTime, 30),
        keeps("FrontLED.setIdleTime", GetFrontLED, &FrontLED::setIdleTime, &FrontLED::getIdleTime, 40),
        keeps("FrontLED.setNrOfPulses", GetFrontLED, &FrontLED::setNrOfPulses, &FrontLED::getNrOfPulses, 3),
        keeps("FrontLED.setColor rgb", GetFrontLED, SetRgb{&FrontLED::setColor}, GetRgb{&FrontLED::getColor}, 1, 2, 3),
        sets("FrontLED.setColor 16", "9", GetFrontLED, SetRgb{&FrontLED::setColor}, 16, 0, 0),
        keeps("FrontLED.setColor named", GetFrontLED, SetNamed{&FrontLED::setColor}, GetNamed{&FrontLED::getColor},
              ColorMagenta),
        keeps("FrontLED.setEnabledDuringStartup", GetFrontLED, &FrontLED::setEnabledDuringStartup,
              &FrontLED::getEnabledDuringStartup, HXStatusEnabled),
        sets("FrontLED.setOff", "0", GetFrontLED, &FrontLED::setOff),
        keeps("Buzzer.setFrequency", GetBuzzer, &Buzzer::setFrequency, &Buzzer::getFrequency, 1200),
        sets("Buzzer.setFrequency 699", "9", GetBuzzer, &Buzzer::setFrequency, 699),
        keeps("Buzzer.setVolume", GetBuzzer, &Buzzer::setVolume, &Buzzer::getVolume, 40),
        sets("Buzzer.setTrigger", "0", GetBuzzer, &Buzzer::setTrigger, false),
        {"Buzzer.buzze", "0 0 0", beep},
    };
}

} // namespace conformance
