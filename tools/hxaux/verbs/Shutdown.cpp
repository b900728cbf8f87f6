// SPDX-License-Identifier: LicenseRef-HXAux
#include "hx-aux/FirmwareUpgrade.h"
#include "tools/hxaux/Call.h"
#include "tools/hxaux/Interface.h"
#include "tools/hxaux/Objects.h"

namespace hxaux {

namespace {

void shutDown(Call& call)
{
    const Interface<Halvix::FirmwareUpgrade> upgrade(GetFirmwareUpgrade());
    call.check(upgrade->shutDown());
}

} // namespace

const Object objects::Shutdown{"shutdown",
                               "switching the unit off",
                               {
                                   {.name = "",
                                    .help = "Requests a shut-down from the unit's service daemon.",
                                    .example = "hxaux shutdown",
                                    .run = shutDown,
                                    .details = "New firmware starts when the unit is switched on again."},
                               }};

} // namespace hxaux
