// SPDX-License-Identifier: LicenseRef-HXAux
#include "hx-aux/Backlight.h"

#include "tools/hxaux/Call.h"
#include "tools/hxaux/Interface.h"
#include "tools/hxaux/Objects.h"
#include "tools/hxaux/SamplingModes.h"
#include "tools/hxaux/Serve.h"
#include "tools/hxaux/Signals.h"

namespace hxaux {

namespace {

using Halvix::Backlight;

const Names kTransitions = namesOf<int>({{0, "at-once"}, {1, "soft"}});

void readLevel(Call& call)
{
    const Interface<Backlight> backlight(GetBacklight());
    unsigned char level = 0;
    call.check(backlight->getIntensity(&level));
    call.print("level", level);
}

void setLevel(Call& call)
{
    const Interface<Backlight> backlight(GetBacklight());
    call.check(backlight->setIntensity(call.as<unsigned char>("level")));
}

void readStatus(Call& call)
{
    const Interface<Backlight> backlight(GetBacklight());
    unsigned char status = 0;
    call.check(backlight->getStatus(&status));
    call.print("status", status);
}

void switchOn(Call& call)
{
    const HeldSignals held;
    const Interface<Backlight> backlight(GetBacklight());
    call.check(backlight->startAutomaticBL());
}

void switchOff(Call& call)
{
    const HeldSignals held;
    const Interface<Backlight> backlight(GetBacklight());
    call.check(backlight->stopAutomaticBL());
}

void readAutomatic(Call& call)
{
    const HeldSignals held;
    const Interface<Backlight> backlight(GetBacklight());
    unsigned char enabled = 0;
    if (call.attempt("automatic", backlight->getAutomaticBLStatus(&enabled)))
        call.print("automatic", enabled != 0);
}

void filter(Call& call)
{
    const HeldSignals held;
    const Interface<Backlight> backlight(GetBacklight());
    if (call.has("average")) {
        if (!call.has("mode"))
            call.fail(Exit::Usage, "missing argument: AVERAGE REJECT SPREAD MODE are set together");
        return call.check(backlight->setAutomaticBLFilter(
            call.as<unsigned long>("average"), call.as<unsigned long>("reject"), call.as<unsigned long>("spread"),
            call.as<Halvix::LightSensorSamplingMode>("mode")));
    }
    unsigned long average = 0;
    unsigned long reject = 0;
    unsigned long spread = 0;
    auto mode = Halvix::SamplingModeAuto;
    call.check(backlight->getAutomaticBLFilter(&average, &reject, &spread, &mode));
    call.print("average", average, "samples");
    call.print("reject", reject, "samples");
    call.print("spread", spread, "lux");
    call.print("mode", kSamplingModes.nameOf(mode));
}

void params(Call& call)
{
    const HeldSignals held;
    const Interface<Backlight> backlight(GetBacklight());
    if (call.has("transition"))
        return call.check(backlight->setAutomaticBLParams(call.integer("transition") != 0));
    bool soft = false;
    double k = 0;
    call.check(backlight->getAutomaticBLParams(&soft, &k));
    call.print("transition", kTransitions.nameOf(soft ? 1 : 0));
    call.print("slope", Value(k, 4));
}

constexpr double kAnyWindow = 4294967295.0;

} // namespace

const Object objects::Backlight{
    "backlight",
    "the display's backlight, by hand and automatic",
    {
        {.name = "get",
         .help = "Reads the level, 0 to 255.",
         .example = "hxaux backlight get",
         .run = readLevel,
         .repeat = Repeat::Watch},
        {.name = "set",
         .help = "Sets the level.",
         .example = "hxaux backlight set 128",
         .run = setLevel,
         .values = {integer("level", 0, 255, "", "0 is darkest")},
         .details = "While the automatic backlight is on, it learns its curve from the level and the light of the "
                    "moment."},
        {.name = "status", .help = "Reads the status byte.", .example = "hxaux backlight status", .run = readStatus},
        {.name = "auto on",
         .help = "Switches the automatic backlight on.",
         .example = "hxaux backlight auto on",
         .run = switchOn,
         .details = "The service process acts on it; see 'hxaux backlight serve'."},
        {.name = "auto off",
         .help = "Switches the automatic backlight off; the level stays as it is.",
         .example = "hxaux backlight auto off",
         .run = switchOff},
        {.name = "auto status",
         .help = "Shows whether the automatic backlight is switched on.",
         .example = "hxaux backlight auto status",
         .run = readAutomatic},
        {.name = "auto filter",
         .help = "Shows, or sets, how the light is averaged for the automatic backlight.",
         .example = "hxaux backlight auto filter 5 5 50 auto",
         .run = filter,
         .values =
             {integer("average", 1, kAnyWindow, "samples", "how many samples are averaged").optional(),
              integer("reject", 0, kAnyWindow, "samples", "how many samples must agree; 0 or 1 takes all").optional(),
              integer("spread", 1, kAnyWindow, "lux", "how far they may differ").optional(),
              choice("mode", kSamplingModes, "measuring range").optional()},
         .details = "Takes effect when the automatic backlight is next switched on. One sample is taken every 800 ms."},
        {.name = "auto params",
         .help = "Shows transition and slope of the automatic backlight, or sets the transition.",
         .example = "hxaux backlight auto params soft",
         .run = params,
         .values = {choice("transition", kTransitions, "how a new level is reached").optional()},
         .details = "The level is slope * ln(lux) - 10. The slope is learned from levels set by hand."},
        {.name = "serve",
         .help = "Runs the automatic backlight of the unit in the foreground until a signal stops it.",
         .example = "hxaux backlight serve",
         .run = serveBacklight,
         .details = "One process of the unit does this. INT or TERM stop it cleanly: it releases the light sensor "
                    "and leaves the settings unchanged."},
    }};

} // namespace hxaux
