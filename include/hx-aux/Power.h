// SPDX-License-Identifier: LicenseRef-HXAux
/// @file Power.h
/// @brief Power of the loads at run time.
#ifndef HX_AUX_POWER_H
#define HX_AUX_POWER_H

#include "hx-aux/errors.h"

namespace Halvix {

/// @brief State of a power transition requested with the front button or the external signal.
///
/// The supervisor's firmware defines the values; the value is 0 after an acknowledgement.
enum ButtonPowerTransitionStatus HX_32BIT {
    ButtonPowerTransition0 = 0, ///< No request.
    ButtonPowerTransition1 = 1, ///< State 1 of the supervisor.
    ButtonPowerTransition2 = 2, ///< State 2 of the supervisor.
    ButtonPowerTransition3 = 3, ///< State 3 of the supervisor.
    ButtonPowerTransition4 = 4, ///< State 4 of the supervisor.
    ButtonPowerTransition5 = 5, ///< State 5 of the supervisor.
    ButtonPowerTransition6 = 6, ///< State 6 of the supervisor.
    HX_32BIT_RANGE(ButtonPowerTransitionStatus)
};

/// @brief Switches loads on and off at run time and follows the front button's power requests.
///
/// Get an object from @ref GetPower and free it with @ref Release. Each operation opens "/dev/power-id" if that has not
/// succeeded yet, so an object created before the driver is loaded works as soon as it is. What is powered at start-up
/// is set with @ref Config. Pointers must not be null (not checked).
class Power {
public:
    /// @brief Reads whether the backlight has power.
    ///
    /// @param[out] status  Current state, enabled or disabled. Must not be null (not checked). Untouched on failure.
    /// @retval ERR_SUCCESS        @p status holds the state.
    /// @retval ERR_OPEN_FAILED    "/dev/power-id" cannot be opened; the next operation retries.
    /// @retval ERR_IOCTRL_FAILED  The driver refused the request.
    /// @retval ERR_BUFFER_SIZE    The answer is not one byte long.
    /// @threadsafe Always.
    virtual eErr getBLPowerStatus(HXStatus* status) = 0;

    /// @brief Reads whether the CAN interfaces have power.
    ///
    /// @param[out] status  Current state, enabled or disabled. Must not be null (not checked). Untouched on failure.
    /// @retval ERR_SUCCESS        @p status holds the state.
    /// @retval ERR_OPEN_FAILED    "/dev/power-id" cannot be opened; the next operation retries.
    /// @retval ERR_IOCTRL_FAILED  The driver refused the request.
    /// @retval ERR_BUFFER_SIZE    The answer is not one byte long.
    /// @threadsafe Always.
    virtual eErr getCanPowerStatus(HXStatus* status) = 0;

    /// @brief Reads which video channels have power.
    ///
    /// @param[out] channels  One bit per channel, bit 0 for the first of four. Must not be null (not checked).
    ///                       Untouched on failure.
    /// @retval ERR_SUCCESS        @p channels holds the state.
    /// @retval ERR_OPEN_FAILED    "/dev/power-id" cannot be opened; the next operation retries.
    /// @retval ERR_IOCTRL_FAILED  The driver refused the request.
    /// @retval ERR_BUFFER_SIZE    The answer is not one byte long.
    /// @threadsafe Always.
    virtual eErr getVideoPowerStatus(unsigned char* channels) = 0;

    /// @brief Reads whether the external fan has power.
    ///
    /// @param[out] status  Current state, enabled or disabled. Must not be null (not checked). Untouched on failure.
    /// @retval ERR_SUCCESS        @p status holds the state.
    /// @retval ERR_OPEN_FAILED    "/dev/power-id" cannot be opened; the next operation retries.
    /// @retval ERR_IOCTRL_FAILED  The driver refused the request.
    /// @retval ERR_BUFFER_SIZE    The answer is not one byte long.
    /// @threadsafe Always.
    virtual eErr getExtFanPowerStatus(HXStatus* status) = 0;

    /// @brief Switches the power of the backlight.
    ///
    /// Takes effect at once; not kept over a restart.
    ///
    /// @param[in] status  Enabled switches on; every other value switches off, also one above 1.
    /// @retval ERR_SUCCESS        The supervisor has the request.
    /// @retval ERR_OPEN_FAILED    "/dev/power-id" cannot be opened; the next operation retries.
    /// @retval ERR_IOCTRL_FAILED  The driver refused the request.
    /// @retval ERR_BUFFER_SIZE    The driver did not accept one byte.
    /// @threadsafe Always.
    virtual eErr setBLPowerStatus(HXStatus status) = 0;

    /// @brief Switches the power of the CAN interfaces.
    ///
    /// Takes effect at once; not kept over a restart.
    ///
    /// @param[in] status  Enabled switches on; every other value switches off, also one above 1.
    /// @retval ERR_SUCCESS        The supervisor has the request.
    /// @retval ERR_OPEN_FAILED    "/dev/power-id" cannot be opened; the next operation retries.
    /// @retval ERR_IOCTRL_FAILED  The driver refused the request.
    /// @retval ERR_BUFFER_SIZE    The driver did not accept one byte.
    /// @threadsafe Always.
    virtual eErr setCanPowerStatus(HXStatus status) = 0;

    /// @brief Switches the power of the four video channels.
    ///
    /// Takes effect at once; not kept over a restart.
    ///
    /// @param[in] channels  One bit per channel, 0 to 15; a bit that is not set switches its channel off.
    /// @retval ERR_SUCCESS        The supervisor has the request.
    /// @retval ERR_OPEN_FAILED    "/dev/power-id" cannot be opened; the next operation retries.
    /// @retval ERR_INVALID_DATA   @p channels is above 15; nothing was sent.
    /// @retval ERR_IOCTRL_FAILED  The driver refused the request.
    /// @retval ERR_BUFFER_SIZE    The driver did not accept one byte.
    /// @threadsafe Always.
    virtual eErr setVideoPowerStatus(unsigned char channels) = 0;

    /// @brief Switches the power of the external fan.
    ///
    /// Takes effect at once; not kept over a restart.
    ///
    /// @param[in] status  Enabled switches on; every other value switches off, also one above 1.
    /// @retval ERR_SUCCESS        The supervisor has the request.
    /// @retval ERR_OPEN_FAILED    "/dev/power-id" cannot be opened; the next operation retries.
    /// @retval ERR_IOCTRL_FAILED  The driver refused the request.
    /// @retval ERR_BUFFER_SIZE    The driver did not accept one byte.
    /// @threadsafe Always.
    virtual eErr setExtFanPowerStatus(HXStatus status) = 0;

    /// @brief Reads which power transition the front button or the external signal has requested.
    ///
    /// Applications poll it, finish their work and then acknowledge with @ref ackPowerRequest.
    ///
    /// @param[out] status  0 to 6, as the supervisor reports it. Must not be null (not checked). Untouched on failure.
    /// @retval ERR_SUCCESS                    @p status holds the state.
    /// @retval ERR_OPEN_FAILED                "/dev/power-id" cannot be opened; the next operation retries.
    /// @retval ERR_NEWER_SS_VERSION_REQUIRED  The supervisor is older than 0.9.0.0; its state was not read.
    /// @retval ERR_IOCTRL_FAILED              The driver refused the request.
    /// @retval ERR_BUFFER_SIZE                The answer is not one byte long.
    /// @retval ERR_INVALID_DATA               The supervisor answers a value above 6.
    /// @threadsafe Always.
    virtual eErr getButtonPowerTransitionStatus(ButtonPowerTransitionStatus* status) = 0;

    /// @brief Acknowledges the requested power transition.
    ///
    /// The supervisor resets its transition state to 0. The number of bytes that the driver accepted is not checked.
    ///
    /// @retval ERR_SUCCESS        The supervisor has the acknowledgement.
    /// @retval ERR_OPEN_FAILED    "/dev/power-id" cannot be opened; the next operation retries.
    /// @retval ERR_IOCTRL_FAILED  The driver refused the request.
    /// @threadsafe Always.
    virtual eErr ackPowerRequest() = 0;

    /// @brief Closes the device and deletes the object. The pointer is invalid afterwards.
    /// @retval ERR_SUCCESS  Always.
    /// @threadsafe Between objects.
    virtual eErr Release() = 0;

protected:
    ~Power() {}
};

} // namespace Halvix

/// @brief Creates an object that switches the power of the loads. The device is opened by the first operation.
/// @return A new object, never null. Free it with `Release()`.
/// @throws std::bad_alloc  Out of memory.
/// @threadsafe Always.
HX_EXPORT Halvix::Power* GetPower();

#endif
