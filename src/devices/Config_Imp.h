// SPDX-License-Identifier: LicenseRef-HXAux
#pragma once

#include "hx-aux/Config.h"
#include "platform/DeviceChannel.h"
#include "platform/SharedInstance.h"

namespace Halvix {

class Config_Imp : public Config, public SharedInstance<Config_Imp> {
public:
    virtual ~Config_Imp() = default; // after the interface's slots, so no slot moves

    eErr getStartupTriggerConfig(TriggerConf* trigger) override;
    eErr getShortButtonPressAction(PowerAction* action) override;
    eErr getLongButtonPressAction(PowerAction* action) override;
    eErr getOnOffSigAction(PowerAction* action) override;
    eErr getFrontBtnTrigTime(unsigned short* time) override;
    eErr getExtOnOffSigTrigTime(unsigned int* time) override;
    eErr getSuspendMaxTime(unsigned short* time) override;
    eErr getCanStartupPowerConfig(HXStatus* status) override;
    eErr getVideoStartupPowerConfig(unsigned char* channels) override;
    eErr getExtFanStartupPowerConfig(HXStatus* status) override;
    eErr getStartupVoltageConfig(double* volts) override;
    eErr getHeatingTempLimit(short* celsius) override;
    eErr getPowerOnStartup(HXStatus* status) override;
    eErr setStartupTriggerConfig(TriggerConf trigger) override;
    eErr setShortButtonPressAction(PowerAction action) override;
    eErr setLongButtonPressAction(PowerAction action) override;
    eErr setOnOffSigAction(PowerAction action) override;
    eErr setFrontBtnTrigTime(unsigned short time) override;
    eErr setExtOnOffSigTrigTime(unsigned int time) override;
    eErr setSuspendMaxTime(unsigned short time) override;
    eErr setCanStartupPowerConfig(HXStatus status) override;
    eErr setVideoStartupPowerConfig(unsigned char channels) override;
    eErr setExtFanStartupPowerConfig(HXStatus status) override;
    eErr setStartupVoltageConfig(double volts) override;
    eErr setHeatingTempLimit(short celsius) override;
    eErr setPowerOnStartup(HXStatus status) override;
    eErr Release() override;

protected:
    Config_Imp() = default; // created only by getInstance
    friend class SharedInstance<Config_Imp>;

private:
    DeviceChannel channel_{"/dev/conf-id"};
};

} // namespace Halvix
