// SPDX-License-Identifier: LicenseRef-HXAux
#include "simulator/model/DigitalInputs.h"

namespace hxsim {

DigitalInputs::DigitalInputs(Unit& unit)
{
    unit.addNode("/dev/dig-io").request(0x80010051, Takes{0}, Gives{1}, [this](Request& request) {
        request.put8(0, port());
        return 0;
    });
    for (std::size_t i = 0; i < inputs.size(); ++i)
        unit.properties().flag("inputs." + std::to_string(i + 1), inputs[i], "digital input");
    unit.properties().number("inputs.other", otherLines, 0, 15, "upper four bits of the inputs' port");
}

std::uint8_t DigitalInputs::port() const
{
    unsigned bits = static_cast<unsigned>(otherLines) << 4;
    for (std::size_t i = 0; i < inputs.size(); ++i)
        bits |= static_cast<unsigned>(inputs[i]) << i;
    return static_cast<std::uint8_t>(bits);
}

HXSIM_HARDWARE(DigitalInputs)

} // namespace hxsim
