// SPDX-License-Identifier: LicenseRef-HXAux
#include "hx-aux/TouchScreen.h"
#include "tools/hxaux/Call.h"
#include "tools/hxaux/Interface.h"
#include "tools/hxaux/Objects.h"

namespace hxaux {

namespace {

using Halvix::TouchScreen;
using TouchParameter = Halvix::TSAdvancedSettingsParameter;

constexpr int kSettingCount = 12;

void touchMode(Call& call)
{
    const Interface<TouchScreen> touch(GetTouchScreen());
    if (call.has("mode"))
        return call.check(touch->setMode(call.as<Halvix::TouchScreenModeSettings>("mode")));
    auto now = Halvix::TouchScreenMode0;
    call.check(touch->getMode(&now));
    call.print("mode", static_cast<int>(now));
}

void rightClick(Call& call)
{
    const Interface<TouchScreen> touch(GetTouchScreen());
    if (call.has("time"))
        return call.check(touch->setMouseRightClickTime(call.as<unsigned short>("time")));
    unsigned short time = 0;
    call.check(touch->getMouseRightClickTime(&time));
    call.print("right click", time);
}

void readSetting(Call& call, TouchScreen& touch, int number)
{
    const std::string name = "setting " + std::to_string(number);
    unsigned short value = 0;
    const bool one = call.has("setting");
    if (call.attempt(one ? "" : name, touch.getAdvancedSetting(static_cast<TouchParameter>(number), &value)))
        call.print(name, value);
}

void advanced(Call& call)
{
    const Interface<TouchScreen> touch(GetTouchScreen());
    if (call.has("value"))
        return call.check(
            touch->setAdvancedSetting(call.as<TouchParameter>("setting"), call.as<unsigned short>("value")));
    if (call.has("setting"))
        return readSetting(call, *touch, call.as<int>("setting"));
    for (int number = 0; number < kSettingCount; ++number)
        readSetting(call, *touch, number);
}

} // namespace

const Object objects::Touch{
    "touch",
    "settings of the touch screen",
    {
        {.name = "mode",
         .help = "Shows or sets how touches are reported.",
         .example = "hxaux touch mode 1",
         .run = touchMode,
         .values = {integer("mode", 0, 3, "", "the front microcontroller's mode").optional()}},
        {.name = "right-click",
         .help = "Shows or sets the time after which a held touch is a right click, as the controller counts it.",
         .example = "hxaux touch right-click 800",
         .run = rightClick,
         .values = {integer("time", 0, 65535, "", "the new time").optional()}},
        {.name = "advanced",
         .help = "Shows one or all of the controller's advanced settings, or sets one.",
         .example = "hxaux touch advanced 3 1200",
         .run = advanced,
         .values = {integer("setting", 0, kSettingCount - 1, "", "which setting; all when it is left out").optional(),
                    integer("value", 0, 65535, "", "the new value").optional()},
         .details = "Settings 1 and 2 take up to 4095, 3 to 6 up to 16383, 7 and 9 up to 32767, 8 is a switch. They "
                    "need front firmware 1.0.0.0, setting 0 needs 0.5.0.0."},
    }};

} // namespace hxaux
