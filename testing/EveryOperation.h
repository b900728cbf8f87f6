// SPDX-License-Identifier: LicenseRef-HXAux
#pragma once

#include "hx-aux/hx-aux.h"

#include <string>
#include <type_traits>

/// Every operation of every interface except `Release`, for tests of all of them: `Operations<Adc>::visit(visitor)`
/// calls `visitor("getVoltage", &Adc::getVoltage)` and so on. A test compares this table with the headers.
namespace every {

/// The interfaces as arguments of a template, sorted: `Interfaces<testing::Types>`.
template <template <class...> class List>
using Interfaces = List<Halvix::About, Halvix::Adc, Halvix::AuxVersion, Halvix::Backlight, Halvix::Buzzer,
                        Halvix::CanSetting, Halvix::Config, Halvix::Diagnostic, Halvix::DigIO, Halvix::FirmwareUpgrade,
                        Halvix::FrontLED, Halvix::HXAuxPrivate, Halvix::Lightsensor, Halvix::Power, Halvix::Telematics,
                        Halvix::TouchScreen, Halvix::TouchScreenCalib, Halvix::Video>;

/// Those with one object for the whole process: one thread creates and releases it.
template <class Interface>
constexpr bool kIsShared = std::is_same_v<Interface, Halvix::Backlight> || std::is_same_v<Interface, Halvix::Config> ||
                           std::is_same_v<Interface, Halvix::Diagnostic> || std::is_same_v<Interface, Halvix::FrontLED>;

template <class... Each>
struct Visited {
    template <class Visit>
    static void by(Visit& visit)
    {
        (visit.template operator()<Each>(), ...);
    }
};

/// `forEachInterface([]<class Interface>() { ... })`
template <class Visit>
void forEachInterface(Visit visit)
{
    Interfaces<Visited>::by(visit);
}

template <class Interface>
struct Operations;

/// Names the tests of a typed suite after the interfaces.
struct Names {
    template <class Interface>
    static std::string GetName(int)
    {
        return Operations<Interface>::kName;
    }
};

template <>
struct Operations<Halvix::About> {
    static constexpr const char* kName = "About";
    static Halvix::About* make() { return GetAbout(); }
    template <class Visit>
    static void visit(Visit&& visit)
    {
        using namespace Halvix;
        visit("getMainPCBSerial", &About::getMainPCBSerial);
        visit("getUnitSerial", &About::getUnitSerial);
        visit("getMainPCBArt", &About::getMainPCBArt);
        visit("getMainManufacturingDate", &About::getMainManufacturingDate);
        visit("getMainHWversion", &About::getMainHWversion);
        visit("getMainProdRev", &About::getMainProdRev);
        visit("getMainProdArtNr", &About::getMainProdArtNr);
        visit("getNrOfETHConnections", &About::getNrOfETHConnections);
        visit("getNrOfCANConnections", &About::getNrOfCANConnections);
        visit("getNrOfVideoConnections", &About::getNrOfVideoConnections);
        visit("getNrOfUSBConnections", &About::getNrOfUSBConnections);
        visit("getNrOfSerialConnections", &About::getNrOfSerialConnections);
        visit("getAddOnPCBSerial", &About::getAddOnPCBSerial);
        visit("getAddOnPCBArt", &About::getAddOnPCBArt);
        visit("getAddOnManufacturingDate", &About::getAddOnManufacturingDate);
        visit("getAddOnHWversion", &About::getAddOnHWversion);
        visit("getIsWLANMounted", &About::getIsWLANMounted);
        visit("getIsGPSMounted", &About::getIsGPSMounted);
        visit("getIsGPRSMounted", &About::getIsGPRSMounted);
        visit("getIsBTMounted", &About::getIsBTMounted);
    }
};

template <>
struct Operations<Halvix::Adc> {
    static constexpr const char* kName = "Adc";
    static Halvix::Adc* make() { return GetAdc(); }
    template <class Visit>
    static void visit(Visit&& visit)
    {
        using namespace Halvix;
        visit("getVoltage", &Adc::getVoltage);
    }
};

template <>
struct Operations<Halvix::AuxVersion> {
    static constexpr const char* kName = "AuxVersion";
    static Halvix::AuxVersion* make() { return GetAuxVersion(); }
    template <class Visit>
    static void visit(Visit&& visit)
    {
        using namespace Halvix;
        visit("getFPGAVersion", &AuxVersion::getFPGAVersion);
        visit("getSSVersion", &AuxVersion::getSSVersion);
        visit("getFrontVersion", &AuxVersion::getFrontVersion);
        visit("getHXAuxVersion", &AuxVersion::getHXAuxVersion);
        visit("getOSVersion", &AuxVersion::getOSVersion);
        visit("getHXAuxDrvVersion", &AuxVersion::getHXAuxDrvVersion);
    }
};

template <>
struct Operations<Halvix::Backlight> {
    static constexpr const char* kName = "Backlight";
    static Halvix::Backlight* make() { return GetBacklight(); }
    template <class Visit>
    static void visit(Visit&& visit)
    {
        using namespace Halvix;
        visit("getIntensity", &Backlight::getIntensity);
        visit("setIntensity", &Backlight::setIntensity);
        visit("getStatus", &Backlight::getStatus);
        visit("startAutomaticBL", &Backlight::startAutomaticBL);
        visit("stopAutomaticBL", &Backlight::stopAutomaticBL);
        visit("getAutomaticBLStatus", &Backlight::getAutomaticBLStatus);
        visit("setAutomaticBLParams", &Backlight::setAutomaticBLParams);
        visit("getAutomaticBLParams", &Backlight::getAutomaticBLParams);
        visit("setAutomaticBLFilter", &Backlight::setAutomaticBLFilter);
        visit("getAutomaticBLFilter", &Backlight::getAutomaticBLFilter);
        visit("getLedDimming", &Backlight::getLedDimming);
        visit("setLedDimming", &Backlight::setLedDimming);
    }
};

template <>
struct Operations<Halvix::Buzzer> {
    static constexpr const char* kName = "Buzzer";
    static Halvix::Buzzer* make() { return GetBuzzer(); }
    template <class Visit>
    static void visit(Visit&& visit)
    {
        using namespace Halvix;
        visit("getFrequency", &Buzzer::getFrequency);
        visit("getVolume", &Buzzer::getVolume);
        visit("getTrigger", &Buzzer::getTrigger);
        visit("setFrequency", &Buzzer::setFrequency);
        visit("setVolume", &Buzzer::setVolume);
        visit("setTrigger", &Buzzer::setTrigger);
        visit("buzze", &Buzzer::buzze);
    }
};

template <>
struct Operations<Halvix::CanSetting> {
    static constexpr const char* kName = "CanSetting";
    static Halvix::CanSetting* make() { return GetCanSetting(); }
    template <class Visit>
    static void visit(Visit&& visit)
    {
        using namespace Halvix;
        visit("getBaudrate", &CanSetting::getBaudrate);
        visit("getFrameType", &CanSetting::getFrameType);
        visit("setBaudrate", &CanSetting::setBaudrate);
        visit("setFrameType", &CanSetting::setFrameType);
    }
};

template <>
struct Operations<Halvix::Config> {
    static constexpr const char* kName = "Config";
    static Halvix::Config* make() { return GetConfig(); }
    template <class Visit>
    static void visit(Visit&& visit)
    {
        using namespace Halvix;
        visit("getStartupTriggerConfig", &Config::getStartupTriggerConfig);
        visit("getShortButtonPressAction", &Config::getShortButtonPressAction);
        visit("getLongButtonPressAction", &Config::getLongButtonPressAction);
        visit("getOnOffSigAction", &Config::getOnOffSigAction);
        visit("getFrontBtnTrigTime", &Config::getFrontBtnTrigTime);
        visit("getExtOnOffSigTrigTime", &Config::getExtOnOffSigTrigTime);
        visit("getSuspendMaxTime", &Config::getSuspendMaxTime);
        visit("getCanStartupPowerConfig", &Config::getCanStartupPowerConfig);
        visit("getVideoStartupPowerConfig", &Config::getVideoStartupPowerConfig);
        visit("getExtFanStartupPowerConfig", &Config::getExtFanStartupPowerConfig);
        visit("getStartupVoltageConfig", &Config::getStartupVoltageConfig);
        visit("getHeatingTempLimit", &Config::getHeatingTempLimit);
        visit("getPowerOnStartup", &Config::getPowerOnStartup);
        visit("setStartupTriggerConfig", &Config::setStartupTriggerConfig);
        visit("setShortButtonPressAction", &Config::setShortButtonPressAction);
        visit("setLongButtonPressAction", &Config::setLongButtonPressAction);
        visit("setOnOffSigAction", &Config::setOnOffSigAction);
        visit("setFrontBtnTrigTime", &Config::setFrontBtnTrigTime);
        visit("setExtOnOffSigTrigTime", &Config::setExtOnOffSigTrigTime);
        visit("setSuspendMaxTime", &Config::setSuspendMaxTime);
        visit("setCanStartupPowerConfig", &Config::setCanStartupPowerConfig);
        visit("setVideoStartupPowerConfig", &Config::setVideoStartupPowerConfig);
        visit("setExtFanStartupPowerConfig", &Config::setExtFanStartupPowerConfig);
        visit("setStartupVoltageConfig", &Config::setStartupVoltageConfig);
        visit("setHeatingTempLimit", &Config::setHeatingTempLimit);
        visit("setPowerOnStartup", &Config::setPowerOnStartup);
    }
};

template <>
struct Operations<Halvix::Diagnostic> {
    static constexpr const char* kName = "Diagnostic";
    static Halvix::Diagnostic* make() { return GetDiagnostic(); }
    template <class Visit>
    static void visit(Visit&& visit)
    {
        using namespace Halvix;
        visit("getSSTemp", &Diagnostic::getSSTemp);
        visit("getPCBTemp", &Diagnostic::getPCBTemp);
        visit("getPMTemp", &Diagnostic::getPMTemp);
        visit("getStartupReason", &Diagnostic::getStartupReason);
        visit("getShutDownReason", &Diagnostic::getShutDownReason);
        visit("getHwErrorStatus", &Diagnostic::getHwErrorStatus);
        visit("getTimer", &Diagnostic::getTimer);
        visit("getMinMaxTemp", &Diagnostic::getMinMaxTemp);
        visit("getPowerCycles", &Diagnostic::getPowerCycles);
        visit("clearHwErrorStatus", &Diagnostic::clearHwErrorStatus);
    }
};

template <>
struct Operations<Halvix::DigIO> {
    static constexpr const char* kName = "DigIO";
    static Halvix::DigIO* make() { return GetDigIO(); }
    template <class Visit>
    static void visit(Visit&& visit)
    {
        using namespace Halvix;
        visit("getDigIO", &DigIO::getDigIO);
    }
};

template <>
struct Operations<Halvix::FirmwareUpgrade> {
    static constexpr const char* kName = "FirmwareUpgrade";
    static Halvix::FirmwareUpgrade* make() { return GetFirmwareUpgrade(); }
    template <class Visit>
    static void visit(Visit&& visit)
    {
        using namespace Halvix;
        visit("startFpgaUpgrade", &FirmwareUpgrade::startFpgaUpgrade);
        visit("startFpgaVerification", &FirmwareUpgrade::startFpgaVerification);
        visit("startSSUpgrade", &FirmwareUpgrade::startSSUpgrade);
        visit("startSSVerification", &FirmwareUpgrade::startSSVerification);
        visit("startFrontUpgrade", &FirmwareUpgrade::startFrontUpgrade);
        visit("startFrontVerification", &FirmwareUpgrade::startFrontVerification);
        visit("getUpgradeStatus", &FirmwareUpgrade::getUpgradeStatus);
        visit("shutDown", &FirmwareUpgrade::shutDown);
    }
};

template <>
struct Operations<Halvix::FrontLED> {
    static constexpr const char* kName = "FrontLED";
    static Halvix::FrontLED* make() { return GetFrontLED(); }
    template <class Visit>
    static void visit(Visit&& visit)
    {
        using namespace Halvix;
        visit("getSignal", &FrontLED::getSignal);
        visit("getOnTime", &FrontLED::getOnTime);
        visit("getOffTime", &FrontLED::getOffTime);
        visit("getIdleTime", &FrontLED::getIdleTime);
        visit("getNrOfPulses", &FrontLED::getNrOfPulses);
        visit("getColor",
              static_cast<eErr (FrontLED::*)(unsigned char*, unsigned char*, unsigned char*)>(&FrontLED::getColor));
        visit("getColor", static_cast<eErr (FrontLED::*)(HXAuxColor*)>(&FrontLED::getColor));
        visit("getEnabledDuringStartup", &FrontLED::getEnabledDuringStartup);
        visit("setSignal", &FrontLED::setSignal);
        visit("setOnTime", &FrontLED::setOnTime);
        visit("setOffTime", &FrontLED::setOffTime);
        visit("setIdleTime", &FrontLED::setIdleTime);
        visit("setNrOfPulses", &FrontLED::setNrOfPulses);
        visit("setColor",
              static_cast<eErr (FrontLED::*)(unsigned char, unsigned char, unsigned char)>(&FrontLED::setColor));
        visit("setColor", static_cast<eErr (FrontLED::*)(HXAuxColor)>(&FrontLED::setColor));
        visit("setOff", &FrontLED::setOff);
        visit("setEnabledDuringStartup", &FrontLED::setEnabledDuringStartup);
    }
};

template <>
struct Operations<Halvix::HXAuxPrivate> {
    static constexpr const char* kName = "HXAuxPrivate";
    static Halvix::HXAuxPrivate* make() { return GetHXAuxPrivate(); }
    template <class Visit>
    static void visit(Visit&& visit)
    {
        using namespace Halvix;
        visit("getEepromProperty", &HXAuxPrivate::getEepromProperty);
        visit("setEepromProperty", &HXAuxPrivate::setEepromProperty);
        visit("getFromSmart", &HXAuxPrivate::getFromSmart);
        visit("setToSmart", &HXAuxPrivate::setToSmart);
        visit("automaticBacklightInit", &HXAuxPrivate::automaticBacklightInit);
        visit("setFileSetting", &HXAuxPrivate::setFileSetting);
        visit("getFileSetting", &HXAuxPrivate::getFileSetting);
        visit("resumeVideo", &HXAuxPrivate::resumeVideo);
    }
};

template <>
struct Operations<Halvix::Lightsensor> {
    static constexpr const char* kName = "Lightsensor";
    static Halvix::Lightsensor* make() { return GetLightsensor(); }
    template <class Visit>
    static void visit(Visit&& visit)
    {
        using namespace Halvix;
        visit("getIlluminance", static_cast<eErr (Lightsensor::*)(unsigned short*)>(&Lightsensor::getIlluminance));
        visit("getIlluminance", static_cast<eErr (Lightsensor::*)(unsigned short*, unsigned char*, unsigned char*)>(
                                    &Lightsensor::getIlluminance));
        visit("getAverageIlluminance", &Lightsensor::getAverageIlluminance);
        visit("startAverageCalc", &Lightsensor::startAverageCalc);
        visit("stopAverageCalc", &Lightsensor::stopAverageCalc);
        visit("getOperatingRange", &Lightsensor::getOperatingRange);
        visit("setOperatingRange", &Lightsensor::setOperatingRange);
    }
};

template <>
struct Operations<Halvix::Power> {
    static constexpr const char* kName = "Power";
    static Halvix::Power* make() { return GetPower(); }
    template <class Visit>
    static void visit(Visit&& visit)
    {
        using namespace Halvix;
        visit("getBLPowerStatus", &Power::getBLPowerStatus);
        visit("getCanPowerStatus", &Power::getCanPowerStatus);
        visit("getVideoPowerStatus", &Power::getVideoPowerStatus);
        visit("getExtFanPowerStatus", &Power::getExtFanPowerStatus);
        visit("setBLPowerStatus", &Power::setBLPowerStatus);
        visit("setCanPowerStatus", &Power::setCanPowerStatus);
        visit("setVideoPowerStatus", &Power::setVideoPowerStatus);
        visit("setExtFanPowerStatus", &Power::setExtFanPowerStatus);
        visit("getButtonPowerTransitionStatus", &Power::getButtonPowerTransitionStatus);
        visit("ackPowerRequest", &Power::ackPowerRequest);
    }
};

template <>
struct Operations<Halvix::Telematics> {
    static constexpr const char* kName = "Telematics";
    static Halvix::Telematics* make() { return GetTelematics(); }
    template <class Visit>
    static void visit(Visit&& visit)
    {
        using namespace Halvix;
        visit("getTelematicsAvailable", &Telematics::getTelematicsAvailable);
        visit("getGPRSPowerStatus", &Telematics::getGPRSPowerStatus);
        visit("getGPRSStartUpPowerStatus", &Telematics::getGPRSStartUpPowerStatus);
        visit("getWLANPowerStatus", &Telematics::getWLANPowerStatus);
        visit("getWLANStartUpPowerStatus", &Telematics::getWLANStartUpPowerStatus);
        visit("getGPSAntennaStatus", &Telematics::getGPSAntennaStatus);
        visit("setGPRSPowerStatus", &Telematics::setGPRSPowerStatus);
        visit("setGPRSStartUpPowerStatus", &Telematics::setGPRSStartUpPowerStatus);
        visit("setWLANPowerStatus", &Telematics::setWLANPowerStatus);
        visit("setWLANStartUpPowerStatus", &Telematics::setWLANStartUpPowerStatus);
    }
};

template <>
struct Operations<Halvix::TouchScreen> {
    static constexpr const char* kName = "TouchScreen";
    static Halvix::TouchScreen* make() { return GetTouchScreen(); }
    template <class Visit>
    static void visit(Visit&& visit)
    {
        using namespace Halvix;
        visit("getMode", &TouchScreen::getMode);
        visit("getMouseRightClickTime", &TouchScreen::getMouseRightClickTime);
        visit("setMode", &TouchScreen::setMode);
        visit("setMouseRightClickTime", &TouchScreen::setMouseRightClickTime);
        visit("setAdvancedSetting", &TouchScreen::setAdvancedSetting);
        visit("getAdvancedSetting", &TouchScreen::getAdvancedSetting);
    }
};

template <>
struct Operations<Halvix::TouchScreenCalib> {
    static constexpr const char* kName = "TouchScreenCalib";
    static Halvix::TouchScreenCalib* make() { return GetTouchScreenCalib(); }
    template <class Visit>
    static void visit(Visit&& visit)
    {
        using namespace Halvix;
        visit("SetMode", &TouchScreenCalib::SetMode);
        visit("GetMode", &TouchScreenCalib::GetMode);
        visit("SetCalibrationPoint", &TouchScreenCalib::SetCalibrationPoint);
        visit("CheckCalibrationPointFinished", &TouchScreenCalib::CheckCalibrationPointFinished);
        visit("GetConfigParam", &TouchScreenCalib::GetConfigParam);
        visit("SetConfigParam", &TouchScreenCalib::SetConfigParam);
    }
};

template <>
struct Operations<Halvix::Video> {
    static constexpr const char* kName = "Video";
    static Halvix::Video* make() { return GetVideo(); }
    template <class Visit>
    static void visit(Visit&& visit)
    {
        using namespace Halvix;
        visit("init", &Video::init);
        visit("showVideo", &Video::showVideo);
        visit("setDeInterlaceMode", &Video::setDeInterlaceMode);
        visit("getDeInterlaceMode", &Video::getDeInterlaceMode);
        visit("setMirroring", &Video::setMirroring);
        visit("getMirroring", &Video::getMirroring);
        visit("setActiveChannel", &Video::setActiveChannel);
        visit("getActiveChannel", &Video::getActiveChannel);
        visit("setColorKeys", &Video::setColorKeys);
        visit("getColorKeys", &Video::getColorKeys);
        visit("setVideoArea", &Video::setVideoArea);
        visit("getVideoArea", &Video::getVideoArea);
        visit("getRawImage", &Video::getRawImage);
        visit("getVideoStandard", &Video::getVideoStandard);
        visit("getStatus", &Video::getStatus);
        visit("setScaling", &Video::setScaling);
        visit("getScaling", &Video::getScaling);
        visit("activateSnapshot", &Video::activateSnapshot);
        visit("takeSnapshot", &Video::takeSnapshot);
        visit("takeSnapshotRaw", &Video::takeSnapshotRaw);
        visit("takeSnapshotBmp", &Video::takeSnapshotBmp);
        visit("createBitmap", &Video::createBitmap);
        visit("freeBmpBuffer", &Video::freeBmpBuffer);
        visit("minimize", &Video::minimize);
        visit("restore", &Video::restore);
        visit("setDecoderReg", &Video::setDecoderReg);
        visit("getDecoderReg", &Video::getDecoderReg);
        visit("setCropping", &Video::setCropping);
        visit("getCropping", &Video::getCropping);
    }
};

} // namespace every
