// SPDX-License-Identifier: LicenseRef-HXAux
/// @file errors.h
/// @brief The error codes that every operation answers, and their texts.
#ifndef HX_AUX_ERRORS_H
#define HX_AUX_ERRORS_H

#include "hx-aux/types.h"

namespace Halvix {

/// @brief Answer of every operation: 0 for success, otherwise the error.
enum eErr HX_32BIT {
    ERR_SUCCESS = 0, ///< The operation succeeded.
    ERR_OPEN_FAILED =
        1, ///< The device could not be opened: its driver is missing or the program has no permission to use it.
    ERR_NOT_SUPPORTED = 2,     ///< The operation is part of the interface but not offered by this library.
    ERR_UNKNOWN_FEATURE = 3,   ///< Reserved; no operation answers it.
    ERR_DATATYPE_MISMATCH = 4, ///< An answer or a stored text is not of the requested kind.
    ERR_CODE_NOT_EXIST = 5,    ///< Reserved; no operation answers it.
    ERR_BUFFER_SIZE = 6,   ///< An answer has another length than expected, or a text does not fit the caller's buffer.
    ERR_IOCTRL_FAILED = 7, ///< The driver refused the request.
    ERR_INVALID_DATA = 8,  ///< A value is outside its range; nothing was sent, or the answer was not used.
    ERR_INVALID_PARAMETER = 9, ///< A pointer is null; the LED, the buzzer, the light sensor, video and CAN answer it
                               ///< for values out of range as well.
    ERR_CREATE_THREAD = 10,    ///< A thread could not be started.
    ERR_IN_PROGRESS = 11,      ///< The same function is already running, in this process or in another.
    ERR_CHECKSUM = 12,         ///< A checksum inside a firmware file is wrong.
    ERR_INIT_FAILED = 13,      ///< A function or a device could not be initialised, or was initialised before.
    ERR_VERIFY_FAILED = 14,    ///< The contents of the device differ from the file.
    ERR_DEVICE_READ_DATA_FAILED = 15,  ///< Data could not be read from a device during an upgrade.
    ERR_DEVICE_WRITE_DATA_FAILED = 16, ///< Data could not be written to a device during an upgrade.
    ERR_COMMAND_FAILED = 17,           ///< A command or a query could not be carried out; no further details.
    ERR_JIDA_EEPROM = 18,          ///< The property is missing, or the board library or its EEPROM cannot be reached.
    ERR_JIDA_TEMP = 19,            ///< The board library cannot deliver the temperature.
    ERR_AVERAGE_CALC_STARTED = 20, ///< The light sensor is averaging already, in this process or in another.
    ERR_NOT_RUNNING = 21,          ///< There is no value, because the function that produces it is not running.
    ERR_I2C_EXPANDER_READ_FAILED = 22,      ///< The I2C expander cannot be read.
    ERR_I2C_EXPANDER_WRITE_FAILED = 23,     ///< The I2C expander cannot be written.
    ERR_I2C_EXPANDER_INIT_FAILED = 24,      ///< The I2C expander could not be set up.
    ERR_NEWER_SS_VERSION_REQUIRED = 25,     ///< The supervisor's firmware is too old for this function.
    ERR_NEWER_FPGA_VERSION_REQUIRED = 26,   ///< Reserved; no operation answers it.
    ERR_NEWER_FRONT_VERSION_REQUIRED = 27,  ///< The front microcontroller's firmware is too old for this function.
    ERR_TELEMATICS_GPRS_NOT_AVAILABLE = 28, ///< No GSM/GPRS module is fitted.
    ERR_TELEMATICS_WLAN_NOT_AVAILABLE = 29, ///< No WLAN module is fitted.
    ERR_TELEMATICS_BT_NOT_AVAILABLE = 30,   ///< Reserved; no operation answers it.
    ERR_TELEMATICS_GPS_NOT_AVAILABLE = 31,  ///< No GPS module is fitted.
    ERR_MEM_ALLOC_FAIL = 32,                ///< Out of memory inside an operation.
    HX_32BIT_RANGE(eErr)
};

} // namespace Halvix

/// @brief Returns the text of an error code.
/// @param[in] code  Any code of @ref Halvix::eErr.
/// @return A constant text; neither change nor free it. A value outside 0 to 32 yields "Unknown error".
/// @threadsafe Always.
HX_EXPORT const char* GetErrorStringA(Halvix::eErr code);

/// @brief Returns the text of an error code as a wide text (4 bytes a character).
/// @param[in] code  Any code of @ref Halvix::eErr.
/// @return A constant text; neither change nor free it. A value outside 0 to 32 yields L"Unknown error".
/// @threadsafe Always.
HX_EXPORT const wchar_t* GetErrorStringW(Halvix::eErr code);

#endif
