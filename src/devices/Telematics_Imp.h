// SPDX-License-Identifier: LicenseRef-HXAux
#pragma once

#include "devices/I2CConfig.h"
#include "hx-aux/Telematics.h"

#include <atomic>

namespace Halvix {

class About;

class Telematics_Imp : public Telematics {
public:
    Telematics_Imp() = default;
    virtual ~Telematics_Imp() = default; // after the interface's slots, so no slot moves

    eErr getTelematicsAvailable(HXStatus* status) override;
    eErr getGPRSPowerStatus(HXStatus* status) override;
    eErr getGPRSStartUpPowerStatus(HXStatus* status) override;
    eErr getWLANPowerStatus(HXStatus* status) override;
    eErr getWLANStartUpPowerStatus(HXStatus* status) override;
    eErr getGPSAntennaStatus(HXStatus* status) override;
    eErr setGPRSPowerStatus(HXStatus status) override;
    eErr setGPRSStartUpPowerStatus(HXStatus status) override;
    eErr setWLANPowerStatus(HXStatus status) override;
    eErr setWLANStartUpPowerStatus(HXStatus status) override;
    eErr Release() override;

    [[nodiscard]] static bool isGPRSAvailable();
    [[nodiscard]] static bool isWLANAvailable();
    [[nodiscard]] static bool isGPSAvailable();
    [[nodiscard]] static bool isBTAvailable();

protected:
    /// The production data of one module at the first query; kept for the lifetime of the process, also when it could
    /// not be read then. A query that ran out of memory is repeated.
    struct Availability {
        std::atomic<bool> computed;
        std::atomic<bool> value;
    };
    static inline Availability gprs_{}, wlan_{}, gps_{}, bt_{};

private:
    /// 0 when the module is fitted, `missing` when it is not, 32 when out of memory.
    [[nodiscard]] static eErr check(Availability& cached, eErr (About::*getter)(bool*), eErr missing);
    [[nodiscard]] static eErr checkGPRS();
    [[nodiscard]] static eErr checkWLAN();
    [[nodiscard]] static eErr checkGPS();
    [[nodiscard]] static eErr checkBT();

    I2CConfig expander_;
};

} // namespace Halvix
