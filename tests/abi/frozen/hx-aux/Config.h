// SPDX-License-Identifier: LicenseRef-HXAux
#ifndef HX_AUX_CONFIG_H
#define HX_AUX_CONFIG_H

#include "hx-aux/errors.h"

namespace Halvix {

enum TriggerConf HX_32BIT {
    StartupTrigger1 = 1,
    StartupTrigger2 = 2,
    StartupTrigger3 = 3,
    HX_32BIT_RANGE(TriggerConf)
};

enum PowerAction HX_32BIT { PowerAction0 = 0, PowerAction1 = 1, PowerAction2 = 2, HX_32BIT_RANGE(PowerAction) };

class Config {
public:
    virtual eErr getStartupTriggerConfig(TriggerConf* trigger) = 0;
    virtual eErr getShortButtonPressAction(PowerAction* action) = 0;
    virtual eErr getLongButtonPressAction(PowerAction* action) = 0;
    virtual eErr getOnOffSigAction(PowerAction* action) = 0;
    virtual eErr getFrontBtnTrigTime(unsigned short* time) = 0;
    virtual eErr getExtOnOffSigTrigTime(unsigned int* time) = 0;
    virtual eErr getSuspendMaxTime(unsigned short* time) = 0;
    virtual eErr getCanStartupPowerConfig(HXStatus* status) = 0;
    virtual eErr getVideoStartupPowerConfig(unsigned char* channels) = 0;
    virtual eErr getExtFanStartupPowerConfig(HXStatus* status) = 0;
    virtual eErr getStartupVoltageConfig(double* volts) = 0;
    virtual eErr getHeatingTempLimit(short* celsius) = 0;
    virtual eErr getPowerOnStartup(HXStatus* status) = 0;
    virtual eErr setStartupTriggerConfig(TriggerConf trigger) = 0;
    virtual eErr setShortButtonPressAction(PowerAction action) = 0;
    virtual eErr setLongButtonPressAction(PowerAction action) = 0;
    virtual eErr setOnOffSigAction(PowerAction action) = 0;
    virtual eErr setFrontBtnTrigTime(unsigned short time) = 0;
    virtual eErr setExtOnOffSigTrigTime(unsigned int time) = 0;
    virtual eErr setSuspendMaxTime(unsigned short time) = 0;
    virtual eErr setCanStartupPowerConfig(HXStatus status) = 0;
    virtual eErr setVideoStartupPowerConfig(unsigned char channels) = 0;
    virtual eErr setExtFanStartupPowerConfig(HXStatus status) = 0;
    virtual eErr setStartupVoltageConfig(double volts) = 0;
    virtual eErr setHeatingTempLimit(short celsius) = 0;
    virtual eErr setPowerOnStartup(HXStatus status) = 0;
    virtual void Release() = 0;

protected:
    ~Config() {}
};

} // namespace Halvix

HX_EXPORT Halvix::Config* GetConfig();

#endif
