// SPDX-License-Identifier: LicenseRef-HXAux
#pragma once

#include "hx-aux/Power.h"
#include "platform/DeviceChannel.h"

#include <cstdint>

namespace Halvix {

class Power_Imp : public Power {
public:
    virtual ~Power_Imp() = default; // after the interface's slots, so no slot moves

    eErr getBLPowerStatus(HXStatus* status) override;
    eErr getCanPowerStatus(HXStatus* status) override;
    eErr getVideoPowerStatus(unsigned char* channels) override;
    eErr getExtFanPowerStatus(HXStatus* status) override;
    eErr setBLPowerStatus(HXStatus status) override;
    eErr setCanPowerStatus(HXStatus status) override;
    eErr setVideoPowerStatus(unsigned char channels) override;
    eErr setExtFanPowerStatus(HXStatus status) override;
    eErr getButtonPowerTransitionStatus(ButtonPowerTransitionStatus* status) override;
    eErr ackPowerRequest() override;
    eErr Release() override;

private:
    [[nodiscard]] eErr getStatus(Read<std::uint8_t> request, HXStatus* status);
    [[nodiscard]] eErr setStatus(Write<std::uint8_t> request, HXStatus status);

    RetryingChannel channel_{"/dev/power-id"};
};

} // namespace Halvix
