// SPDX-License-Identifier: LicenseRef-HXAux
#include "hx-aux/HXAuxPrivate.h"
#include "tools/hxaux/Call.h"
#include "tools/hxaux/Interface.h"
#include "tools/hxaux/Objects.h"

namespace hxaux {

namespace {

using Halvix::HXAuxPrivate;

void getSmart(Call& call)
{
    const Interface<HXAuxPrivate> service(GetHXAuxPrivate());
    unsigned short value = 0;
    call.check(service->getFromSmart(call.as<char>("register"), &value));
    call.print("smart " + call.text("register"), value);
}

void setSmart(Call& call)
{
    const Interface<HXAuxPrivate> service(GetHXAuxPrivate());
    call.check(service->setToSmart(call.as<char>("register"), call.as<unsigned short>("value")));
}

Argument number()
{
    return integer("register", 0, 95, "", "which register");
}

} // namespace

const Object objects::Smart{"smart",
                            "the supervisor's numbered registers for service",
                            {
                                {.name = "get",
                                 .help = "Reads a register.",
                                 .example = "hxaux smart get 8",
                                 .run = getSmart,
                                 .values = {number()},
                                 .repeat = Repeat::Watch},
                                {.name = "set",
                                 .help = "Writes a register.",
                                 .example = "hxaux smart set 8 1000",
                                 .run = setSmart,
                                 .values = {number(), integer("value", 0, 65535, "", "its 16 bits")}},
                            }};

} // namespace hxaux
