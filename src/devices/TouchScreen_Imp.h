// SPDX-License-Identifier: LicenseRef-HXAux
#pragma once

#include "hx-aux/TouchScreen.h"
#include "platform/DeviceChannel.h"

namespace Halvix {

class TouchScreen_Imp : public TouchScreen {
public:
    TouchScreen_Imp() = default;
    virtual ~TouchScreen_Imp() = default; // after the interface's slots, so no slot moves

    eErr getMode(TouchScreenModeSettings* mode) override;
    eErr getMouseRightClickTime(unsigned short* time) override;
    eErr setMode(TouchScreenModeSettings mode) override;
    eErr setMouseRightClickTime(unsigned short time) override;
    eErr setAdvancedSetting(TSAdvancedSettingsParameter parameter, unsigned short value) override;
    eErr getAdvancedSetting(TSAdvancedSettingsParameter parameter, unsigned short* value) override;
    eErr Release() override;

private:
    /// ERR_SUCCESS, 1 or 27, in this order.
    [[nodiscard]] eErr ready() const;

    DeviceChannel channel_{"/dev/front-mcu-id"};
};

} // namespace Halvix
