// SPDX-License-Identifier: LicenseRef-HXAux
/// @file Config.h
/// @brief Start-up and power configuration.
#ifndef HX_AUX_CONFIG_H
#define HX_AUX_CONFIG_H

#include "hx-aux/errors.h"

namespace Halvix {

/// @brief Which events may start the unit. The supervisor's firmware defines the values.
enum TriggerConf HX_32BIT {
    StartupTrigger1 = 1, ///< The first combination.
    StartupTrigger2 = 2, ///< The second combination.
    StartupTrigger3 = 3, ///< The third combination.
    HX_32BIT_RANGE(TriggerConf)
};

/// @brief What a press of the front button or the external signal does. The supervisor's firmware defines the values.
enum PowerAction HX_32BIT {
    PowerAction0 = 0, ///< The first action.
    PowerAction1 = 1, ///< The second action.
    PowerAction2 = 2, ///< The third action.
    HX_32BIT_RANGE(PowerAction)
};

/// @brief The start-up and power behaviour that the supervisor enforces on its own.
///
/// Every setting lives in the supervisor; the library keeps no copy. All callers in a process share one object, which
/// opens "/dev/conf-id" when it is created and does not retry. Operations that need a newer supervisor check its
/// version at each call, before they access the device. Pointers must not be null (not checked).
class Config {
public:
    /// @brief Reads which events may start the unit.
    ///
    /// @param[out] trigger  One of the three values. Must not be null (not checked). Untouched on failure.
    /// @retval ERR_SUCCESS                    @p trigger holds the setting.
    /// @retval ERR_OPEN_FAILED                "/dev/conf-id" could not be opened when the object was created.
    /// @retval ERR_NEWER_SS_VERSION_REQUIRED  The supervisor is older than 1.0.0.0; the device was not accessed.
    /// @retval ERR_IOCTRL_FAILED              The driver refused the request.
    /// @retval ERR_BUFFER_SIZE                The answer is not two bytes long.
    /// @retval ERR_INVALID_DATA               The supervisor holds a value outside 1 to 3.
    /// @threadsafe Always.
    virtual eErr getStartupTriggerConfig(TriggerConf* trigger) = 0;

    /// @brief Reads what a short press of the front button does.
    ///
    /// @param[out] action  What the supervisor does. Must not be null (not checked). Untouched on failure.
    /// @retval ERR_SUCCESS                    @p action holds the setting.
    /// @retval ERR_OPEN_FAILED                "/dev/conf-id" could not be opened when the object was created.
    /// @retval ERR_NEWER_SS_VERSION_REQUIRED  The supervisor is older than 1.0.0.0; the device was not accessed.
    /// @retval ERR_IOCTRL_FAILED              The driver refused the request.
    /// @retval ERR_BUFFER_SIZE                The answer is not two bytes long.
    /// @retval ERR_INVALID_DATA               The supervisor holds a value above 2.
    /// @threadsafe Always.
    virtual eErr getShortButtonPressAction(PowerAction* action) = 0;

    /// @brief Reads what a long press of the front button does.
    ///
    /// @param[out] action  What the supervisor does. Must not be null (not checked). Untouched on failure.
    /// @retval ERR_SUCCESS                    @p action holds the setting.
    /// @retval ERR_OPEN_FAILED                "/dev/conf-id" could not be opened when the object was created.
    /// @retval ERR_NEWER_SS_VERSION_REQUIRED  The supervisor is older than 1.0.0.0; the device was not accessed.
    /// @retval ERR_IOCTRL_FAILED              The driver refused the request.
    /// @retval ERR_BUFFER_SIZE                The answer is not two bytes long.
    /// @retval ERR_INVALID_DATA               The supervisor holds a value above 2.
    /// @threadsafe Always.
    virtual eErr getLongButtonPressAction(PowerAction* action) = 0;

    /// @brief Reads what the external on/off signal does.
    ///
    /// @param[out] action  What the supervisor does. Must not be null (not checked). Untouched on failure.
    /// @retval ERR_SUCCESS                    @p action holds the setting.
    /// @retval ERR_OPEN_FAILED                "/dev/conf-id" could not be opened when the object was created.
    /// @retval ERR_NEWER_SS_VERSION_REQUIRED  The supervisor is older than 1.0.0.0; the device was not accessed.
    /// @retval ERR_IOCTRL_FAILED              The driver refused the request.
    /// @retval ERR_BUFFER_SIZE                The answer is not two bytes long.
    /// @retval ERR_INVALID_DATA               The supervisor holds a value above 2.
    /// @threadsafe Always.
    virtual eErr getOnOffSigAction(PowerAction* action) = 0;

    /// @brief Reads how long the front button must be pressed to count.
    ///
    /// @param[out] time  In the supervisor's own unit, passed on unconverted. Must not be null (not checked). Untouched
    ///                   on failure.
    /// @retval ERR_SUCCESS        @p time holds the setting.
    /// @retval ERR_OPEN_FAILED    "/dev/conf-id" could not be opened when the object was created.
    /// @retval ERR_IOCTRL_FAILED  The driver refused the request.
    /// @retval ERR_BUFFER_SIZE    The answer is not four bytes long.
    /// @threadsafe Always.
    virtual eErr getFrontBtnTrigTime(unsigned short* time) = 0;

    /// @brief Reads how long the external on/off signal must last to count.
    ///
    /// @param[out] time  In the supervisor's own unit, passed on unconverted; 32 bits. Must not be null (not checked).
    ///                   Untouched on failure.
    /// @retval ERR_SUCCESS        @p time holds the setting.
    /// @retval ERR_OPEN_FAILED    "/dev/conf-id" could not be opened when the object was created.
    /// @retval ERR_IOCTRL_FAILED  The driver refused the request.
    /// @retval ERR_BUFFER_SIZE    The answer is not four bytes long.
    /// @threadsafe Always.
    virtual eErr getExtOnOffSigTrigTime(unsigned int* time) = 0;

    /// @brief Reads how long the unit may stay suspended.
    ///
    /// @param[out] time  In the supervisor's own unit, passed on unconverted. Must not be null (not checked). Untouched
    ///                   on failure.
    /// @retval ERR_SUCCESS        @p time holds the setting.
    /// @retval ERR_OPEN_FAILED    "/dev/conf-id" could not be opened when the object was created.
    /// @retval ERR_IOCTRL_FAILED  The driver refused the request.
    /// @retval ERR_BUFFER_SIZE    The answer is not four bytes long.
    /// @threadsafe Always.
    virtual eErr getSuspendMaxTime(unsigned short* time) = 0;

    /// @brief Reads whether the CAN interfaces are powered at start-up.
    ///
    /// @param[out] status  The supervisor's value, unchecked: a value other than 0 and 1 is passed on unchanged. Must
    ///                     not be null (not checked). Untouched on failure.
    /// @retval ERR_SUCCESS        @p status holds the setting.
    /// @retval ERR_OPEN_FAILED    "/dev/conf-id" could not be opened when the object was created.
    /// @retval ERR_IOCTRL_FAILED  The driver refused the request.
    /// @retval ERR_BUFFER_SIZE    The answer is not two bytes long.
    /// @threadsafe Always.
    virtual eErr getCanStartupPowerConfig(HXStatus* status) = 0;

    /// @brief Reads which video channels are powered at start-up.
    ///
    /// @param[out] channels  One bit per channel, bit 0 for the first of four. Must not be null (not checked).
    ///                       Untouched on failure.
    /// @retval ERR_SUCCESS        @p channels holds the setting.
    /// @retval ERR_OPEN_FAILED    "/dev/conf-id" could not be opened when the object was created.
    /// @retval ERR_IOCTRL_FAILED  The driver refused the request.
    /// @retval ERR_BUFFER_SIZE    The answer is not two bytes long.
    /// @threadsafe Always.
    virtual eErr getVideoStartupPowerConfig(unsigned char* channels) = 0;

    /// @brief Reads whether the external fan is powered at start-up.
    ///
    /// @param[out] status  The supervisor's value, unchecked: a value other than 0 and 1 is passed on unchanged. Must
    ///                     not be null (not checked). Untouched on failure.
    /// @retval ERR_SUCCESS        @p status holds the setting.
    /// @retval ERR_OPEN_FAILED    "/dev/conf-id" could not be opened when the object was created.
    /// @retval ERR_IOCTRL_FAILED  The driver refused the request.
    /// @retval ERR_BUFFER_SIZE    The answer is not two bytes long.
    /// @threadsafe Always.
    virtual eErr getExtFanStartupPowerConfig(HXStatus* status) = 0;

    /// @brief Reads the supply voltage that the unit needs to start.
    ///
    /// @param[out] volts  Volts, in steps of 9.7 mV. Never below 9.0: lower readings are reported as 9.0, so that the
    ///                    lowest setting reads back as it was set. Must not be null (not checked). Untouched on
    ///                    failure.
    /// @retval ERR_SUCCESS        @p volts holds the setting.
    /// @retval ERR_OPEN_FAILED    "/dev/conf-id" could not be opened when the object was created.
    /// @retval ERR_IOCTRL_FAILED  The driver refused the request.
    /// @retval ERR_BUFFER_SIZE    The answer is not two bytes long.
    /// @threadsafe Always.
    virtual eErr getStartupVoltageConfig(double* volts) = 0;

    /// @brief Reads the temperature below which the unit is heated before it starts.
    ///
    /// @param[out] celsius  Degrees Celsius, -25 to 5. Must not be null (not checked). Untouched on failure.
    /// @retval ERR_SUCCESS                    @p celsius holds the setting.
    /// @retval ERR_OPEN_FAILED                "/dev/conf-id" could not be opened when the object was created.
    /// @retval ERR_NEWER_SS_VERSION_REQUIRED  The supervisor is older than 0.9.0.0; the device was not accessed.
    /// @retval ERR_IOCTRL_FAILED              The driver refused the request.
    /// @retval ERR_BUFFER_SIZE                The answer is not two bytes long.
    /// @retval ERR_INVALID_DATA               The supervisor holds a limit outside -25 to 5.
    /// @threadsafe Always.
    virtual eErr getHeatingTempLimit(short* celsius) = 0;

    /// @brief Reads whether the unit starts as soon as it gets power.
    ///
    /// @param[out] status  Enabled for every value except 0; only the low byte of the supervisor's value is used. Must
    ///                     not be null (not checked). Untouched on failure.
    /// @retval ERR_SUCCESS                    @p status holds the setting.
    /// @retval ERR_OPEN_FAILED                "/dev/conf-id" could not be opened when the object was created.
    /// @retval ERR_NEWER_SS_VERSION_REQUIRED  The supervisor is older than 1.0.3.0; the device was not accessed.
    /// @retval ERR_IOCTRL_FAILED              The driver refused the request.
    /// @retval ERR_BUFFER_SIZE                The answer is not two bytes long.
    /// @threadsafe Always.
    virtual eErr getPowerOnStartup(HXStatus* status) = 0;

    /// @brief Sets which events may start the unit.
    ///
    /// Stored by the supervisor at once, and kept over restarts and power cycles.
    ///
    /// @param[in] trigger  1 to 3.
    /// @retval ERR_SUCCESS                    The supervisor has the setting.
    /// @retval ERR_OPEN_FAILED                "/dev/conf-id" could not be opened when the object was created.
    /// @retval ERR_NEWER_SS_VERSION_REQUIRED  The supervisor is older than 1.0.0.0; the device was not accessed.
    /// @retval ERR_INVALID_DATA               @p trigger is not 1, 2 or 3. Nothing was sent.
    /// @retval ERR_IOCTRL_FAILED              The driver refused the request.
    /// @retval ERR_BUFFER_SIZE                The driver did not accept two bytes.
    /// @threadsafe Always.
    virtual eErr setStartupTriggerConfig(TriggerConf trigger) = 0;

    /// @brief Sets what a short press of the front button does.
    ///
    /// Stored by the supervisor at once, and kept over restarts and power cycles.
    ///
    /// @param[in] action  0 to 2.
    /// @retval ERR_SUCCESS                    The supervisor has the setting.
    /// @retval ERR_OPEN_FAILED                "/dev/conf-id" could not be opened when the object was created.
    /// @retval ERR_NEWER_SS_VERSION_REQUIRED  The supervisor is older than 1.0.0.0; the device was not accessed.
    /// @retval ERR_INVALID_DATA               @p action is not 0, 1 or 2. Nothing was sent.
    /// @retval ERR_IOCTRL_FAILED              The driver refused the request.
    /// @retval ERR_BUFFER_SIZE                The driver did not accept two bytes.
    /// @threadsafe Always.
    virtual eErr setShortButtonPressAction(PowerAction action) = 0;

    /// @brief Sets what a long press of the front button does.
    ///
    /// Stored by the supervisor at once, and kept over restarts and power cycles.
    ///
    /// @param[in] action  0 to 2.
    /// @retval ERR_SUCCESS                    The supervisor has the setting.
    /// @retval ERR_OPEN_FAILED                "/dev/conf-id" could not be opened when the object was created.
    /// @retval ERR_NEWER_SS_VERSION_REQUIRED  The supervisor is older than 1.0.0.0; the device was not accessed.
    /// @retval ERR_INVALID_DATA               @p action is not 0, 1 or 2. Nothing was sent.
    /// @retval ERR_IOCTRL_FAILED              The driver refused the request.
    /// @retval ERR_BUFFER_SIZE                The driver did not accept two bytes.
    /// @threadsafe Always.
    virtual eErr setLongButtonPressAction(PowerAction action) = 0;

    /// @brief Sets what the external on/off signal does.
    ///
    /// Stored by the supervisor at once, and kept over restarts and power cycles.
    ///
    /// @param[in] action  0 to 2.
    /// @retval ERR_SUCCESS                    The supervisor has the setting.
    /// @retval ERR_OPEN_FAILED                "/dev/conf-id" could not be opened when the object was created.
    /// @retval ERR_NEWER_SS_VERSION_REQUIRED  The supervisor is older than 1.0.0.0; the device was not accessed.
    /// @retval ERR_INVALID_DATA               @p action is not 0, 1 or 2. Nothing was sent.
    /// @retval ERR_IOCTRL_FAILED              The driver refused the request.
    /// @retval ERR_BUFFER_SIZE                The driver did not accept two bytes.
    /// @threadsafe Always.
    virtual eErr setOnOffSigAction(PowerAction action) = 0;

    /// @brief Sets how long the front button must be pressed to count.
    ///
    /// Stored by the supervisor at once, and kept over restarts and power cycles.
    ///
    /// The word that the supervisor stores next to this time is read first and written back unchanged. If that read
    /// fails, nothing is written and its error code is returned.
    ///
    /// @param[in] time  In the supervisor's own unit; every value is passed on.
    /// @retval ERR_SUCCESS        The supervisor has the setting.
    /// @retval ERR_OPEN_FAILED    "/dev/conf-id" could not be opened when the object was created.
    /// @retval ERR_IOCTRL_FAILED  The driver refused the request.
    /// @retval ERR_BUFFER_SIZE    The driver did not accept four bytes.
    /// @threadsafe Always; but if two programs change it at the same time, one may undo the other's change.
    virtual eErr setFrontBtnTrigTime(unsigned short time) = 0;

    /// @brief Sets how long the external on/off signal must last to count.
    ///
    /// Stored by the supervisor at once, and kept over restarts and power cycles.
    ///
    /// @param[in] time  In the supervisor's own unit; every 32-bit value is passed on.
    /// @retval ERR_SUCCESS        The supervisor has the setting.
    /// @retval ERR_OPEN_FAILED    "/dev/conf-id" could not be opened when the object was created.
    /// @retval ERR_IOCTRL_FAILED  The driver refused the request.
    /// @retval ERR_BUFFER_SIZE    The driver did not accept four bytes.
    /// @threadsafe Always.
    virtual eErr setExtOnOffSigTrigTime(unsigned int time) = 0;

    /// @brief Sets how long the unit may stay suspended.
    ///
    /// Stored by the supervisor at once, and kept over restarts and power cycles.
    ///
    /// @param[in] time  In the supervisor's own unit; every value is passed on.
    /// @retval ERR_SUCCESS        The supervisor has the setting.
    /// @retval ERR_OPEN_FAILED    "/dev/conf-id" could not be opened when the object was created.
    /// @retval ERR_IOCTRL_FAILED  The driver refused the request.
    /// @retval ERR_BUFFER_SIZE    The driver did not accept four bytes.
    /// @threadsafe Always.
    virtual eErr setSuspendMaxTime(unsigned short time) = 0;

    /// @brief Sets whether the CAN interfaces are powered at start-up.
    ///
    /// Stored by the supervisor at once, and kept over restarts and power cycles.
    ///
    /// @param[in] status  Passed on unchecked, as 16 bits.
    /// @retval ERR_SUCCESS        The supervisor has the setting.
    /// @retval ERR_OPEN_FAILED    "/dev/conf-id" could not be opened when the object was created.
    /// @retval ERR_IOCTRL_FAILED  The driver refused the request.
    /// @retval ERR_BUFFER_SIZE    The driver did not accept two bytes.
    /// @threadsafe Always.
    virtual eErr setCanStartupPowerConfig(HXStatus status) = 0;

    /// @brief Sets which video channels are powered at start-up.
    ///
    /// Stored by the supervisor at once, and kept over restarts and power cycles.
    ///
    /// @param[in] channels  One bit per channel, 0 to 15.
    /// @retval ERR_SUCCESS        The supervisor has the setting.
    /// @retval ERR_OPEN_FAILED    "/dev/conf-id" could not be opened when the object was created.
    /// @retval ERR_INVALID_DATA   @p channels is above 15. Nothing was sent.
    /// @retval ERR_IOCTRL_FAILED  The driver refused the request.
    /// @retval ERR_BUFFER_SIZE    The driver did not accept two bytes.
    /// @threadsafe Always.
    virtual eErr setVideoStartupPowerConfig(unsigned char channels) = 0;

    /// @brief Sets whether the external fan is powered at start-up.
    ///
    /// Stored by the supervisor at once, and kept over restarts and power cycles.
    ///
    /// @param[in] status  Passed on unchecked, as 16 bits.
    /// @retval ERR_SUCCESS        The supervisor has the setting.
    /// @retval ERR_OPEN_FAILED    "/dev/conf-id" could not be opened when the object was created.
    /// @retval ERR_IOCTRL_FAILED  The driver refused the request.
    /// @retval ERR_BUFFER_SIZE    The driver did not accept two bytes.
    /// @threadsafe Always.
    virtual eErr setExtFanStartupPowerConfig(HXStatus status) = 0;

    /// @brief Sets the supply voltage that the unit needs to start.
    ///
    /// Stored by the supervisor at once, and kept over restarts and power cycles.
    ///
    /// @param[in] volts  9.0 to 28.0 volts, cut down to a step of 9.7 mV. A NaN passes the range check and is stored as
    ///                   0.
    /// @retval ERR_SUCCESS        The supervisor has the setting.
    /// @retval ERR_OPEN_FAILED    "/dev/conf-id" could not be opened when the object was created.
    /// @retval ERR_INVALID_DATA   @p volts is below 9.0 or above 28.0. Nothing was sent.
    /// @retval ERR_IOCTRL_FAILED  The driver refused the request.
    /// @retval ERR_BUFFER_SIZE    The driver did not accept two bytes.
    /// @threadsafe Always.
    virtual eErr setStartupVoltageConfig(double volts) = 0;

    /// @brief Sets the temperature below which the unit is heated before it starts.
    ///
    /// Stored by the supervisor at once, and kept over restarts and power cycles.
    ///
    /// @param[in] celsius  -25 to 5 degrees Celsius.
    /// @retval ERR_SUCCESS                    The supervisor has the setting.
    /// @retval ERR_OPEN_FAILED                "/dev/conf-id" could not be opened when the object was created.
    /// @retval ERR_NEWER_SS_VERSION_REQUIRED  The supervisor is older than 0.9.0.0; the device was not accessed.
    /// @retval ERR_INVALID_DATA               @p celsius is outside -25 to 5. Nothing was sent.
    /// @retval ERR_IOCTRL_FAILED              The driver refused the request.
    /// @retval ERR_BUFFER_SIZE                The driver did not accept two bytes.
    /// @threadsafe Always.
    virtual eErr setHeatingTempLimit(short celsius) = 0;

    /// @brief Sets whether the unit starts as soon as it gets power.
    ///
    /// Stored by the supervisor at once, and kept over restarts and power cycles.
    ///
    /// @param[in] status  Passed on unchecked; the low byte reaches the supervisor, sign-extended to 16 bits.
    /// @retval ERR_SUCCESS                    The supervisor has the setting.
    /// @retval ERR_OPEN_FAILED                "/dev/conf-id" could not be opened when the object was created.
    /// @retval ERR_NEWER_SS_VERSION_REQUIRED  The supervisor is older than 1.0.3.0; the device was not accessed.
    /// @retval ERR_IOCTRL_FAILED              The driver refused the request.
    /// @retval ERR_BUFFER_SIZE                The driver did not accept two bytes.
    /// @threadsafe Always.
    virtual eErr setPowerOnStartup(HXStatus status) = 0;

    /// @brief Releases the caller's reference to the shared object.
    ///
    /// The last release closes the device and deletes the object. The pointer is invalid afterwards.
    /// @retval ERR_SUCCESS  Always.
    /// @threadsafe From one thread: @ref GetConfig and this operation do not lock the count of users.
    virtual eErr Release() = 0;

protected:
    ~Config() {}
};

} // namespace Halvix

/// @brief Returns the process's shared configuration object; the first call creates it.
///
/// Each call needs its own `Release()`. Succeeds even if the device cannot be opened; the operations then answer
/// ERR_OPEN_FAILED.
///
/// @return The shared object, never null.
/// @throws std::bad_alloc  Out of memory.
/// @threadsafe From one thread: the object and the count of its users are not locked.
HX_EXPORT Halvix::Config* GetConfig();

#endif
