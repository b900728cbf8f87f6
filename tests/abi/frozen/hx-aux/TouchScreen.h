// SPDX-License-Identifier: LicenseRef-HXAux
#ifndef HX_AUX_TOUCHSCREEN_H
#define HX_AUX_TOUCHSCREEN_H

#include "hx-aux/errors.h"

namespace Halvix {

enum TouchScreenModeSettings HX_32BIT {
    TouchScreenMode0 = 0,
    TouchScreenMode1 = 1,
    TouchScreenMode2 = 2,
    TouchScreenMode3 = 3,
    HX_32BIT_RANGE(TouchScreenModeSettings)
};

enum TSAdvancedSettingsParameter HX_32BIT {
    TSAdvancedSetting0 = 0,
    TSAdvancedSetting1 = 1,
    TSAdvancedSetting2 = 2,
    TSAdvancedSetting3 = 3,
    TSAdvancedSetting4 = 4,
    TSAdvancedSetting5 = 5,
    TSAdvancedSetting6 = 6,
    TSAdvancedSetting7 = 7,
    TSAdvancedSetting8 = 8,
    TSAdvancedSetting9 = 9,
    TSAdvancedSetting10 = 10,
    TSAdvancedSetting11 = 11,
    HX_32BIT_RANGE(TSAdvancedSettingsParameter)
};

class TouchScreen {
public:
    virtual eErr getMode(TouchScreenModeSettings* mode) = 0;
    virtual eErr getMouseRightClickTime(unsigned short* time) = 0;
    virtual eErr setMode(TouchScreenModeSettings mode) = 0;
    virtual eErr setMouseRightClickTime(unsigned short time) = 0;
    virtual eErr setAdvancedSetting(TSAdvancedSettingsParameter parameter, unsigned short value) = 0;
    virtual eErr getAdvancedSetting(TSAdvancedSettingsParameter parameter, unsigned short* value) = 0;
    virtual void Release() = 0;

protected:
    ~TouchScreen() {}
};

} // namespace Halvix

HX_EXPORT Halvix::TouchScreen* GetTouchScreen();

#endif
