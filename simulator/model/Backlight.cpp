// SPDX-License-Identifier: LicenseRef-HXAux
#include "simulator/model/Backlight.h"

namespace hxsim {

Backlight::Backlight(Unit& unit)
{
    Node& node = unit.addNode("/dev/backlight");
    node.request(0x80010002, Takes{0}, Gives{1}, [this](Request& request) {
        request.put8(0, level);
        return 0;
    });
    node.request(0x40010003, Takes{2}, Gives{0}, [this](Request& request) {
        level = request.u8(1);
        if (onWrite)
            onWrite(level);
        return 0;
    });
    node.request(0x80010004, Takes{0}, Gives{1}, [this](Request& request) {
        request.put8(0, status);
        return 0;
    });
    unit.properties().number("backlight.level", level, 0, 255, "level of the display's backlight");
    unit.properties().number("backlight.status", status, 0, 255, "status byte of the backlight");
}

HXSIM_HARDWARE(Backlight)

} // namespace hxsim
