// SPDX-License-Identifier: LicenseRef-HXAux
#include "tests/src/devices/ConfigOperations.h"

using namespace Halvix;

namespace config {

namespace {

template <class Value, eErr (Config::*Operation)(Value*)>
eErr get(Config& object, double& value)
{
    auto typed = static_cast<Value>(value);
    const eErr err = (object.*Operation)(&typed);
    value = static_cast<double>(typed);
    return err;
}

template <class Value, eErr (Config::*Operation)(Value)>
eErr set(Config& object, double value)
{
    return (object.*Operation)(static_cast<Value>(value));
}

constexpr const char* kAny = nullptr;

} // namespace

const std::vector<Getter>& getters()
{
    static const std::vector<Getter> rows{
        {"StartupTriggerConfig",
         get<TriggerConf, &Config::getStartupTriggerConfig>,
         "1.0.0.0",
         {{19, 2}},
         {"get 19 -> 2"},
         2},
        {"ShortButtonPressAction",
         get<PowerAction, &Config::getShortButtonPressAction>,
         "1.0.0.0",
         {{16, 2}},
         {"get 16 -> 2"},
         2},
        {"LongButtonPressAction",
         get<PowerAction, &Config::getLongButtonPressAction>,
         "1.0.0.0",
         {{17, 1}},
         {"get 17 -> 1"},
         1},
        {"OnOffSigAction", get<PowerAction, &Config::getOnOffSigAction>, "1.0.0.0", {{18, 0}}, {"get 18 -> 0"}, 0},
        {"FrontBtnTrigTime",
         get<unsigned short, &Config::getFrontBtnTrigTime>,
         kAny,
         {{0, 7}, {1, 65535}},
         {"get 0 -> 7", "get 1 -> 65535"},
         65535},
        {"ExtOnOffSigTrigTime",
         get<unsigned int, &Config::getExtOnOffSigTrigTime>,
         kAny,
         {{3, 0x1234}, {20, 0xFEDC}},
         {"get 3 -> 4660", "get 20 -> 65244"},
         4275835444.0},
        {"SuspendMaxTime", get<unsigned short, &Config::getSuspendMaxTime>, kAny, {{4, 300}}, {"get 4 -> 300"}, 300},
        {"CanStartupPowerConfig",
         get<HXStatus, &Config::getCanStartupPowerConfig>,
         kAny,
         {{7, 300}},
         {"get 7 -> 300"},
         300},
        {"VideoStartupPowerConfig",
         get<unsigned char, &Config::getVideoStartupPowerConfig>,
         kAny,
         {{8, 0}, {11, 2}, {12, 0}, {13, 0x100}},
         {"get 8 -> 0", "get 11 -> 2", "get 12 -> 0", "get 13 -> 256"},
         10},
        {"ExtFanStartupPowerConfig",
         get<HXStatus, &Config::getExtFanStartupPowerConfig>,
         kAny,
         {{9, 65535}},
         {"get 9 -> 65535"},
         65535},
        {"StartupVoltageConfig",
         get<double, &Config::getStartupVoltageConfig>,
         kAny,
         {{10, 1241}},
         {"get 10 -> 1241"},
         11.99794921875},
        {"HeatingTempLimit", get<short, &Config::getHeatingTempLimit>, "0.9.0.0", {{14, 31}}, {"get 14 -> 31"}, -25},
        {"PowerOnStartup", get<HXStatus, &Config::getPowerOnStartup>, "1.0.3.0", {{21, 255}}, {"get 21 -> 255"}, 1},
    };
    return rows;
}

const std::vector<Setter>& setters()
{
    static const std::vector<Setter> rows{
        {"StartupTriggerConfig", set<TriggerConf, &Config::setStartupTriggerConfig>, "1.0.0.0", 3, {"put 19 = 3"}},
        {"ShortButtonPressAction", set<PowerAction, &Config::setShortButtonPressAction>, "1.0.0.0", 2, {"put 16 = 2"}},
        {"LongButtonPressAction", set<PowerAction, &Config::setLongButtonPressAction>, "1.0.0.0", 1, {"put 17 = 1"}},
        {"OnOffSigAction", set<PowerAction, &Config::setOnOffSigAction>, "1.0.0.0", 0, {"put 18 = 0"}},
        {"FrontBtnTrigTime",
         set<unsigned short, &Config::setFrontBtnTrigTime>,
         kAny,
         40000,
         {"get 0 -> 50", "get 1 -> 2000", "put 0 = 50", "put 1 = 40000"}},
        {"ExtOnOffSigTrigTime",
         set<unsigned int, &Config::setExtOnOffSigTrigTime>,
         kAny,
         4275835444.0,
         {"put 3 = 4660", "put 20 = 65244"}},
        {"SuspendMaxTime", set<unsigned short, &Config::setSuspendMaxTime>, kAny, 300, {"put 4 = 300"}},
        {"CanStartupPowerConfig", set<HXStatus, &Config::setCanStartupPowerConfig>, kAny, 300, {"put 7 = 300"}},
        {"VideoStartupPowerConfig",
         set<unsigned char, &Config::setVideoStartupPowerConfig>,
         kAny,
         15,
         {"put 8 = 1", "put 11 = 2", "put 12 = 4", "put 13 = 8"}},
        {"ExtFanStartupPowerConfig", set<HXStatus, &Config::setExtFanStartupPowerConfig>, kAny, 0, {"put 9 = 0"}},
        {"StartupVoltageConfig", set<double, &Config::setStartupVoltageConfig>, kAny, 12.0, {"put 10 = 1241"}},
        {"HeatingTempLimit", set<short, &Config::setHeatingTempLimit>, "0.9.0.0", 5, {"put 14 = 61"}},
        {"PowerOnStartup", set<HXStatus, &Config::setPowerOnStartup>, "1.0.3.0", 1, {"put 21 = 1"}},
    };
    return rows;
}

} // namespace config
