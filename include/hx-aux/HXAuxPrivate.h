// SPDX-License-Identifier: LicenseRef-HXAux
/// @file HXAuxPrivate.h
/// @brief Service and production access: production data, raw settings, smart registers, automatic backlight.
#ifndef HX_AUX_HXAUXPRIVATE_H
#define HX_AUX_HXAUXPRIVATE_H

#include "hx-aux/errors.h"
#include "hx-aux/types.h"

namespace Halvix {

/// @brief For production, service tools and the unit's service process; not for applications.
///
/// The two stores of production data are read when the object is created; later changes are not seen. Texts must be
/// zero-terminated. Pointers must be valid (not checked) where nothing else is said.
class HXAuxPrivate {
public:
    /// @brief Reads a property of the production data.
    ///
    /// A key matches the beginning of a line: "MAC" finds the value of "MAC1". Values are cut to 254 characters.
    ///
    /// @param[in]  store  0: the main board's store; any other value: the add-on board's.
    /// @param[in]  key    Name of the property.
    /// @param[out] value  The value with a terminating zero. Untouched on failure.
    /// @param[in]  size   Longest value that is accepted, without the zero: @p value must hold size + 1 bytes.
    /// @retval ERR_SUCCESS         @p value holds the value.
    /// @retval ERR_JIDA_EEPROM     The property is missing or empty, or the store could not be read.
    /// @retval ERR_BUFFER_SIZE     The value is longer than @p size.
    /// @retval ERR_MEM_ALLOC_FAIL  Out of memory.
    /// @threadsafe Between objects. Calls on one object must not overlap.
    virtual eErr getEepromProperty(unsigned char store, char* key, char* value, int size) = 0;

    /// @brief Changes the value of a property that exists. Takes several seconds; survives a restart.
    ///
    /// @param[in] store  0: the main board's store; any other value: the add-on board's.
    /// @param[in] key    Name of the property.
    /// @param[in] value  New value. A blank or a line end in it breaks the store's structure (not checked).
    /// @retval ERR_SUCCESS         The store was written.
    /// @retval ERR_JIDA_EEPROM     The property is missing, or the store could not be read or written.
    /// @retval ERR_MEM_ALLOC_FAIL  Out of memory; nothing was written.
    /// @threadsafe Between objects. Calls on one object must not overlap.
    virtual eErr setEepromProperty(unsigned char store, char* key, char* value) = 0;

    /// @brief Reads one of the supervisor's smart registers.
    ///
    /// @param[in]  reg    0 to 95. Negative numbers are accepted and address other registers of the supervisor.
    /// @param[out] value  The register's 16 bits. Untouched on failure.
    /// @retval ERR_SUCCESS            @p value holds the register.
    /// @retval ERR_INVALID_DATA       @p reg is above 95; this is checked before the device.
    /// @retval ERR_OPEN_FAILED        "/dev/diag-id" could not be opened when the object was created.
    /// @retval ERR_IOCTRL_FAILED      The driver refused the request.
    /// @retval ERR_BUFFER_SIZE        The answer has the wrong length.
    /// @retval ERR_DATATYPE_MISMATCH  The answer is for another register.
    /// @threadsafe Always.
    virtual eErr getFromSmart(char reg, unsigned short* value) = 0;

    /// @brief Writes one of the supervisor's smart registers.
    ///
    /// @param[in] reg    0 to 95. Negative numbers are accepted and address other registers of the supervisor.
    /// @param[in] value  The register's 16 bits.
    /// @retval ERR_SUCCESS        The supervisor has the value.
    /// @retval ERR_INVALID_DATA   @p reg is above 95; this is checked before the device.
    /// @retval ERR_OPEN_FAILED    "/dev/diag-id" could not be opened when the object was created.
    /// @retval ERR_IOCTRL_FAILED  The driver refused the request.
    /// @retval ERR_BUFFER_SIZE    The answer has the wrong length.
    /// @threadsafe Always.
    virtual eErr setToSmart(char reg, unsigned short value) = 0;

    /// @brief Starts the automatic backlight in this process; only one process of the unit should do so. Takes 800 ms.
    ///
    /// A background thread then follows the settings and, while they enable it, the light, until the process ends. It
    /// continues when the object is released.
    ///
    /// @retval ERR_SUCCESS         The thread is running.
    /// @retval ERR_INIT_FAILED     This object was initialised before.
    /// @retval ERR_CREATE_THREAD   The thread could not be started; the call may be repeated.
    /// @retval ERR_MEM_ALLOC_FAIL  Out of memory; the call may be repeated.
    /// @threadsafe Between objects. Calls on one object must not overlap.
    virtual eErr automaticBacklightInit() = 0;

    /// @brief Stores any setting in the settings file. Survives a restart.
    ///
    /// An existing file that cannot be read or is not a regular file is left unchanged: its other settings would be
    /// lost.
    ///
    /// @param[in] key    Name of the setting. If null, nothing is stored.
    /// @param[in] value  Its value; blanks at both ends are removed. Null counts as an empty text. A line end breaks
    ///                   the file (not checked).
    /// @retval ERR_SUCCESS         Always, also when the file cannot be written.
    /// @retval ERR_MEM_ALLOC_FAIL  Out of memory.
    /// @threadsafe Always.
    virtual eErr setFileSetting(char const* key, char const* value) = 0;

    /// @brief Reads any setting from the settings file.
    ///
    /// @param[in]  key    Name of the setting; null matches no setting.
    /// @param[out] value  The value with a terminating zero. Untouched on failure.
    /// @param[in]  size   Bytes in @p value, the terminating zero included.
    /// @retval ERR_SUCCESS         @p value holds the setting.
    /// @retval ERR_COMMAND_FAILED  The setting is missing or empty.
    /// @retval ERR_BUFFER_SIZE     The value does not fit @p size bytes.
    /// @retval ERR_MEM_ALLOC_FAIL  Out of memory.
    /// @threadsafe Always.
    virtual eErr getFileSetting(char const* key, char* value, int size) = 0;

    /// @brief Sends the driver the request to resume the video path after a suspend.
    ///
    /// The request is sent every time. ERR_IOCTRL_FAILED is always answered: the library cannot determine the outcome.
    ///
    /// @retval ERR_IOCTRL_FAILED  Always.
    /// @threadsafe Always.
    virtual eErr resumeVideo() = 0;

    /// @brief Deletes the object.
    /// @retval ERR_SUCCESS  Always.
    /// @threadsafe Between objects.
    virtual eErr Release() = 0;

protected:
    ~HXAuxPrivate() {}
};

} // namespace Halvix

/// @brief Creates a service object; reads both stores of production data, which takes a moment.
/// @return Never null. Operations whose device or store is missing report it.
/// @throws std::bad_alloc  Out of memory.
/// @threadsafe Always.
HX_EXPORT Halvix::HXAuxPrivate* GetHXAuxPrivate();

#endif
