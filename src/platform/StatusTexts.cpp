// SPDX-License-Identifier: LicenseRef-HXAux
#include "hx-aux/status-texts.h"
#include "platform/TextPair.h"

#include <iterator>

namespace Halvix {

// The texts are compared by applications: missing, double and trailing blanks are part of them and stay.
TextPair hwErrorStatusTexts[] = {
    HX_TEXT("No Error"), // 0
    HX_TEXT("FPGA CONF Read Error"),
    HX_TEXT("FPGACONF Unexpected Value"),
    HX_TEXT("CBRESET Read Error"),
    HX_TEXT("SUS3Read Error"),
    HX_TEXT("SUS4Read Error"),
    HX_TEXT("SUS5Read Error"),
    HX_TEXT("PG 5VSTBY Read Error"),
    HX_TEXT("PG 5VSTBY Unexpected Value"),
    HX_TEXT("CAN PWR OK Read Error"),
    HX_TEXT("VID PWR OK Read Error"), // 10
    HX_TEXT("LVDS BL EN Read Error"),
    HX_TEXT("LVDS VDD EN Read Error"),
    HX_TEXT("EXTCTRL ON Read Error"),
    HX_TEXT("FPBTN ON Read Error"),
    HX_TEXT("24V Read Error"),
    HX_TEXT("24V Out Of Limits"),
    HX_TEXT("24VIN Read Error"),
    HX_TEXT("24VIN Out Of Limits"),
    HX_TEXT("12V Read Error"),
    HX_TEXT("12V Out Of Limits"), // 20
    HX_TEXT("12VVIDEO Read Error"),
    HX_TEXT("12VVIDEO Out Of Limits"),
    HX_TEXT("5VSTBY Read Error"),
    HX_TEXT("5VSTBY Out Of Limits"),
    HX_TEXT("5VRead Error"),
    HX_TEXT("5V Out Of Limits"),
    HX_TEXT("3V3 Read Error"),
    HX_TEXT("3V3 Out Of Limits"),
    HX_TEXT("TFTVOL Read Error"),
    HX_TEXT("TFTVOL Out Of Limits"), // 30
    HX_TEXT("1V9 Read Error"),
    HX_TEXT("1V9 Out Of Limits"),
    HX_TEXT("1V8 Read Error"),
    HX_TEXT("1V8 Out Of Limits"),
    HX_TEXT("1V5 Read Error"),
    HX_TEXT("1V5 Out Of Limits"),
    HX_TEXT("1V2 Read Error"),
    HX_TEXT("1V2 Out Of Limits"),
    HX_TEXT("1V05 Read Error"),
    HX_TEXT("1V05 Out Of Limits"), // 40
    HX_TEXT("1V0 Read Error"),
    HX_TEXT("1V0 Out Of Limits"),
    HX_TEXT("0V9 Read Error"),
    HX_TEXT("0V9 Out Of Limits"),
    HX_TEXT("I2CTEMP Read Error"),
    HX_TEXT("I2CTEMP Out Of Limits"),
    HX_TEXT("STM32TEMP Read Error"),
    HX_TEXT("STM32TEMP Out Of Limits"),
    HX_TEXT("BLTYPE Unexpected EEPROM Value"),
    HX_TEXT("FPBTN Unexpected EEPROM Value"), // 50
    HX_TEXT("EXTCTRL Unexpected EEPROM Value"),
    HX_TEXT("LowRange24V Unexpected EEPROM Value"),
    HX_TEXT("SuspToRAM  Unexpected EEPROM Value"),
    HX_TEXT("CANPWR Unexpected EEPROM Value"),
    HX_TEXT("VID1PWR Unexpected EEPROM Value"),
    HX_TEXT("VID2PWR Unexpected EEPROM Value"),
    HX_TEXT("VID3PWR Unexpected EEPROM Value"),
    HX_TEXT("VID4PWR Unexpected EEPROM Value"),
    HX_TEXT("EXTFAN Unexpected EEPROM Value"),
    HX_TEXT("LED Unexpected EEPROM Value"), // 60
    HX_TEXT("UnitType Unexpected EEPROM Value"),
    HX_TEXT("BLTYPE Read Error EEPROM"),
    HX_TEXT("FPBTN Read Error EEPROM"),
    HX_TEXT("EXTCTRL Read Error EEPROM"),
    HX_TEXT("MaxSuspTime Read Error EEPROM"),
    HX_TEXT("LowRange24V Read Error EEPROM"),
    HX_TEXT("SuspToRAM Read Error EEPROM"),
    HX_TEXT("CANPWR Read Error EEPROM"),
    HX_TEXT("VID1PWR Read Error EEPROM"),
    HX_TEXT("VID2PWR Read Error EEPROM"), // 70
    HX_TEXT("VID3PWR Read Error EEPROM"),
    HX_TEXT("VID4PWR Read Error EEPROM"),
    HX_TEXT("EXTFAN Read Error EEPROM"),
    HX_TEXT("LED Read Error EEPROM "),
    HX_TEXT("UnitType Read Error EEPROM "),
    HX_TEXT("RCCInit"),
    HX_TEXT("DriverInit"),
    HX_TEXT("SetSUPPLYRESET"),
    HX_TEXT("RelSUPPLYRESET"),
    HX_TEXT("SetSYSRESET"), // 80
    HX_TEXT("RelSYSRESET"),
    HX_TEXT("SetPWRBTN"),
    HX_TEXT("RelPWRBTN"),
    HX_TEXT("OnBL"),
    HX_TEXT("OffBL"),
    HX_TEXT("EXTFANOn"),
    HX_TEXT("EXTFANOff"),
    HX_TEXT("PWRENOn"),
    HX_TEXT("PWRENOff"),
    HX_TEXT("MPPWRENOn"), // 90
    HX_TEXT("MPPWRENOff"),
    HX_TEXT("CANPWRENOn"),
    HX_TEXT("CANPWRENOff"),
    HX_TEXT("VID1PWRENOn"),
    HX_TEXT("VID1PWRENOff"),
    HX_TEXT("VID2PWRENOn"),
    HX_TEXT("VID2PWRENOff"),
    HX_TEXT("VID3PWRENOn"),
    HX_TEXT("VID3PWRENOff"),
    HX_TEXT("VID4PWRENOn"), // 100
    HX_TEXT("VID4PWRENOff"),
    HX_TEXT("HEATACTOn"),
    HX_TEXT("HEATACTOff"),
    HX_TEXT("SetLEDCol"),
    HX_TEXT("SetLEDFreq"),
    HX_TEXT("ManageLED"),
    HX_TEXT("ManageCANPwr"),
    HX_TEXT("ManageMPPwr"),
    HX_TEXT("ManageVidPwr"),
    HX_TEXT("ManagePowSup"), // 110
    HX_TEXT("ManageReset"),
    HX_TEXT("SSState"),
    HX_TEXT("VarWrapAround"),
    HX_TEXT("FPBTN Unexpected Value"),
    HX_TEXT("EXTCTRL Unexpected Value"),
    HX_TEXT("MAINPWROK Read Error"),
    HX_TEXT("FRONTSPARE Read Error"),
    HX_TEXT("TIMERRead Error"),
    HX_TEXT("ManageDiagnostics"),
    HX_TEXT("FPBTNTimOut Read Error EEPROM"), // 120
    HX_TEXT("EXTCTRLTimOut Read Error EEPROM"),
    HX_TEXT("FPBTNAndExtCtrlDisabled"),
    HX_TEXT("SWVerRead Error"),
    HX_TEXT("SWVerWrite Error"),
    HX_TEXT("ManageActDeAct"),
    HX_TEXT("TickTimeOutTimer"),
    HX_TEXT("OperateModeStateError"),
    HX_TEXT("Heating Temperature Read Error EEPROM"),
    HX_TEXT("MP could not be started"),
    HX_TEXT("Read Error EEPROM"), // 130
    HX_TEXT("TimeOut Waiting For Supply Voltages"),
};
static_assert(std::size(hwErrorStatusTexts) == 132);

TextPair unknownHwErrorStatusText = HX_TEXT("Unknown error code");

TextPair startupReasonTexts[] = {
    HX_TEXT("Unknown"),
    HX_TEXT("Power on start-up"),
    HX_TEXT("Front Panel Button"),
    HX_TEXT("External Control Signal"),
    HX_TEXT("OS Restart"),
};

namespace {

const TextPair& hwErrorStatusPair(unsigned short code)
{
    return code < std::size(hwErrorStatusTexts) ? hwErrorStatusTexts[code] : unknownHwErrorStatusText;
}

const TextPair& startupReasonPair(unsigned short code)
{
    switch (code) {
    case 0x0F:
        return startupReasonTexts[1];
    case 0x55:
        return startupReasonTexts[2];
    case 0xAA:
        return startupReasonTexts[3];
    case 0xF0:
        return startupReasonTexts[4];
    default:
        return startupReasonTexts[0];
    }
}

} // namespace

} // namespace Halvix

const char* GetHwErrorStatusStringA(unsigned short code)
{
    return Halvix::hwErrorStatusPair(code).narrow;
}

const wchar_t* GetHwErrorStatusStringW(unsigned short code)
{
    return Halvix::hwErrorStatusPair(code).wide;
}

const char* GetStartupReasonStringA(unsigned short code)
{
    return Halvix::startupReasonPair(code).narrow;
}

const wchar_t* GetStartupReasonStringW(unsigned short code)
{
    return Halvix::startupReasonPair(code).wide;
}
