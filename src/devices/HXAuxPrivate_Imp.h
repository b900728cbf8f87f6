// SPDX-License-Identifier: LicenseRef-HXAux
#pragma once

#include "backlight/BacklightController.h"
#include "hx-aux/HXAuxPrivate.h"
#include "platform/DeviceChannel.h"
#include "settings/EepromConfig.h"

namespace Halvix {

class HXAuxPrivate_Imp : public HXAuxPrivate {
public:
    HXAuxPrivate_Imp() = default;
    virtual ~HXAuxPrivate_Imp() = default; // after the interface's slots, so no slot moves
    HXAuxPrivate_Imp(const HXAuxPrivate_Imp&) = delete;
    HXAuxPrivate_Imp& operator=(const HXAuxPrivate_Imp&) = delete;

    eErr getEepromProperty(unsigned char store, char* key, char* value, int size) override;
    eErr setEepromProperty(unsigned char store, char* key, char* value) override;
    eErr getFromSmart(char reg, unsigned short* value) override;
    eErr setToSmart(char reg, unsigned short value) override;
    eErr automaticBacklightInit() override;
    eErr setFileSetting(char const* key, char const* value) override;
    eErr getFileSetting(char const* key, char* value, int size) override;
    eErr resumeVideo() override;
    eErr Release() override;

private:
    [[nodiscard]] EepromConfig& storeOf(unsigned char store) { return store == 0 ? mainStore_ : addOnStore_; }

    // Constructed in this order, destroyed in reverse.
    BacklightController controller_;
    DeviceChannel channel_{"/dev/diag-id"};
    EepromConfig mainStore_{EepromTypeMain};
    EepromConfig addOnStore_{EepromTypeAddOn};
};

} // namespace Halvix
