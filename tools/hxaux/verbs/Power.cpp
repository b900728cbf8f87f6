// SPDX-License-Identifier: LicenseRef-HXAux
#include "hx-aux/Power.h"

#include "tools/hxaux/Call.h"
#include "tools/hxaux/Interface.h"
#include "tools/hxaux/Objects.h"
#include "tools/hxaux/VideoChannels.h"

namespace hxaux {

namespace {

using Halvix::eErr;
using Halvix::HXStatus;
using Halvix::Power;

// The supervisor's firmware defines the meaning of the other values.
const Names kNoTransition = namesOf<int>({{0, "none"}});

template <eErr (Power::*Get)(HXStatus*)>
eErr showPowerStatus(Call& call, Power& power, const char* name)
{
    auto status = Halvix::HXStatusDisabled;
    const eErr err = (power.*Get)(&status);
    if (err == Halvix::ERR_SUCCESS)
        call.print(name, status == Halvix::HXStatusEnabled);
    return err;
}

eErr showVideoPower(Call& call, Power& power, const char* name)
{
    unsigned char channels = 0;
    const eErr err = power.getVideoPowerStatus(&channels);
    if (err == Halvix::ERR_SUCCESS)
        call.print(name, listOfChannels(channels));
    return err;
}

eErr showTransition(Call& call, Power& power, const char* name)
{
    auto status = Halvix::ButtonPowerTransition0;
    const eErr err = power.getButtonPowerTransitionStatus(&status);
    if (err == Halvix::ERR_SUCCESS)
        call.print(name, kNoTransition.nameOf(status));
    return err;
}

void showPower(Call& call)
{
    const Interface<Power> power(GetPower());
    const auto show = [&](const char* name, auto function) { (void)call.attempt(name, function(call, *power, name)); };
    show("backlight", showPowerStatus<&Power::getBLPowerStatus>);
    show("can", showPowerStatus<&Power::getCanPowerStatus>);
    show("video", showVideoPower);
    show("fan", showPowerStatus<&Power::getExtFanPowerStatus>);
    show("transition", showTransition);
}

template <eErr (Power::*Get)(HXStatus*), eErr (Power::*Set)(HXStatus)>
void showOrSwitch(Call& call)
{
    const Interface<Power> power(GetPower());
    call.check(call.has("state") ? ((*power).*Set)(call.as<HXStatus>("state"))
                                 : showPowerStatus<Get>(call, *power, "power"));
}

void video(Call& call)
{
    const Interface<Power> power(GetPower());
    call.check(call.has("channels") ? power->setVideoPowerStatus(channelsOf(call, "channels"))
                                    : showVideoPower(call, *power, "video"));
}

void transition(Call& call)
{
    const Interface<Power> power(GetPower());
    call.check(showTransition(call, *power, "transition"));
}

void acknowledge(Call& call)
{
    const Interface<Power> power(GetPower());
    call.check(power->ackPowerRequest());
}

Argument state()
{
    return choice("state", kOnOff, "shown when left out").optional();
}

} // namespace

const Object objects::Power{
    "power",
    "power of the loads, and power requests of the front button",
    {
        {.name = "",
         .help = "Shows what has power and which transition is requested.",
         .example = "hxaux power",
         .run = showPower,
         .repeat = Repeat::Watch},
        {.name = "backlight",
         .help = "Shows or switches the power of the backlight.",
         .example = "hxaux power backlight on",
         .run = showOrSwitch<&Power::getBLPowerStatus, &Power::setBLPowerStatus>,
         .values = {state()}},
        {.name = "can",
         .help = "Shows or switches the power of the CAN interfaces.",
         .example = "hxaux power can off",
         .run = showOrSwitch<&Power::getCanPowerStatus, &Power::setCanPowerStatus>,
         .values = {state()}},
        {.name = "video",
         .help = "Shows or switches the power of the video channels.",
         .example = "hxaux power video 1,3",
         .run = video,
         .values = {text("channels", "numbers of channels, 'all' or 'none'; shown when left out").optional()},
         .details = "A channel that is not named is switched off."},
        {.name = "fan",
         .help = "Shows or switches the power of the external fan.",
         .example = "hxaux power fan on",
         .run = showOrSwitch<&Power::getExtFanPowerStatus, &Power::setExtFanPowerStatus>,
         .values = {state()}},
        {.name = "transition",
         .help = "Shows which power transition the front button or the signal requests.",
         .example = "hxaux power transition",
         .run = transition,
         .repeat = Repeat::Watch,
         .details = "The supervisor's firmware defines the meaning of the numbers 1 to 6."},
        {.name = "ack",
         .help = "Acknowledges the requested power transition.",
         .example = "hxaux power ack",
         .run = acknowledge},
    }};

} // namespace hxaux
