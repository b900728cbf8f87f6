// SPDX-License-Identifier: LicenseRef-HXAux
#include "hx-aux/status-texts.h"
#include "platform/TextPair.h"

#include <gmock/gmock.h>

#include <cwchar>
#include <iterator>
#include <string>
#include <utility>

namespace status_texts_test {

using namespace Halvix;

namespace {

// By their codes, 0 to 131. Missing, double and trailing blanks are part of the texts.
const char* const kHwErrorStatus[] = {
    "No Error",
    "FPGA CONF Read Error",
    "FPGACONF Unexpected Value",
    "CBRESET Read Error",
    "SUS3Read Error",
    "SUS4Read Error",
    "SUS5Read Error",
    "PG 5VSTBY Read Error",
    "PG 5VSTBY Unexpected Value",
    "CAN PWR OK Read Error",
    "VID PWR OK Read Error",
    "LVDS BL EN Read Error",
    "LVDS VDD EN Read Error",
    "EXTCTRL ON Read Error",
    "FPBTN ON Read Error",
    "24V Read Error",
    "24V Out Of Limits",
    "24VIN Read Error",
    "24VIN Out Of Limits",
    "12V Read Error",
    "12V Out Of Limits",
    "12VVIDEO Read Error",
    "12VVIDEO Out Of Limits",
    "5VSTBY Read Error",
    "5VSTBY Out Of Limits",
    "5VRead Error",
    "5V Out Of Limits",
    "3V3 Read Error",
    "3V3 Out Of Limits",
    "TFTVOL Read Error",
    "TFTVOL Out Of Limits",
    "1V9 Read Error",
    "1V9 Out Of Limits",
    "1V8 Read Error",
    "1V8 Out Of Limits",
    "1V5 Read Error",
    "1V5 Out Of Limits",
    "1V2 Read Error",
    "1V2 Out Of Limits",
    "1V05 Read Error",
    "1V05 Out Of Limits",
    "1V0 Read Error",
    "1V0 Out Of Limits",
    "0V9 Read Error",
    "0V9 Out Of Limits",
    "I2CTEMP Read Error",
    "I2CTEMP Out Of Limits",
    "STM32TEMP Read Error",
    "STM32TEMP Out Of Limits",
    "BLTYPE Unexpected EEPROM Value",
    "FPBTN Unexpected EEPROM Value",
    "EXTCTRL Unexpected EEPROM Value",
    "LowRange24V Unexpected EEPROM Value",
    "SuspToRAM  Unexpected EEPROM Value",
    "CANPWR Unexpected EEPROM Value",
    "VID1PWR Unexpected EEPROM Value",
    "VID2PWR Unexpected EEPROM Value",
    "VID3PWR Unexpected EEPROM Value",
    "VID4PWR Unexpected EEPROM Value",
    "EXTFAN Unexpected EEPROM Value",
    "LED Unexpected EEPROM Value",
    "UnitType Unexpected EEPROM Value",
    "BLTYPE Read Error EEPROM",
    "FPBTN Read Error EEPROM",
    "EXTCTRL Read Error EEPROM",
    "MaxSuspTime Read Error EEPROM",
    "LowRange24V Read Error EEPROM",
    "SuspToRAM Read Error EEPROM",
    "CANPWR Read Error EEPROM",
    "VID1PWR Read Error EEPROM",
    "VID2PWR Read Error EEPROM",
    "VID3PWR Read Error EEPROM",
    "VID4PWR Read Error EEPROM",
    "EXTFAN Read Error EEPROM",
    "LED Read Error EEPROM ",
    "UnitType Read Error EEPROM ",
    "RCCInit",
    "DriverInit",
    "SetSUPPLYRESET",
    "RelSUPPLYRESET",
    "SetSYSRESET",
    "RelSYSRESET",
    "SetPWRBTN",
    "RelPWRBTN",
    "OnBL",
    "OffBL",
    "EXTFANOn",
    "EXTFANOff",
    "PWRENOn",
    "PWRENOff",
    "MPPWRENOn",
    "MPPWRENOff",
    "CANPWRENOn",
    "CANPWRENOff",
    "VID1PWRENOn",
    "VID1PWRENOff",
    "VID2PWRENOn",
    "VID2PWRENOff",
    "VID3PWRENOn",
    "VID3PWRENOff",
    "VID4PWRENOn",
    "VID4PWRENOff",
    "HEATACTOn",
    "HEATACTOff",
    "SetLEDCol",
    "SetLEDFreq",
    "ManageLED",
    "ManageCANPwr",
    "ManageMPPwr",
    "ManageVidPwr",
    "ManagePowSup",
    "ManageReset",
    "SSState",
    "VarWrapAround",
    "FPBTN Unexpected Value",
    "EXTCTRL Unexpected Value",
    "MAINPWROK Read Error",
    "FRONTSPARE Read Error",
    "TIMERRead Error",
    "ManageDiagnostics",
    "FPBTNTimOut Read Error EEPROM",
    "EXTCTRLTimOut Read Error EEPROM",
    "FPBTNAndExtCtrlDisabled",
    "SWVerRead Error",
    "SWVerWrite Error",
    "ManageActDeAct",
    "TickTimeOutTimer",
    "OperateModeStateError",
    "Heating Temperature Read Error EEPROM",
    "MP could not be started",
    "Read Error EEPROM",
    "TimeOut Waiting For Supply Voltages",
};

std::string narrowed(const wchar_t* wide)
{
    return {wide, wide + std::wcslen(wide)};
}

} // namespace

TEST(HwErrorStatusTexts, AreTheirFixedTextsForEveryCode)
{
    ASSERT_EQ(std::size(kHwErrorStatus), 132U);
    for (unsigned short code = 0; code < 132; ++code)
        EXPECT_STREQ(GetHwErrorStatusStringA(code), kHwErrorStatus[code]) << code;
}

TEST(HwErrorStatusTexts, AreTheSameInWideCharacters)
{
    for (unsigned short code = 0; code < 132; ++code)
        EXPECT_EQ(narrowed(GetHwErrorStatusStringW(code)), kHwErrorStatus[code]) << code;
}

TEST(HwErrorStatusTexts, BeginWithNoErrorAndEndWithTheSupplyTimeout)
{
    EXPECT_STREQ(GetHwErrorStatusStringA(0), "No Error");
    EXPECT_STREQ(GetHwErrorStatusStringA(131), "TimeOut Waiting For Supply Voltages");
}

TEST(HwErrorStatusTexts, AreUnknownAbove131)
{
    for (const unsigned code : {132U, 133U, 255U, 256U, 0x8000U, 0xFFFFU}) {
        EXPECT_STREQ(GetHwErrorStatusStringA(static_cast<unsigned short>(code)), "Unknown error code");
        EXPECT_STREQ(GetHwErrorStatusStringW(static_cast<unsigned short>(code)), L"Unknown error code");
    }
}

TEST(HwErrorStatusTexts, KeepTheirOddBlanks)
{
    EXPECT_STREQ(GetHwErrorStatusStringA(53), "SuspToRAM  Unexpected EEPROM Value");
    EXPECT_STREQ(GetHwErrorStatusStringA(74), "LED Read Error EEPROM ");
    EXPECT_STREQ(GetHwErrorStatusStringA(75), "UnitType Read Error EEPROM ");
    EXPECT_STREQ(GetHwErrorStatusStringA(4), "SUS3Read Error");
}

TEST(HwErrorStatusTexts, AreWritablePairsThatBothFunctionsRead)
{
    const TextPair saved = hwErrorStatusTexts[3];

    hwErrorStatusTexts[3] = {"replaced", L"replaced too"};

    EXPECT_STREQ(GetHwErrorStatusStringA(3), "replaced");
    EXPECT_STREQ(GetHwErrorStatusStringW(3), L"replaced too");
    hwErrorStatusTexts[3] = saved;
}

TEST(StartupReasonTexts, AreKnownForFourCodes)
{
    const std::pair<unsigned short, const char*> known[] = {
        {15, "Power on start-up"}, {85, "Front Panel Button"}, {170, "External Control Signal"}, {240, "OS Restart"}};
    for (const auto& [code, text] : known) {
        EXPECT_STREQ(GetStartupReasonStringA(code), text);
        EXPECT_EQ(narrowed(GetStartupReasonStringW(code)), text);
    }
}

TEST(StartupReasonTexts, AnswerTheWideTextOfTheExternalSignal)
{
    EXPECT_STREQ(GetStartupReasonStringW(0xAA), L"External Control Signal");
}

TEST(StartupReasonTexts, AreUnknownForEveryOtherCode)
{
    for (unsigned code = 0; code <= 0xFFFF; ++code) {
        if (code == 0x0F || code == 0x55 || code == 0xAA || code == 0xF0)
            continue;
        ASSERT_STREQ(GetStartupReasonStringA(static_cast<unsigned short>(code)), "Unknown") << code;
        ASSERT_STREQ(GetStartupReasonStringW(static_cast<unsigned short>(code)), L"Unknown") << code;
    }
}

TEST(StartupReasonTexts, AreWritablePairsThatBothFunctionsRead)
{
    const TextPair saved = startupReasonTexts[4];

    startupReasonTexts[4] = {"replaced", L"replaced too"};

    EXPECT_STREQ(GetStartupReasonStringA(0xF0), "replaced");
    EXPECT_STREQ(GetStartupReasonStringW(0xF0), L"replaced too");
    startupReasonTexts[4] = saved;
}

} // namespace status_texts_test
