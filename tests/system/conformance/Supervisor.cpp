// SPDX-License-Identifier: LicenseRef-HXAux
#include "tests/system/conformance/Checks.h"

namespace conformance {

using namespace Halvix;

namespace {

/// A reading of unit-specific value: checks only that it succeeds.
template <class Interface, class Value>
Check reads(const char* operation, Interface* (*factory)(), eErr (Interface::*getter)(Value*))
{
    return {operation, "0", [=] {
                Held<Interface> object{factory()};
                Value value{};
                return answer(((*object).*getter)(&value));
            }};
}

Checks configuration()
{
    return {
        keeps("Config.setStartupTriggerConfig", GetConfig, &Config::setStartupTriggerConfig,
              &Config::getStartupTriggerConfig, static_cast<TriggerConf>(2)),
        sets("Config.setStartupTriggerConfig 4", "8", GetConfig, &Config::setStartupTriggerConfig,
             static_cast<TriggerConf>(4)),
        keeps("Config.setShortButtonPressAction", GetConfig, &Config::setShortButtonPressAction,
              &Config::getShortButtonPressAction, static_cast<PowerAction>(1)),
        keeps("Config.setLongButtonPressAction", GetConfig, &Config::setLongButtonPressAction,
              &Config::getLongButtonPressAction, static_cast<PowerAction>(2)),
        keeps("Config.setOnOffSigAction", GetConfig, &Config::setOnOffSigAction, &Config::getOnOffSigAction,
              static_cast<PowerAction>(0)),
        keeps("Config.setFrontBtnTrigTime", GetConfig, &Config::setFrontBtnTrigTime, &Config::getFrontBtnTrigTime,
              1500),
        keeps("Config.setExtOnOffSigTrigTime", GetConfig, &Config::setExtOnOffSigTrigTime,
              &Config::getExtOnOffSigTrigTime, 0x11234U),
        keeps("Config.setSuspendMaxTime", GetConfig, &Config::setSuspendMaxTime, &Config::getSuspendMaxTime, 300),
        keeps("Config.setCanStartupPowerConfig", GetConfig, &Config::setCanStartupPowerConfig,
              &Config::getCanStartupPowerConfig, HXStatusEnabled),
        keeps("Config.setVideoStartupPowerConfig", GetConfig, &Config::setVideoStartupPowerConfig,
              &Config::getVideoStartupPowerConfig, 5),
        sets("Config.setVideoStartupPowerConfig 16", "8", GetConfig, &Config::setVideoStartupPowerConfig, 16),
        keeps("Config.setExtFanStartupPowerConfig", GetConfig, &Config::setExtFanStartupPowerConfig,
              &Config::getExtFanStartupPowerConfig, HXStatusEnabled),
        keeps("Config.setStartupVoltageConfig", GetConfig, &Config::setStartupVoltageConfig,
              &Config::getStartupVoltageConfig, 12.0),
        sets("Config.setStartupVoltageConfig 28.1", "8", GetConfig, &Config::setStartupVoltageConfig, 28.1),
        keeps("Config.setHeatingTempLimit", GetConfig, &Config::setHeatingTempLimit, &Config::getHeatingTempLimit, -10),
        keeps("Config.setPowerOnStartup", GetConfig, &Config::setPowerOnStartup, &Config::getPowerOnStartup,
              HXStatusEnabled),
    };
}

Checks power()
{
    return {
        keeps("Power.setBLPowerStatus", GetPower, &Power::setBLPowerStatus, &Power::getBLPowerStatus, HXStatusEnabled),
        keeps("Power.setCanPowerStatus", GetPower, &Power::setCanPowerStatus, &Power::getCanPowerStatus,
              HXStatusEnabled),
        keeps("Power.setVideoPowerStatus", GetPower, &Power::setVideoPowerStatus, &Power::getVideoPowerStatus, 9),
        sets("Power.setVideoPowerStatus 16", "8", GetPower, &Power::setVideoPowerStatus, 16),
        keeps("Power.setExtFanPowerStatus", GetPower, &Power::setExtFanPowerStatus, &Power::getExtFanPowerStatus,
              HXStatusEnabled),
        gets("Power.getButtonPowerTransitionStatus", GetPower, &Power::getButtonPowerTransitionStatus, "0 0"),
        sets("Power.ackPowerRequest", "0", GetPower, &Power::ackPowerRequest),
    };
}

Checks diagnostics()
{
    return {
        reads("Diagnostic.getSSTemp", GetDiagnostic, &Diagnostic::getSSTemp),
        reads("Diagnostic.getPCBTemp", GetDiagnostic, &Diagnostic::getPCBTemp),
        {"Diagnostic.getPMTemp", "0",
         [] {
             Held diagnostic{GetDiagnostic()};
             short celsius = 0;
             JidaSensorType type{};
             return answer(diagnostic->getPMTemp(0, &celsius, &type));
         }},
        reads("Diagnostic.getStartupReason", GetDiagnostic, &Diagnostic::getStartupReason),
        reads("Diagnostic.getShutDownReason", GetDiagnostic, &Diagnostic::getShutDownReason),
        sets("Diagnostic.clearHwErrorStatus", "0", GetDiagnostic, &Diagnostic::clearHwErrorStatus),
        gets("Diagnostic.getHwErrorStatus", GetDiagnostic, &Diagnostic::getHwErrorStatus, "0 0"),
        reads("Diagnostic.getTimer", GetDiagnostic, &Diagnostic::getTimer),
        {"Diagnostic.getMinMaxTemp", "0",
         [] {
             Held diagnostic{GetDiagnostic()};
             short first = 0;
             short second = 0;
             return answer(diagnostic->getMinMaxTemp(&first, &second));
         }},
        reads("Diagnostic.getPowerCycles", GetDiagnostic, &Diagnostic::getPowerCycles),
    };
}

} // namespace

Checks supervisor()
{
    Checks all;
    for (const auto group : {configuration, power, diagnostics})
        for (Check& check : group())
            all.push_back(std::move(check));
    return all;
}

} // namespace conformance
