// SPDX-License-Identifier: LicenseRef-HXAux
/// @file TouchScreen.h
/// @brief Settings of the touch screen.
#ifndef HX_AUX_TOUCHSCREEN_H
#define HX_AUX_TOUCHSCREEN_H

#include "hx-aux/errors.h"

namespace Halvix {

/// @brief How the touch screen reports touches. The front microcontroller defines the modes.
enum TouchScreenModeSettings HX_32BIT {
    TouchScreenMode0 = 0, ///< The front microcontroller's mode 0.
    TouchScreenMode1 = 1, ///< The front microcontroller's mode 1.
    TouchScreenMode2 = 2, ///< The front microcontroller's mode 2.
    TouchScreenMode3 = 3, ///< The front microcontroller's mode 3.
    HX_32BIT_RANGE(TouchScreenModeSettings)
};

/// @brief Number of an advanced setting, with its register of the touch controller and its range.
///
/// Settings 6 and 7 are registers 11 and 10, in this order.
enum TSAdvancedSettingsParameter HX_32BIT {
    TSAdvancedSetting0 = 0,   ///< Register 4: 0 to 65535.
    TSAdvancedSetting1 = 1,   ///< Register 5: 0 to 4095.
    TSAdvancedSetting2 = 2,   ///< Register 6: 0 to 4095.
    TSAdvancedSetting3 = 3,   ///< Register 7, which holds four times the value: 0 to 16383.
    TSAdvancedSetting4 = 4,   ///< Register 8, which holds four times the value: 0 to 16383.
    TSAdvancedSetting5 = 5,   ///< Register 9, which holds four times the value: 0 to 16383.
    TSAdvancedSetting6 = 6,   ///< Register 11, which holds four times the value: 0 to 16383.
    TSAdvancedSetting7 = 7,   ///< Register 10: 0 to 32767.
    TSAdvancedSetting8 = 8,   ///< Register 12, a switch: 0 is off, every other value is stored as 1.
    TSAdvancedSetting9 = 9,   ///< Register 13: 0 to 32767.
    TSAdvancedSetting10 = 10, ///< Register 14: 0 to 65535.
    TSAdvancedSetting11 = 11, ///< Register 19: 0 to 65535.
    HX_32BIT_RANGE(TSAdvancedSettingsParameter)
};

/// @brief Sets how the touch screen reports touches, and the settings of its controller.
///
/// The controller is part of the front microcontroller. An object comes from @ref GetTouchScreen and goes back with
/// @ref Release. "/dev/front-mcu-id" is opened when the object is created; a failed open is not retried. Pointers must
/// not be null (not checked).
class TouchScreen {
public:
    /// @brief Reads the touch mode.
    ///
    /// @param[out] mode  0 to 3.
    /// @retval ERR_SUCCESS                       @p mode holds the mode.
    /// @retval ERR_OPEN_FAILED                   "/dev/front-mcu-id" could not be opened when the object was created.
    /// @retval ERR_NEWER_FRONT_VERSION_REQUIRED  The front microcontroller is older than 0.5.0.0.
    /// @retval ERR_IOCTRL_FAILED                 The driver refused the request.
    /// @retval ERR_BUFFER_SIZE                   The answer is not one byte long.
    /// @retval ERR_INVALID_DATA                  The controller reports a mode above 3.
    /// @note On failure @p mode is unchanged.
    /// @threadsafe Always.
    virtual eErr getMode(TouchScreenModeSettings* mode) = 0;

    /// @brief Reads the time after which a held touch becomes a right click.
    ///
    /// @param[out] time  The time in the controller's own unit.
    /// @retval ERR_SUCCESS                       @p time holds the time.
    /// @retval ERR_OPEN_FAILED                   "/dev/front-mcu-id" could not be opened when the object was created.
    /// @retval ERR_NEWER_FRONT_VERSION_REQUIRED  The front microcontroller is older than 0.5.0.0.
    /// @retval ERR_IOCTRL_FAILED                 The driver refused the request.
    /// @retval ERR_BUFFER_SIZE                   The answer is not two bytes long.
    /// @note On failure @p time is unchanged.
    /// @threadsafe Always.
    virtual eErr getMouseRightClickTime(unsigned short* time) = 0;

    /// @brief Sets the touch mode.
    ///
    /// @param[in] mode  0 to 3. Of any other value only the two lowest bits are used: 6 sets mode 2.
    /// @retval ERR_SUCCESS                       The controller has the mode.
    /// @retval ERR_OPEN_FAILED                   "/dev/front-mcu-id" could not be opened when the object was created.
    /// @retval ERR_NEWER_FRONT_VERSION_REQUIRED  The front microcontroller is older than 0.5.0.0.
    /// @retval ERR_IOCTRL_FAILED                 The driver refused the request.
    /// @retval ERR_BUFFER_SIZE                   The driver did not accept exactly one byte.
    /// @threadsafe Always.
    virtual eErr setMode(TouchScreenModeSettings mode) = 0;

    /// @brief Sets the time after which a held touch becomes a right click.
    ///
    /// @param[in] time  The time in the controller's own unit, 0 to 65535.
    /// @retval ERR_SUCCESS                       The controller has the time.
    /// @retval ERR_OPEN_FAILED                   "/dev/front-mcu-id" could not be opened when the object was created.
    /// @retval ERR_NEWER_FRONT_VERSION_REQUIRED  The front microcontroller is older than 0.5.0.0.
    /// @retval ERR_IOCTRL_FAILED                 The driver refused the request.
    /// @retval ERR_BUFFER_SIZE                   The driver did not accept exactly two bytes.
    /// @threadsafe Always.
    virtual eErr setMouseRightClickTime(unsigned short time) = 0;

    /// @brief Sets one of the controller's advanced settings.
    ///
    /// The firmware version is checked first, whether the device is open or not.
    ///
    /// @param[in] parameter  0 to 11.
    /// @param[in] value      The range depends on the parameter, see @ref TSAdvancedSettingsParameter.
    /// @retval ERR_SUCCESS                       The controller has the value.
    /// @retval ERR_NEWER_FRONT_VERSION_REQUIRED  The front microcontroller is older than 1.0.0.0; for parameter 0,
    ///                                           older than 0.5.0.0.
    /// @retval ERR_INVALID_DATA                  @p parameter or @p value is outside its range; nothing was sent.
    /// @retval ERR_OPEN_FAILED                   "/dev/front-mcu-id" could not be opened when the object was created.
    /// @retval ERR_IOCTRL_FAILED                 The driver refused the request.
    /// @threadsafe Always.
    virtual eErr setAdvancedSetting(TSAdvancedSettingsParameter parameter, unsigned short value) = 0;

    /// @brief Reads one of the controller's advanced settings.
    ///
    /// The value is not checked against the parameter's range. The firmware version is checked first.
    ///
    /// @param[in]  parameter  0 to 11.
    /// @param[out] value      In the same units as for setting; a quarter of the register for parameters 3 to 6.
    /// @retval ERR_SUCCESS                       @p value holds the setting.
    /// @retval ERR_NEWER_FRONT_VERSION_REQUIRED  The front microcontroller is older than 1.0.0.0; for parameter 0,
    ///                                           older than 0.5.0.0.
    /// @retval ERR_INVALID_DATA                  @p parameter is outside its range; nothing was sent.
    /// @retval ERR_OPEN_FAILED                   "/dev/front-mcu-id" could not be opened when the object was created.
    /// @retval ERR_IOCTRL_FAILED                 The driver refused the request.
    /// @retval ERR_BUFFER_SIZE                   The answer is not four bytes long.
    /// @note On failure @p value is unchanged.
    /// @threadsafe Always.
    virtual eErr getAdvancedSetting(TSAdvancedSettingsParameter parameter, unsigned short* value) = 0;

    /// @brief Closes the device and deletes the object. The pointer is invalid afterwards.
    /// @retval ERR_SUCCESS  Always.
    /// @threadsafe Between objects.
    virtual eErr Release() = 0;

protected:
    ~TouchScreen() {}
};

} // namespace Halvix

/// @brief Creates an object that configures the touch screen.
///
/// Succeeds even if the device cannot be opened; the operations then answer ERR_OPEN_FAILED.
///
/// @return A new object. Throws `std::bad_alloc` when out of memory. Free it with `Release()`.
/// @threadsafe Always.
HX_EXPORT Halvix::TouchScreen* GetTouchScreen();

#endif
