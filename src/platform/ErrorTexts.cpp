// SPDX-License-Identifier: LicenseRef-HXAux
#include "hx-aux/errors.h"
#include "platform/TextPair.h"

#include <cstddef>
#include <iterator>

namespace Halvix {

// The texts are printed and compared by applications: the misspelling of code 20 stays.
TextPair errorTexts[] = {
    HX_TEXT("ERR_SUCCESS"),
    HX_TEXT("Open failed"),
    HX_TEXT("Not supported"),
    HX_TEXT("Unknown feature"),
    HX_TEXT("Datatype mismatch"),
    HX_TEXT("Code not exist"),
    HX_TEXT("Buffer size error"),
    HX_TEXT("IoCtrl operation failed"),
    HX_TEXT("Invalid data (range)"),
    HX_TEXT("Invalid parameter (NULL pointer)"),
    HX_TEXT("Error creating thread"),
    HX_TEXT("Function in progress"),
    HX_TEXT("Checksum incorrect when converting file"),
    HX_TEXT("Initialisation failed"),
    HX_TEXT("Verify failed"),
    HX_TEXT("Failed to read data from device"),
    HX_TEXT("Failed to write data to device"),
    HX_TEXT("Failed to execute command"),
    HX_TEXT("Failed to access eeprom (JIDA)"),
    HX_TEXT("Failed to read temperature (JIDA)"),
    HX_TEXT("Average calulation started by other process"),
    HX_TEXT("Function not running"),
    HX_TEXT("Failed to read from I2C expander (JIDA)"),
    HX_TEXT("Failed to write to I2C expander (JIDA)"),
    HX_TEXT("I2C expander initialisation failed (JIDA)"),
    HX_TEXT("A newer version of SS is required"),
    HX_TEXT("A newer version of FPGA is required"),
    HX_TEXT("A newer version of Front uc is required"),
    HX_TEXT("The GSM/GPRS module is not available"),
    HX_TEXT("The WLAN module is not available"),
    HX_TEXT("The Bluetooth module is not available"),
    HX_TEXT("The GPS module is not available"),
    HX_TEXT("Failed to allocate memory"),
};
static_assert(std::size(errorTexts) == 33);

namespace {

TextPair unknownError = HX_TEXT("Unknown error");

const TextPair& pairOf(eErr code)
{
    const auto index = static_cast<std::size_t>(code); // a negative code becomes a large one
    return index < std::size(errorTexts) ? errorTexts[index] : unknownError;
}

} // namespace

} // namespace Halvix

const char* GetErrorStringA(Halvix::eErr code)
{
    return Halvix::pairOf(code).narrow;
}

const wchar_t* GetErrorStringW(Halvix::eErr code)
{
    return Halvix::pairOf(code).wide;
}
