// SPDX-License-Identifier: LicenseRef-HXAux
/// @file Jida.h
/// @brief Forwarders to the board maker's BIOS interface library, `libjida.so`, which is loaded at run time.
///
/// Each forwarder has the name and the arguments of the board library's function and passes them on unchanged. It
/// returns that function's result, or 0 without calling anything while the function's pointer is null: before
/// @ref JidaLinuxInitialize, or when the library or the function is missing.
///
/// The umbrella header does not include this file, so that a program may include the board maker's own header instead.
/// @threadsafe Each forwarder as the board library's function; the pointers are written by @ref JidaLinuxInitialize,
/// always with the same values.
#ifndef HX_AUX_JIDA_H
#define HX_AUX_JIDA_H

#include "hx-aux/types.h"

/// @brief Loads `libjida.so` and fills in the thirteen function pointers.
///
/// Every call loads the library again; the loader counts the references. If a function is missing, the call prints a
/// line on standard output and returns: the pointers before it stay set, those after it stay unchanged.
/// @retval true   All functions are available.
/// @retval false  The library or one of its functions is missing.
/// @threadsafe Always.
HX_EXPORT bool JidaLinuxInitialize();

/// @name Forwarders
/// @{

/// @brief Initialises the board library. @return 0 when it has to be installed first.
HX_EXPORT unsigned int JidaDllInitialize();
/// @brief Uninitialises the board library. @return The library's result.
HX_EXPORT unsigned int JidaDllUninitialize();
/// @brief Installs or removes the board library's driver. @param[in] install  1 or 0. @return 0 on failure.
HX_EXPORT unsigned int JidaDllInstall(unsigned long install);
/// @brief Counts the boards. @param[in] className  Class, or null for all. @param[in] flags  0. @return Their number.
HX_EXPORT unsigned int JidaBoardCountA(const char* className, unsigned long flags);
/// @brief Opens a board.
/// @param[in]  className  Class of the board, for example "CPU", or null for any.
/// @param[in]  number     Number of the board, from 0.
/// @param[in]  flags      0.
/// @param[out] board      The board's handle.
/// @return 0 on failure.
HX_EXPORT unsigned int JidaBoardOpenA(const char* className, unsigned long number, unsigned long flags,
                                      unsigned long* board);
/// @brief Closes a board. @param[in] board  The board's handle. @return 0 on failure.
HX_EXPORT unsigned int JidaBoardClose(unsigned long board);
/// @brief Counts a board's temperature sensors. @param[in] board  The board's handle. @return Their number.
HX_EXPORT unsigned int JidaTemperatureCount(unsigned long board);
/// @brief Describes a temperature sensor.
/// @param[in]     board        The board's handle.
/// @param[in]     index        Number of the sensor, from 0.
/// @param[in,out] information  Record of 32-bit fields; the first holds its size (44) on entry, the second the sensor's
///                             type afterwards.
/// @return 1 on success.
HX_EXPORT unsigned int JidaTemperatureGetInfo(unsigned long board, unsigned long index, void* information);
/// @brief Reads a temperature sensor.
/// @param[in]  board        The board's handle.
/// @param[in]  index        Number of the sensor, from 0.
/// @param[out] temperature  In thousandths of a degree Celsius, signed 32 bits.
/// @param[out] status       The board library's status bits.
/// @return 1 on success.
HX_EXPORT unsigned int JidaTemperatureGetCurrent(unsigned long board, unsigned long index, unsigned long* temperature,
                                                 unsigned long* status);
/// @brief Writes bytes to an I2C device.
/// @param[in] board    The board's handle.
/// @param[in] bus      Number of the bus, from 0.
/// @param[in] address  The device's 8-bit address, for example 0xAE.
/// @param[in] bytes    What to write.
/// @param[in] count    Number of bytes.
/// @return 0 on failure.
HX_EXPORT unsigned int JidaI2CWrite(unsigned long board, unsigned long bus, unsigned char address,
                                    const unsigned char* bytes, unsigned long count);
/// @brief Writes bytes to an I2C device and reads its answer in one transfer.
/// @param[in]  board       The board's handle.
/// @param[in]  bus         Number of the bus, from 0.
/// @param[in]  address     The device's 8-bit address.
/// @param[in]  bytes       What to write.
/// @param[in]  count       Number of bytes to write.
/// @param[out] answer      The bytes read.
/// @param[in]  answerSize  Number of bytes to read.
/// @return 0 on failure.
HX_EXPORT unsigned int JidaI2CWriteReadCombined(unsigned long board, unsigned long bus, unsigned char address,
                                                const unsigned char* bytes, unsigned long count, unsigned char* answer,
                                                unsigned long answerSize);
/// @brief Writes one register of an I2C device.
/// @param[in] board    The board's handle.
/// @param[in] bus      Number of the bus, from 0.
/// @param[in] address  The device's 8-bit address.
/// @param[in] reg      The register's number.
/// @param[in] value    Its new value.
/// @return 0 on failure.
HX_EXPORT unsigned int JidaI2CWriteRegister(unsigned long board, unsigned long bus, unsigned char address,
                                            unsigned short reg, unsigned char value);
/// @brief Reads one register of an I2C device.
/// @param[in]  board    The board's handle.
/// @param[in]  bus      Number of the bus, from 0.
/// @param[in]  address  The device's 8-bit address.
/// @param[in]  reg      The register's number.
/// @param[out] value    Its value.
/// @return 0 on failure.
HX_EXPORT unsigned int JidaI2CReadRegister(unsigned long board, unsigned long bus, unsigned char address,
                                           unsigned short reg, unsigned char* value);
/// @}

/// @name Function pointers
/// The functions that the forwarders call; null until @ref JidaLinuxInitialize. A program may replace them.
/// @{

/// @brief The function that @ref JidaBoardClose calls.
HX_EXPORT unsigned int (*pJidaBoardClose)(unsigned long);
/// @brief The function that @ref JidaTemperatureGetCurrent calls.
HX_EXPORT unsigned int (*pJidaTemperatureGetCurrent)(unsigned long, unsigned long, unsigned long*, unsigned long*);
/// @brief The function that @ref JidaBoardOpenA calls.
HX_EXPORT unsigned int (*pJidaBoardOpenA)(const char*, unsigned long, unsigned long, unsigned long*);
/// @brief The function that @ref JidaBoardCountA calls.
HX_EXPORT unsigned int (*pJidaBoardCountA)(const char*, unsigned long);
/// @brief The function that @ref JidaI2CWrite calls.
HX_EXPORT unsigned int (*pJidaI2CWrite)(unsigned long, unsigned long, unsigned char, const unsigned char*,
                                        unsigned long);
/// @brief The function that @ref JidaTemperatureCount calls.
HX_EXPORT unsigned int (*pJidaTemperatureCount)(unsigned long);
/// @brief The function that @ref JidaDllInstall calls.
HX_EXPORT unsigned int (*pJidaDllInstall)(unsigned long);
/// @brief The function that @ref JidaI2CWriteReadCombined calls.
HX_EXPORT unsigned int (*pJidaI2CWriteReadCombined)(unsigned long, unsigned long, unsigned char, const unsigned char*,
                                                    unsigned long, unsigned char*, unsigned long);
/// @brief The function that @ref JidaDllInitialize calls.
HX_EXPORT unsigned int (*pJidaDllInitialize)();
/// @brief The function that @ref JidaDllUninitialize calls.
HX_EXPORT unsigned int (*pJidaDllUninitialize)();
/// @brief The function that @ref JidaTemperatureGetInfo calls.
HX_EXPORT unsigned int (*pJidaTemperatureGetInfo)(unsigned long, unsigned long, void*);
/// @brief The function that @ref JidaI2CWriteRegister calls.
HX_EXPORT unsigned int (*pJidaI2CWriteRegister)(unsigned long, unsigned long, unsigned char, unsigned short,
                                                unsigned char);
/// @brief The function that @ref JidaI2CReadRegister calls.
HX_EXPORT unsigned int (*pJidaI2CReadRegister)(unsigned long, unsigned long, unsigned char, unsigned short,
                                               unsigned char*);
/// @}

#endif
