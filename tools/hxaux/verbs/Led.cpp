// SPDX-License-Identifier: LicenseRef-HXAux
#include "hx-aux/FrontLED.h"
#include "tools/hxaux/Call.h"
#include "tools/hxaux/Interface.h"
#include "tools/hxaux/Objects.h"

#include <cmath>

namespace hxaux {

namespace {

using Halvix::eErr;
using Halvix::FrontLED;
using Halvix::HXAuxColor;

const Names kColors = namesOf<HXAuxColor>({{Halvix::ColorRed, "red"},
                                           {Halvix::ColorGreen, "green"},
                                           {Halvix::ColorBlue, "blue"},
                                           {Halvix::ColorCyan, "cyan"},
                                           {Halvix::ColorMagenta, "magenta"},
                                           {Halvix::ColorOrange, "orange"}});

constexpr int kTimeUnit = 10; // milliseconds

eErr showColor(Call& call, FrontLED& led)
{
    auto color = Halvix::ColorOther;
    const eErr err = led.getColor(&color);
    if (err == Halvix::ERR_SUCCESS)
        call.print("color", color == Halvix::ColorOther ? Value("other") : Value(kColors.nameOf(color)));
    return err;
}

eErr showRgb(Call& call, FrontLED& led)
{
    unsigned char red = 0;
    unsigned char green = 0;
    unsigned char blue = 0;
    const eErr err = led.getColor(&red, &green, &blue);
    if (err == Halvix::ERR_SUCCESS)
        call.print("rgb", Value::Record{{"red", red}, {"green", green}, {"blue", blue}});
    return err;
}

eErr showSignal(Call& call, FrontLED& led)
{
    double hertz = 0;
    unsigned char dutyCycle = 0;
    const eErr err = led.getSignal(&hertz, &dutyCycle);
    if (err != Halvix::ERR_SUCCESS)
        return err;
    call.print("frequency", std::isfinite(hertz) ? Value(hertz, 3) : Value(Absent{}), std::isfinite(hertz) ? "Hz" : "");
    call.print("duty", dutyCycle, "%");
    return err;
}

template <eErr (FrontLED::*Get)(unsigned char*)>
eErr showTime(Call& call, FrontLED& led, const char* name)
{
    unsigned char units = 0;
    const eErr err = (led.*Get)(&units);
    if (err == Halvix::ERR_SUCCESS)
        call.print(name, units * kTimeUnit, "ms");
    return err;
}

eErr showPulses(Call& call, FrontLED& led)
{
    unsigned char pulses = 0;
    const eErr err = led.getNrOfPulses(&pulses);
    if (err == Halvix::ERR_SUCCESS)
        call.print("pulses", pulses);
    return err;
}

eErr showStartup(Call& call, FrontLED& led)
{
    auto status = Halvix::HXStatusDisabled;
    const eErr err = led.getEnabledDuringStartup(&status);
    if (err == Halvix::ERR_SUCCESS)
        call.print("startup", status == Halvix::HXStatusEnabled);
    return err;
}

void showLed(Call& call)
{
    const Interface<FrontLED> led(GetFrontLED());
    (void)call.attempt("color", showColor(call, *led));
    (void)call.attempt("rgb", showRgb(call, *led));
    (void)call.attempt("signal", showSignal(call, *led));
    (void)call.attempt("on-time", showTime<&FrontLED::getOnTime>(call, *led, "on-time"));
    (void)call.attempt("off-time", showTime<&FrontLED::getOffTime>(call, *led, "off-time"));
    (void)call.attempt("idle-time", showTime<&FrontLED::getIdleTime>(call, *led, "idle-time"));
    (void)call.attempt("pulses", showPulses(call, *led));
    (void)call.attempt("startup", showStartup(call, *led));
}

void color(Call& call)
{
    const Interface<FrontLED> led(GetFrontLED());
    call.check(call.has("name") ? led->setColor(call.as<HXAuxColor>("name")) : showColor(call, *led));
}

void rgb(Call& call)
{
    const Interface<FrontLED> led(GetFrontLED());
    if (!call.has("red"))
        return call.check(showRgb(call, *led));
    if (!call.has("blue"))
        call.fail(Exit::Usage, "missing argument: RED GREEN BLUE are set together");
    call.check(
        led->setColor(call.as<unsigned char>("red"), call.as<unsigned char>("green"), call.as<unsigned char>("blue")));
}

void signal(Call& call)
{
    const Interface<FrontLED> led(GetFrontLED());
    if (!call.has("frequency"))
        return call.check(showSignal(call, *led));
    if (!call.has("duty"))
        call.fail(Exit::Usage, "missing argument: FREQUENCY DUTY are set together");
    call.check(led->setSignal(call.real("frequency"), call.as<unsigned char>("duty")));
    if (call.real("frequency") < 100.0 / 255)
        call.note("a period above 2.55 s loses its high bits: 'hxaux led signal' shows the resulting pattern");
}

template <eErr (FrontLED::*Get)(unsigned char*), eErr (FrontLED::*Set)(unsigned char)>
void time(Call& call)
{
    const Interface<FrontLED> led(GetFrontLED());
    if (!call.has("time"))
        return call.check(showTime<Get>(call, *led, "time"));
    if (call.integer("time") % kTimeUnit != 0)
        call.fail(Exit::Usage, "time: " + call.text("time") + " is not a multiple of 10 ms");
    call.check(((*led).*Set)(static_cast<unsigned char>(call.integer("time") / kTimeUnit)));
}

void pulses(Call& call)
{
    const Interface<FrontLED> led(GetFrontLED());
    call.check(call.has("number") ? led->setNrOfPulses(call.as<unsigned char>("number")) : showPulses(call, *led));
}

void startup(Call& call)
{
    const Interface<FrontLED> led(GetFrontLED());
    call.check(call.has("state") ? led->setEnabledDuringStartup(call.as<Halvix::HXStatus>("state"))
                                 : showStartup(call, *led));
}

void switchLedOff(Call& call)
{
    const Interface<FrontLED> led(GetFrontLED());
    call.check(led->setOff());
}

Argument component(std::string_view name)
{
    return integer(name, 0, 15, "", "0 to 15; the color is shown when all are left out").optional();
}

Argument timeArgument()
{
    return integer("time", 0, 2550, "ms", "a multiple of 10; shown when left out").optional();
}

} // namespace

const Object objects::Led{
    "led",
    "color and blink pattern of the status LED",
    {
        {.name = "",
         .help = "Shows color and pattern.",
         .example = "hxaux led",
         .run = showLed,
         .repeat = Repeat::Watch},
        {.name = "color",
         .help = "Shows or sets the color by its name.",
         .example = "hxaux led color orange",
         .run = color,
         .values = {choice("name", kColors, "shown when left out").optional()},
         .details = "A color that has no name is shown as 'other'; 'hxaux led rgb' shows its components."},
        {.name = "rgb",
         .help = "Shows or sets the color by its components.",
         .example = "hxaux led rgb 12 0 4",
         .run = rgb,
         .values = {component("red"), component("green"), component("blue")}},
        {.name = "signal",
         .help = "Shows or sets the blinking by frequency and duty cycle.",
         .example = "hxaux led signal 2 25",
         .run = signal,
         .values = {real("frequency", 0.2, 50, "Hz", "shown when left out").optional(),
                    integer("duty", 0, 100, "%", "part of the time that the LED is on").optional()},
         .details = "Times are cut down to units of 10 ms; a period above 2.55 s comes out shorter."},
        {.name = "on-time",
         .help = "Shows or sets how long the LED is on in each pulse.",
         .example = "hxaux led on-time 500",
         .run = time<&FrontLED::getOnTime, &FrontLED::setOnTime>,
         .values = {timeArgument()}},
        {.name = "off-time",
         .help = "Shows or sets how long the LED is off after each pulse.",
         .example = "hxaux led off-time 500",
         .run = time<&FrontLED::getOffTime, &FrontLED::setOffTime>,
         .values = {timeArgument()}},
        {.name = "idle-time",
         .help = "Shows or sets how long the LED rests after the pulses.",
         .example = "hxaux led idle-time 1000",
         .run = time<&FrontLED::getIdleTime, &FrontLED::setIdleTime>,
         .values = {timeArgument()}},
        {.name = "pulses",
         .help = "Shows or sets how many pulses come before the rest.",
         .example = "hxaux led pulses 3",
         .run = pulses,
         .values = {integer("number", 0, 255, "", "shown when left out").optional()}},
        {.name = "off",
         .help = "Switches the LED off; color and the rest of the pattern stay.",
         .example = "hxaux led off",
         .run = switchLedOff},
        {.name = "startup",
         .help = "Shows or sets whether the LED shows its pattern while the unit starts.",
         .example = "hxaux led startup on",
         .run = startup,
         .values = {choice("state", kOnOff, "shown when left out").optional()}},
    }};

} // namespace hxaux
