// SPDX-License-Identifier: LicenseRef-HXAux
#include "hx-aux/DigIO.h"
#include "tools/hxaux/Call.h"
#include "tools/hxaux/Interface.h"
#include "tools/hxaux/Objects.h"

namespace hxaux {

namespace {

void readInputs(Call& call)
{
    const Interface<Halvix::DigIO> inputs(GetDigIO());
    unsigned char bits = 0;
    call.check(inputs->getDigIO(&bits));
    for (int i = 0; i < 4; ++i)
        call.print("input " + std::to_string(i + 1), (bits >> i & 1) != 0);
}

} // namespace

const Object objects::Inputs{"inputs",
                             "the four digital inputs",
                             {
                                 {
                                     .name = "",
                                     .help = "Reads the present state of all digital inputs.",
                                     .example = "hxaux inputs",
                                     .run = readInputs,
                                     .repeat = Repeat::Watch,
                                 },
                             }};

} // namespace hxaux
