// SPDX-License-Identifier: LicenseRef-HXAux
/// @file AuxVersion.h
/// @brief Versions of the unit's components.
#ifndef HX_AUX_AUXVERSION_H
#define HX_AUX_AUXVERSION_H

#include "hx-aux/errors.h"

namespace Halvix {

/// @brief Reads the versions of the FPGA, the microcontrollers, the drivers, the system image and this library.
///
/// Every version is four numbers of 0 to 255: major, minor, release, build, printed with dots between them.
///
/// Get an object from @ref GetAuxVersion and free it with @ref Release. The device versions need "/dev/fpga-version",
/// which is opened when the object is created; a failed open is not retried.
class AuxVersion {
public:
    /// @brief Reads the version of the FPGA's configuration.
    ///
    /// The pointers must not be null (not checked).
    ///
    /// @param[out] major    First number.
    /// @param[out] minor    Second number.
    /// @param[out] release  Third number.
    /// @param[out] build    Fourth number.
    /// @retval ERR_SUCCESS        The four outputs hold the version.
    /// @retval ERR_OPEN_FAILED    "/dev/fpga-version" could not be opened when the object was created.
    /// @retval ERR_IOCTRL_FAILED  The driver refused the request.
    /// @retval ERR_BUFFER_SIZE    The answer is not four bytes long.
    /// @note On failure the outputs are unchanged.
    /// @threadsafe Always.
    virtual eErr getFPGAVersion(unsigned char* major, unsigned char* minor, unsigned char* release,
                                unsigned char* build) = 0;

    /// @brief Reads the version of the supervisor microcontroller's firmware.
    ///
    /// The pointers must not be null (not checked).
    ///
    /// @param[out] major    First number.
    /// @param[out] minor    Second number.
    /// @param[out] release  Third number.
    /// @param[out] build    Fourth number.
    /// @retval ERR_SUCCESS        The four outputs hold the version.
    /// @retval ERR_OPEN_FAILED    "/dev/fpga-version" could not be opened when the object was created.
    /// @retval ERR_IOCTRL_FAILED  The driver refused the request.
    /// @retval ERR_BUFFER_SIZE    The answer is not four bytes long.
    /// @note On failure the outputs are unchanged.
    /// @threadsafe Always.
    virtual eErr getSSVersion(unsigned char* major, unsigned char* minor, unsigned char* release,
                              unsigned char* build) = 0;

    /// @brief Reads the version of the front-panel microcontroller's firmware.
    ///
    /// The pointers must not be null (not checked).
    ///
    /// @param[out] major    First number.
    /// @param[out] minor    Second number.
    /// @param[out] release  Third number.
    /// @param[out] build    Fourth number.
    /// @retval ERR_SUCCESS        The four outputs hold the version.
    /// @retval ERR_OPEN_FAILED    "/dev/fpga-version" could not be opened when the object was created.
    /// @retval ERR_IOCTRL_FAILED  The driver refused the request.
    /// @retval ERR_BUFFER_SIZE    The answer is not four bytes long.
    /// @note On failure the outputs are unchanged.
    /// @threadsafe Always.
    virtual eErr getFrontVersion(unsigned char* major, unsigned char* minor, unsigned char* release,
                                 unsigned char* build) = 0;

    /// @brief Reads the version of this library. Needs no device.
    ///
    /// The pointers must not be null (not checked).
    ///
    /// @param[out] major    First number.
    /// @param[out] minor    Second number.
    /// @param[out] release  Third number.
    /// @param[out] build    Fourth number.
    /// @retval ERR_SUCCESS         The four outputs hold the version.
    /// @retval ERR_COMMAND_FAILED  The library's own version text is damaged; does not happen with a released library.
    /// @note On failure the outputs are unchanged.
    /// @threadsafe Always.
    virtual eErr getHXAuxVersion(unsigned char* major, unsigned char* minor, unsigned char* release,
                                 unsigned char* build) = 0;

    /// @brief Reads the version of the operating system's image from "/etc/firmware.ver". Needs no device.
    ///
    /// The file holds four decimal numbers separated by dots; anything after them is ignored. A negative number counts
    /// as below 256 and is returned modulo 256.
    ///
    /// @param[out] major    First number.
    /// @param[out] minor    Second number.
    /// @param[out] release  Third number.
    /// @param[out] build    Fourth number.
    /// @retval ERR_SUCCESS            The four outputs hold the version.
    /// @retval ERR_INVALID_PARAMETER  A pointer is null; the file was not opened.
    /// @retval ERR_OPEN_FAILED        "/etc/firmware.ver" could not be opened.
    /// @retval ERR_COMMAND_FAILED     The file cannot be read, or does not start with four numbers below 256.
    /// @note On failure the outputs are unchanged.
    /// @threadsafe Always.
    virtual eErr getOSVersion(unsigned char* major, unsigned char* minor, unsigned char* release,
                              unsigned char* build) = 0;

    /// @brief Reads the version of the unit's kernel drivers.
    ///
    /// The pointers must not be null (not checked).
    ///
    /// @param[out] major    First number.
    /// @param[out] minor    Second number.
    /// @param[out] release  Third number.
    /// @param[out] build    Fourth number.
    /// @retval ERR_SUCCESS        The four outputs hold the version.
    /// @retval ERR_OPEN_FAILED    "/dev/fpga-version" could not be opened when the object was created.
    /// @retval ERR_IOCTRL_FAILED  The driver refused the request.
    /// @retval ERR_BUFFER_SIZE    The answer is not four bytes long.
    /// @note On failure the outputs are unchanged.
    /// @threadsafe Always.
    virtual eErr getHXAuxDrvVersion(unsigned char* major, unsigned char* minor, unsigned char* release,
                                    unsigned char* build) = 0;

    /// @brief Closes the device and deletes the object. The pointer is invalid afterwards.
    /// @retval ERR_SUCCESS  Always.
    /// @threadsafe Between objects.
    virtual eErr Release() = 0;

protected:
    ~AuxVersion() {}
};

} // namespace Halvix

/// @brief Creates an object that reads versions.
///
/// Succeeds even if the device cannot be opened; the operations that need it then answer ERR_OPEN_FAILED.
///
/// @return A new object, never null. Free it with `Release()`.
/// @throws std::bad_alloc  Out of memory.
/// @threadsafe Always.
HX_EXPORT Halvix::AuxVersion* GetAuxVersion();

#endif
