// SPDX-License-Identifier: LicenseRef-HXAux
#include "tests/system/conformance/Checks.h"

namespace conformance {

using namespace Halvix;

namespace {

std::string advancedSetting()
{
    Held touch{GetTouchScreen()};
    unsigned short value = 0;
    const eErr set = touch->setAdvancedSetting(static_cast<TSAdvancedSettingsParameter>(1), 4095);
    const eErr got = touch->getAdvancedSetting(static_cast<TSAdvancedSettingsParameter>(1), &value);
    return answer(set) + " " + answer(got, value);
}

std::string configParameter()
{
    Held calibration{GetTouchScreenCalib()};
    unsigned short value = 0;
    const eErr set = calibration->SetConfigParam(static_cast<CalibrationConfigParam>(2), 77);
    const eErr got = calibration->GetConfigParam(static_cast<CalibrationConfigParam>(2), &value);
    return answer(set) + " " + answer(got, value);
}

std::string bitRate()
{
    Held can{GetCanSetting()};
    unsigned short kbit = 0;
    const eErr set = can->setBaudrate(1, 250);
    const eErr got = can->getBaudrate(1, &kbit);
    return answer(set) + " " + answer(got, kbit);
}

} // namespace

Checks peripherals()
{
    return {
        gets("Telematics.getTelematicsAvailable", GetTelematics, &Telematics::getTelematicsAvailable, "0 1"),
        keeps("Telematics.setGPRSPowerStatus", GetTelematics, &Telematics::setGPRSPowerStatus,
              &Telematics::getGPRSPowerStatus, HXStatusEnabled),
        keeps("Telematics.setWLANPowerStatus", GetTelematics, &Telematics::setWLANPowerStatus,
              &Telematics::getWLANPowerStatus, HXStatusEnabled),
        keeps("Telematics.setGPRSStartUpPowerStatus", GetTelematics, &Telematics::setGPRSStartUpPowerStatus,
              &Telematics::getGPRSStartUpPowerStatus, HXStatusEnabled),
        keeps("Telematics.setWLANStartUpPowerStatus", GetTelematics, &Telematics::setWLANStartUpPowerStatus,
              &Telematics::getWLANStartUpPowerStatus, HXStatusEnabled),
        {"Telematics.getGPSAntennaStatus", "0",
         [] {
             Held telematics{GetTelematics()};
             HXStatus status = HXStatusDisabled;
             return answer(telematics->getGPSAntennaStatus(&status));
         }},
        keeps("TouchScreen.setMode", GetTouchScreen, &TouchScreen::setMode, &TouchScreen::getMode,
              static_cast<TouchScreenModeSettings>(2)),
        keeps("TouchScreen.setMouseRightClickTime", GetTouchScreen, &TouchScreen::setMouseRightClickTime,
              &TouchScreen::getMouseRightClickTime, 900),
        {"TouchScreen.setAdvancedSetting", "0 0 4095", advancedSetting},
        gets("TouchScreenCalib.GetMode", GetTouchScreenCalib, &TouchScreenCalib::GetMode, "0 0"),
        sets("TouchScreenCalib.SetMode 5", "8", GetTouchScreenCalib, &TouchScreenCalib::SetMode,
             static_cast<CalibrationModeSettings>(5)),
        sets("TouchScreenCalib.SetCalibrationPoint", "21", GetTouchScreenCalib, &TouchScreenCalib::SetCalibrationPoint,
             1),
        {"TouchScreenCalib.CheckCalibrationPointFinished", "0 0",
         [] {
             Held calibration{GetTouchScreenCalib()};
             bool finished = true;
             const eErr err = calibration->CheckCalibrationPointFinished(&finished, 3);
             return answer(err, finished);
         }},
        {"TouchScreenCalib.SetConfigParam", "0 0 77", configParameter},
        {"CanSetting.setBaudrate", "0 0 250", bitRate},
        sets("CanSetting.setBaudrate 5", "9", GetCanSetting, &CanSetting::setBaudrate, 5, 250),
        sets("CanSetting.setFrameType", "2", GetCanSetting, &CanSetting::setFrameType, 1, CanFrameTypeExtended),
        {"CanSetting.getFrameType", "2",
         [] {
             Held can{GetCanSetting()};
             CanFrameType type = CanFrameTypeExtended;
             return answer(can->getFrameType(1, &type));
         }},
    };
}

} // namespace conformance
