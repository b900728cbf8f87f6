// SPDX-License-Identifier: LicenseRef-HXAux
#include "hx-aux/Adc.h"
#include "tools/hxaux/Call.h"
#include "tools/hxaux/Interface.h"
#include "tools/hxaux/Objects.h"

namespace hxaux {

namespace {

void readOne(Call& call, Halvix::Adc& adc, int number)
{
    const std::string name = "voltage " + std::to_string(number);
    double volts = 0;
    if (call.attempt(call.has("number") ? "" : name, adc.getVoltage(static_cast<Halvix::VoltageEnum>(number), &volts)))
        call.print(name, volts, "V");
}

void readVoltages(Call& call)
{
    const Interface<Halvix::Adc> adc(GetAdc());
    if (call.has("number"))
        return readOne(call, *adc, call.as<int>("number"));
    for (int number = 0; number < 8; ++number)
        readOne(call, *adc, number);
}

} // namespace

const Object objects::Voltage{
    "voltage",
    "supply voltages",
    {
        {
            .name = "",
            .help = "Measures one supply voltage, or all.",
            .example = "hxaux voltage 0",
            .run = readVoltages,
            .values = {integer("number", 0, 7, "", "which voltage; all when it is left out").optional()},
            .repeat = Repeat::Watch,
            .details = "Voltages 0 and 1 reach up to 39.6 V, 2 and 3 up to 16.5 V, 4 to 7 up to 6.6 V.",
        },
    }};

} // namespace hxaux
