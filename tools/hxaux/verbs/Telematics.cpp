// SPDX-License-Identifier: LicenseRef-HXAux
#include "hx-aux/Telematics.h"

#include "tools/hxaux/Call.h"
#include "tools/hxaux/Interface.h"
#include "tools/hxaux/Objects.h"
#include "tools/hxaux/Signals.h"

#include <array>

namespace hxaux {

namespace {

using Halvix::HXStatus;
using Halvix::Telematics;

// Every operation works in steps on a bus or a locked file, so signals are deferred until it is done: a power key is
// never left held.

using StatusGetter = Halvix::eErr (Telematics::*)(HXStatus*);
using Setter = Halvix::eErr (Telematics::*)(HXStatus);

void read(Call& call, const std::string& name, StatusGetter get)
{
    const HeldSignals held;
    const Interface<Telematics> telematics(GetTelematics());
    auto status = Halvix::HXStatusDisabled;
    call.check(((*telematics).*get)(&status));
    call.print(name, status != Halvix::HXStatusDisabled);
}

void readOrSet(Call& call, const std::string& name, StatusGetter get, Setter set)
{
    if (!call.has("state"))
        return read(call, name, get);
    const HeldSignals held;
    const Interface<Telematics> telematics(GetTelematics());
    call.check(((*telematics).*set)(call.as<HXStatus>("state")));
}

void gprs(Call& call)
{
    readOrSet(call, "gprs", &Telematics::getGPRSPowerStatus, &Telematics::setGPRSPowerStatus);
}

void gprsAtStart(Call& call)
{
    readOrSet(call, "gprs at start", &Telematics::getGPRSStartUpPowerStatus, &Telematics::setGPRSStartUpPowerStatus);
}

void wlan(Call& call)
{
    readOrSet(call, "wlan", &Telematics::getWLANPowerStatus, &Telematics::setWLANPowerStatus);
}

void wlanAtStart(Call& call)
{
    readOrSet(call, "wlan at start", &Telematics::getWLANStartUpPowerStatus, &Telematics::setWLANStartUpPowerStatus);
}

void available(Call& call)
{
    read(call, "available", &Telematics::getTelematicsAvailable);
}

void antenna(Call& call)
{
    read(call, "antenna short-circuit", &Telematics::getGPSAntennaStatus);
}

struct Module {
    const char* name;
    StatusGetter get;
};

constexpr std::array<Module, 6> kItems{{
    {"available", &Telematics::getTelematicsAvailable},
    {"gprs", &Telematics::getGPRSPowerStatus},
    {"gprs at start", &Telematics::getGPRSStartUpPowerStatus},
    {"wlan", &Telematics::getWLANPowerStatus},
    {"wlan at start", &Telematics::getWLANStartUpPowerStatus},
    {"antenna short-circuit", &Telematics::getGPSAntennaStatus},
}};

bool isMissing(Halvix::eErr code)
{
    return code == Halvix::ERR_TELEMATICS_GPRS_NOT_AVAILABLE || code == Halvix::ERR_TELEMATICS_WLAN_NOT_AVAILABLE ||
           code == Halvix::ERR_TELEMATICS_GPS_NOT_AVAILABLE;
}

void readAll(Call& call)
{
    const HeldSignals held;
    const Interface<Telematics> telematics(GetTelematics());
    for (const Module& item : kItems) {
        auto status = Halvix::HXStatusDisabled;
        const Halvix::eErr code = ((*telematics).*item.get)(&status);
        if (isMissing(code))
            call.print(item.name, Absent{});
        else if (call.attempt(item.name, code))
            call.print(item.name, status != Halvix::HXStatusDisabled);
    }
}

} // namespace

const Object objects::Telematics{
    "telematics",
    "power of the GSM/GPRS and WLAN modules, GPS antenna",
    {
        {.name = "status",
         .help = "Shows the state of the modules; what is not fitted is absent.",
         .example = "hxaux telematics status",
         .run = readAll,
         .repeat = Repeat::Watch},
        {.name = "available",
         .help = "Shows whether any telematics module is fitted.",
         .example = "hxaux telematics available",
         .run = available},
        {.name = "gprs",
         .help = "Shows whether the GSM/GPRS module is on, or switches it.",
         .example = "hxaux telematics gprs on",
         .run = gprs,
         .values = {choice("state", kOnOff, "the new state").optional()},
         .details = "Switching holds the module's power key, 1.1 s for on and 2.1 s for off; a signal that comes "
                    "meanwhile takes effect after that."},
        {.name = "gprs start",
         .help = "Shows or stores whether the GSM/GPRS module is to be on when the unit starts.",
         .example = "hxaux telematics gprs start on",
         .run = gprsAtStart,
         .values = {choice("state", kOnOff, "the new setting").optional()}},
        {.name = "wlan",
         .help = "Shows whether the WLAN module is on, or switches it.",
         .example = "hxaux telematics wlan off",
         .run = wlan,
         .values = {choice("state", kOnOff, "the new state").optional()}},
        {.name = "wlan start",
         .help = "Shows or stores whether the WLAN module is to be on when the unit starts.",
         .example = "hxaux telematics wlan start off",
         .run = wlanAtStart,
         .values = {choice("state", kOnOff, "the new setting").optional()}},
        {.name = "antenna",
         .help = "Shows whether the GPS antenna's short-circuit line is high.",
         .example = "hxaux telematics antenna",
         .run = antenna,
         .repeat = Repeat::Watch},
    }};

} // namespace hxaux
