// SPDX-License-Identifier: LicenseRef-HXAux
#include "hx-aux/Backlight.h"
#include "tools/hxaux/Call.h"
#include "tools/hxaux/Interface.h"
#include "tools/hxaux/Objects.h"
#include "tools/hxaux/Signals.h"

namespace hxaux {

namespace {

void dimming(Call& call)
{
    const HeldSignals held;
    const Interface<Halvix::Backlight> backlight(GetBacklight());
    if (call.has("state")) {
        const Halvix::eErr code = backlight->setLedDimming(call.as<Halvix::HXStatus>("state"));
        if (code == Halvix::ERR_COMMAND_FAILED)
            call.note("the setting is stored, but the unit's service daemon could not be notified");
        return call.check(code);
    }
    auto state = Halvix::HXStatusDisabled;
    call.check(backlight->getLedDimming(&state));
    call.print("led dimming", state == Halvix::HXStatusEnabled);
}

} // namespace

const Object objects::LedDimming{"led-dimming",
                                 "dimming of the LEDs together with the backlight",
                                 {
                                     {.name = "",
                                      .help = "Shows whether LED dimming is on, or switches it.",
                                      .example = "hxaux led-dimming on",
                                      .run = dimming,
                                      .values = {choice("state", kOnOff, "the new setting").optional()}},
                                 }};

} // namespace hxaux
