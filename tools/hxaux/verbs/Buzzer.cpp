// SPDX-License-Identifier: LicenseRef-HXAux
#include "hx-aux/Buzzer.h"

#include "tools/hxaux/Call.h"
#include "tools/hxaux/CaughtSignals.h"
#include "tools/hxaux/Interface.h"
#include "tools/hxaux/Objects.h"

namespace hxaux {

namespace {

using Halvix::Buzzer;
using Halvix::eErr;

template <eErr (Buzzer::*Get)(unsigned short*)>
eErr showNumber(Call& call, Buzzer& buzzer, const char* name, const char* unit)
{
    unsigned short value = 0;
    const eErr err = (buzzer.*Get)(&value);
    if (err == Halvix::ERR_SUCCESS)
        call.print(name, value, unit);
    return err;
}

eErr showSounding(Call& call, Buzzer& buzzer)
{
    bool on = false;
    const eErr err = buzzer.getTrigger(&on);
    if (err == Halvix::ERR_SUCCESS)
        call.print("sounding", on);
    return err;
}

void showBuzzer(Call& call)
{
    const Interface<Buzzer> buzzer(GetBuzzer());
    (void)call.attempt("frequency", showNumber<&Buzzer::getFrequency>(call, *buzzer, "frequency", "Hz"));
    (void)call.attempt("volume", showNumber<&Buzzer::getVolume>(call, *buzzer, "volume", ""));
    (void)call.attempt("sounding", showSounding(call, *buzzer));
}

void frequency(Call& call)
{
    const Interface<Buzzer> buzzer(GetBuzzer());
    call.check(call.has("hertz") ? buzzer->setFrequency(call.as<unsigned short>("hertz"))
                                 : showNumber<&Buzzer::getFrequency>(call, *buzzer, "frequency", "Hz"));
}

void volume(Call& call)
{
    const Interface<Buzzer> buzzer(GetBuzzer());
    call.check(call.has("steps") ? buzzer->setVolume(call.as<unsigned short>("steps"))
                                 : showNumber<&Buzzer::getVolume>(call, *buzzer, "volume", ""));
}

void switchBuzzerOn(Call& call)
{
    const Interface<Buzzer> buzzer(GetBuzzer());
    call.check(buzzer->setTrigger(true));
}

void switchBuzzerOff(Call& call)
{
    const Interface<Buzzer> buzzer(GetBuzzer());
    call.check(buzzer->setTrigger(false));
}

void beep(Call& call)
{
    const CaughtSignals signals; // a signal shortens the beep; it must not end the tool while the buzzer sounds
    const Interface<Buzzer> buzzer(GetBuzzer());
    const eErr err = buzzer->buzze(call.as<int>("time"), true);
    if (signals.any() && err != Halvix::ERR_IN_PROGRESS)
        (void)buzzer->setTrigger(false); // in case the signal came between the library's two switches
    call.check(err);
}

} // namespace

const Object objects::Buzzer{
    "buzzer",
    "tone, volume and beeps of the panel's buzzer",
    {
        {.name = "",
         .help = "Shows frequency, volume and whether it sounds.",
         .example = "hxaux buzzer",
         .run = showBuzzer,
         .repeat = Repeat::Watch},
        {.name = "frequency",
         .help = "Shows or sets the frequency of the tone.",
         .example = "hxaux buzzer frequency 2000",
         .run = frequency,
         .values = {integer("hertz", 700, 10000, "Hz", "shown when left out").optional()}},
        {.name = "volume",
         .help = "Shows or sets the volume of the tone.",
         .example = "hxaux buzzer volume 20",
         .run = volume,
         .values = {integer("steps", 0, 51, "", "shown when left out").optional()}},
        {.name = "on",
         .help = "Switches the buzzer on until it is switched off.",
         .example = "hxaux buzzer on",
         .run = switchBuzzerOn},
        {.name = "off", .help = "Switches the buzzer off.", .example = "hxaux buzzer off", .run = switchBuzzerOff},
        {.name = "beep",
         .help = "Sounds for a time and returns when it is over.",
         .example = "hxaux buzzer beep 200",
         .run = beep,
         .values = {integer("time", 0, 3600000, "ms", "how long")},
         .details = "One beep at a time sounds on the unit: while another program's beep sounds the status is 5. A "
                    "signal ends the beep early and leaves nothing sounding."},
    }};

} // namespace hxaux
