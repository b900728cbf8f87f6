// SPDX-License-Identifier: LicenseRef-HXAux
/// @file Telematics.h
/// @brief Power of the optional GSM/GPRS, WLAN, Bluetooth and GPS modules.
#ifndef HX_AUX_TELEMATICS_H
#define HX_AUX_TELEMATICS_H

#include "hx-aux/errors.h"

namespace Halvix {

/// @brief Reads which telematics modules are fitted and switches the GSM/GPRS and the WLAN module.
///
/// The production data of the add-on board records which modules are fitted. It is read once per process and module, by
/// the first operation that needs it: data that could not be read then counts as "not fitted" for the rest of the
/// process. The modules' power lines are pins of an I2C expander on the add-on board, reached through the board
/// library; the first power operation of an object sets the expander up.
///
/// Get an object from @ref GetTelematics and free it with @ref Release; creating one accesses no hardware. Modules keep
/// their state after the object is released. Pointers must not be null (not checked). Two callers must not switch the
/// same module at the same time, not even from two processes: their steps would interleave.
class Telematics {
public:
    /// @brief Reads whether any of the four modules is fitted.
    ///
    /// @param[out] status  Enabled if Bluetooth, GPS, WLAN or GSM/GPRS is fitted.
    /// @retval ERR_SUCCESS         @p status holds the result; unreadable production data counts as "not fitted".
    /// @retval ERR_MEM_ALLOC_FAIL  Out of memory; @p status is unchanged and the next call reads again.
    /// @threadsafe Always.
    virtual eErr getTelematicsAvailable(HXStatus* status) = 0;

    /// @brief Reads whether the GSM/GPRS module is switched on.
    ///
    /// Add-on boards of hardware version 1 to 9 report the module's own status line. Older boards have none: the last
    /// state set is reported.
    ///
    /// @param[out] status  Enabled while the module is on.
    /// @retval ERR_SUCCESS                        @p status holds the state.
    /// @retval ERR_TELEMATICS_GPRS_NOT_AVAILABLE  No GSM/GPRS module is fitted.
    /// @retval ERR_MEM_ALLOC_FAIL                 Out of memory.
    /// @retval ERR_I2C_EXPANDER_INIT_FAILED       The board library or the expander could not be set up.
    /// @retval ERR_I2C_EXPANDER_READ_FAILED       The expander cannot be read.
    /// @note On failure @p status is unchanged.
    /// @threadsafe Between objects. Calls on one object must not overlap.
    virtual eErr getGPRSPowerStatus(HXStatus* status) = 0;

    /// @brief Reads whether the GSM/GPRS module is to be switched on when the unit starts.
    ///
    /// Only the setting is stored; the library never acts on it.
    ///
    /// @param[out] status  Enabled if the setting is stored; disabled otherwise, also without a settings file.
    /// @retval ERR_SUCCESS                        @p status holds the setting.
    /// @retval ERR_TELEMATICS_GPRS_NOT_AVAILABLE  No GSM/GPRS module is fitted.
    /// @retval ERR_MEM_ALLOC_FAIL                 Out of memory.
    /// @note On failure @p status is unchanged.
    /// @threadsafe Always. Waits while any process uses the settings file.
    virtual eErr getGPRSStartUpPowerStatus(HXStatus* status) = 0;

    /// @brief Reads whether the WLAN module has power.
    ///
    /// @param[out] status  Enabled while the module's power line is on.
    /// @retval ERR_SUCCESS                        @p status holds the state.
    /// @retval ERR_TELEMATICS_WLAN_NOT_AVAILABLE  No WLAN module is fitted.
    /// @retval ERR_MEM_ALLOC_FAIL                 Out of memory.
    /// @retval ERR_I2C_EXPANDER_INIT_FAILED       The board library or the expander could not be set up.
    /// @retval ERR_I2C_EXPANDER_READ_FAILED       The expander cannot be read.
    /// @note On failure @p status is unchanged.
    /// @threadsafe Between objects. Calls on one object must not overlap.
    virtual eErr getWLANPowerStatus(HXStatus* status) = 0;

    /// @brief Reads whether the WLAN module is to be switched on when the unit starts.
    ///
    /// Only the setting is stored; the library never acts on it.
    ///
    /// @param[out] status  Enabled if the setting is stored; disabled otherwise, also without a settings file.
    /// @retval ERR_SUCCESS                        @p status holds the setting.
    /// @retval ERR_TELEMATICS_WLAN_NOT_AVAILABLE  No WLAN module is fitted.
    /// @retval ERR_MEM_ALLOC_FAIL                 Out of memory.
    /// @note On failure @p status is unchanged.
    /// @threadsafe Always. Waits while any process uses the settings file.
    virtual eErr getWLANStartUpPowerStatus(HXStatus* status) = 0;

    /// @brief Reads the short-circuit line of the GPS antenna.
    ///
    /// @param[out] status  Enabled while the line is high.
    /// @retval ERR_SUCCESS                       @p status holds the line's state.
    /// @retval ERR_TELEMATICS_GPS_NOT_AVAILABLE  No GPS module is fitted.
    /// @retval ERR_MEM_ALLOC_FAIL                Out of memory.
    /// @retval ERR_I2C_EXPANDER_INIT_FAILED      The board library or the expander could not be set up.
    /// @retval ERR_I2C_EXPANDER_READ_FAILED      The expander cannot be read.
    /// @note On failure @p status is unchanged.
    /// @threadsafe Between objects. Calls on one object must not overlap.
    virtual eErr getGPSAntennaStatus(HXStatus* status) = 0;

    /// @brief Switches the GSM/GPRS module on or off, by a pulse on its power key.
    ///
    /// Returns at once if the module is already in the requested state. Otherwise the call takes 1.1 s to switch on,
    /// 2.1 s to switch off; the module acts on the pulse. Not kept over a restart.
    ///
    /// @param[in] status  HXStatusEnabled switches on, every other value switches off.
    /// @retval ERR_SUCCESS                        The pulse was sent, or none was needed.
    /// @retval ERR_TELEMATICS_GPRS_NOT_AVAILABLE  No GSM/GPRS module is fitted.
    /// @retval ERR_MEM_ALLOC_FAIL                 Out of memory.
    /// @retval ERR_I2C_EXPANDER_INIT_FAILED       The board library or the expander could not be set up.
    /// @retval ERR_I2C_EXPANDER_READ_FAILED       The current state cannot be read; no pin was touched.
    /// @retval ERR_I2C_EXPANDER_WRITE_FAILED      A pin could not be switched; the power key may still be pressed.
    /// @threadsafe Between objects. Calls on one object must not overlap.
    virtual eErr setGPRSPowerStatus(HXStatus status) = 0;

    /// @brief Stores whether the GSM/GPRS module is to be switched on when the unit starts.
    ///
    /// The setting is kept over a restart. A failure to write the settings file is not reported.
    ///
    /// @param[in] status  HXStatusEnabled stores "on", every other value "off".
    /// @retval ERR_SUCCESS                        The setting was passed to the settings file.
    /// @retval ERR_TELEMATICS_GPRS_NOT_AVAILABLE  No GSM/GPRS module is fitted; nothing was stored.
    /// @retval ERR_MEM_ALLOC_FAIL                 Out of memory.
    /// @threadsafe Always. Waits while any process uses the settings file.
    virtual eErr setGPRSStartUpPowerStatus(HXStatus status) = 0;

    /// @brief Switches the WLAN module on or off.
    ///
    /// The whole sequence runs even if the module is already in the requested state. Not kept over a restart.
    ///
    /// @param[in] status  HXStatusEnabled switches on, every other value switches off.
    /// @retval ERR_SUCCESS                        The module was switched.
    /// @retval ERR_TELEMATICS_WLAN_NOT_AVAILABLE  No WLAN module is fitted.
    /// @retval ERR_MEM_ALLOC_FAIL                 Out of memory.
    /// @retval ERR_I2C_EXPANDER_INIT_FAILED       The board library or the expander could not be set up.
    /// @retval ERR_I2C_EXPANDER_WRITE_FAILED      A pin could not be switched; the steps before it stay done.
    /// @threadsafe Between objects. Calls on one object must not overlap.
    virtual eErr setWLANPowerStatus(HXStatus status) = 0;

    /// @brief Stores whether the WLAN module is to be switched on when the unit starts.
    ///
    /// The setting is kept over a restart. A failure to write the settings file is not reported.
    ///
    /// @param[in] status  HXStatusEnabled stores "on", every other value "off".
    /// @retval ERR_SUCCESS                        The setting was passed to the settings file.
    /// @retval ERR_TELEMATICS_WLAN_NOT_AVAILABLE  No WLAN module is fitted; nothing was stored.
    /// @retval ERR_MEM_ALLOC_FAIL                 Out of memory.
    /// @threadsafe Always. Waits while any process uses the settings file.
    virtual eErr setWLANStartUpPowerStatus(HXStatus status) = 0;

    /// @brief Deletes the object. The pointer is invalid afterwards.
    /// @retval ERR_SUCCESS  Always.
    /// @threadsafe Between objects.
    virtual eErr Release() = 0;

protected:
    ~Telematics() {}
};

} // namespace Halvix

/// @brief Creates an object that switches the telematics modules.
/// @return A new object. Throws `std::bad_alloc` when out of memory. Free it with `Release()`.
/// @threadsafe Always.
HX_EXPORT Halvix::Telematics* GetTelematics();

#endif
