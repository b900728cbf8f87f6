// SPDX-License-Identifier: LicenseRef-HXAux
#include "hx-aux/errors.h"
#include "platform/TextPair.h"

#include <gmock/gmock.h>

#include <cwchar>
#include <string>

using namespace Halvix;

namespace {

struct Text {
    eErr code;
    int number;
    const char* text;
};

const Text kTexts[] = {
    {ERR_SUCCESS, 0, "ERR_SUCCESS"},
    {ERR_OPEN_FAILED, 1, "Open failed"},
    {ERR_NOT_SUPPORTED, 2, "Not supported"},
    {ERR_UNKNOWN_FEATURE, 3, "Unknown feature"},
    {ERR_DATATYPE_MISMATCH, 4, "Datatype mismatch"},
    {ERR_CODE_NOT_EXIST, 5, "Code not exist"},
    {ERR_BUFFER_SIZE, 6, "Buffer size error"},
    {ERR_IOCTRL_FAILED, 7, "IoCtrl operation failed"},
    {ERR_INVALID_DATA, 8, "Invalid data (range)"},
    {ERR_INVALID_PARAMETER, 9, "Invalid parameter (NULL pointer)"},
    {ERR_CREATE_THREAD, 10, "Error creating thread"},
    {ERR_IN_PROGRESS, 11, "Function in progress"},
    {ERR_CHECKSUM, 12, "Checksum incorrect when converting file"},
    {ERR_INIT_FAILED, 13, "Initialisation failed"},
    {ERR_VERIFY_FAILED, 14, "Verify failed"},
    {ERR_DEVICE_READ_DATA_FAILED, 15, "Failed to read data from device"},
    {ERR_DEVICE_WRITE_DATA_FAILED, 16, "Failed to write data to device"},
    {ERR_COMMAND_FAILED, 17, "Failed to execute command"},
    {ERR_JIDA_EEPROM, 18, "Failed to access eeprom (JIDA)"},
    {ERR_JIDA_TEMP, 19, "Failed to read temperature (JIDA)"},
    {ERR_AVERAGE_CALC_STARTED, 20, "Average calulation started by other process"},
    {ERR_NOT_RUNNING, 21, "Function not running"},
    {ERR_I2C_EXPANDER_READ_FAILED, 22, "Failed to read from I2C expander (JIDA)"},
    {ERR_I2C_EXPANDER_WRITE_FAILED, 23, "Failed to write to I2C expander (JIDA)"},
    {ERR_I2C_EXPANDER_INIT_FAILED, 24, "I2C expander initialisation failed (JIDA)"},
    {ERR_NEWER_SS_VERSION_REQUIRED, 25, "A newer version of SS is required"},
    {ERR_NEWER_FPGA_VERSION_REQUIRED, 26, "A newer version of FPGA is required"},
    {ERR_NEWER_FRONT_VERSION_REQUIRED, 27, "A newer version of Front uc is required"},
    {ERR_TELEMATICS_GPRS_NOT_AVAILABLE, 28, "The GSM/GPRS module is not available"},
    {ERR_TELEMATICS_WLAN_NOT_AVAILABLE, 29, "The WLAN module is not available"},
    {ERR_TELEMATICS_BT_NOT_AVAILABLE, 30, "The Bluetooth module is not available"},
    {ERR_TELEMATICS_GPS_NOT_AVAILABLE, 31, "The GPS module is not available"},
    {ERR_MEM_ALLOC_FAIL, 32, "Failed to allocate memory"},
};

std::string narrowed(const wchar_t* wide)
{
    return {wide, wide + std::wcslen(wide)};
}

} // namespace

TEST(ErrorTexts, AreFixedForEveryCode)
{
    for (const Text& entry : kTexts) {
        EXPECT_EQ(static_cast<int>(entry.code), entry.number);
        EXPECT_STREQ(GetErrorStringA(entry.code), entry.text);
    }
}

TEST(ErrorTexts, AreTheSameInWideCharacters)
{
    for (const Text& entry : kTexts)
        EXPECT_EQ(narrowed(GetErrorStringW(entry.code)), entry.text);
}

TEST(ErrorTexts, KeepTheMisspeltTextOfCode20)
{
    EXPECT_STREQ(GetErrorStringA(static_cast<eErr>(20)), "Average calulation started by other process");
}

TEST(ErrorTexts, AnswerAWideTextForSuccess)
{
    EXPECT_STREQ(GetErrorStringW(static_cast<eErr>(0)), L"ERR_SUCCESS");
}

TEST(ErrorTexts, AnswerAFixedTextOutsideTheirRange)
{
    for (const int code : {33, 1000, -1, -2147483647}) {
        EXPECT_STREQ(GetErrorStringA(static_cast<eErr>(code)), "Unknown error");
        EXPECT_STREQ(GetErrorStringW(static_cast<eErr>(code)), L"Unknown error");
    }
}

TEST(ErrorTexts, AreWritablePairsThatBothFunctionsRead)
{
    const TextPair saved = errorTexts[7];

    errorTexts[7] = {"replaced", L"replaced too"};

    EXPECT_STREQ(GetErrorStringA(ERR_IOCTRL_FAILED), "replaced");
    EXPECT_STREQ(GetErrorStringW(ERR_IOCTRL_FAILED), L"replaced too");
    errorTexts[7] = saved;
}
