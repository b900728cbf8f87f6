// SPDX-License-Identifier: LicenseRef-HXAux
/// @file TouchScreenCalib.h
/// @brief Calibration of the touch screen.
#ifndef HX_AUX_TOUCHSCREENCALIB_H
#define HX_AUX_TOUCHSCREENCALIB_H

#include "hx-aux/errors.h"

namespace Halvix {

/// @brief Which calibration the touch controller runs; they differ in the number of points.
enum CalibrationModeSettings HX_32BIT {
    CalibrationModeNone = 0,             ///< No calibration is running. Read only; it cannot be set.
    CalibrationMode5Points = 1,          ///< Points up to 5; the controller's mode 1.
    CalibrationMode5PointsExtended = 2,  ///< Points up to 5; the controller's mode 6.
    CalibrationMode9PointsExtended = 3,  ///< Points up to 9; the controller's mode 10.
    CalibrationMode13PointsExtended = 4, ///< Points up to 13; the controller's mode 14.
    HX_32BIT_RANGE(CalibrationModeSettings)
};

/// @brief Number of a calibration parameter, with its register of the touch controller.
///
/// Parameters 2 and 3 are registers 16 and 15, in this order. The range of all is 0 to 65535.
enum CalibrationConfigParam HX_32BIT {
    CalibrationParam0 = 0, ///< Register 13.
    CalibrationParam1 = 1, ///< Register 14.
    CalibrationParam2 = 2, ///< Register 16.
    CalibrationParam3 = 3, ///< Register 15.
    CalibrationParam4 = 4, ///< Register 17.
    CalibrationParam5 = 5, ///< Register 18.
    HX_32BIT_RANGE(CalibrationConfigParam)
};

/// @brief Runs a calibration of the touch screen.
///
/// `SetMode` starts it. Then, for each point: `SetCalibrationPoint` announces it, the program shows the target for the
/// user to touch and polls `CheckCalibrationPointFinished` until the controller has accepted the point. After the last
/// point the controller calculates and stores the calibration and `GetMode` answers @ref CalibrationModeNone.
///
/// Get an object from @ref GetTouchScreenCalib and free it with @ref Release. "/dev/front-mcu-id" is opened when the
/// object is created; a failed open is not retried. Pointers must not be null (not checked). Only one program may
/// calibrate at a time; the library does not enforce it.
class TouchScreenCalib {
public:
    /// @brief Starts a calibration.
    ///
    /// @param[in] mode  1 to 4.
    /// @retval ERR_SUCCESS        The controller has the mode.
    /// @retval ERR_INVALID_DATA   @p mode is not 1 to 4; nothing was sent.
    /// @retval ERR_OPEN_FAILED    "/dev/front-mcu-id" could not be opened when the object was created.
    /// @retval ERR_IOCTRL_FAILED  The driver refused the request.
    /// @threadsafe Between objects. Calls on one object must not overlap.
    virtual eErr SetMode(CalibrationModeSettings mode) = 0;

    /// @brief Reads which calibration is running.
    ///
    /// @param[out] mode  1 to 4, or @ref CalibrationModeNone for every other state of the controller.
    /// @retval ERR_SUCCESS        @p mode holds the mode.
    /// @retval ERR_OPEN_FAILED    "/dev/front-mcu-id" could not be opened when the object was created.
    /// @retval ERR_IOCTRL_FAILED  The driver refused the request.
    /// @retval ERR_BUFFER_SIZE    The answer is not one byte long.
    /// @note On failure @p mode is unchanged.
    /// @threadsafe Always.
    virtual eErr GetMode(CalibrationModeSettings* mode) = 0;

    /// @brief Announces the point that the user is to touch next.
    ///
    /// Calls `GetMode` first and returns its error unchanged.
    ///
    /// @param[in] point  Number of the point, up to the highest of the running mode (5, 5, 9, 13). 0 is accepted.
    /// @retval ERR_SUCCESS        The controller waits for the point.
    /// @retval ERR_OPEN_FAILED    "/dev/front-mcu-id" could not be opened when the object was created.
    /// @retval ERR_IOCTRL_FAILED  The driver refused a request.
    /// @retval ERR_BUFFER_SIZE    The mode's answer is not one byte long.
    /// @retval ERR_NOT_RUNNING    No calibration is running.
    /// @retval ERR_INVALID_DATA   @p point is above the highest of the mode; nothing was sent.
    /// @threadsafe Between objects. Calls on one object must not overlap.
    virtual eErr SetCalibrationPoint(unsigned char point) = 0;

    /// @brief Reads whether the controller has accepted a point.
    ///
    /// @param[out] finished  True when @p point is the last one that the controller accepted.
    /// @param[in]  point     Number of the point, as announced.
    /// @retval ERR_SUCCESS        @p finished holds the result.
    /// @retval ERR_OPEN_FAILED    "/dev/front-mcu-id" could not be opened when the object was created.
    /// @retval ERR_IOCTRL_FAILED  The driver refused the request.
    /// @retval ERR_BUFFER_SIZE    The answer is not four bytes long.
    /// @note On failure @p finished is unchanged.
    /// @threadsafe Always.
    virtual eErr CheckCalibrationPointFinished(bool* finished, unsigned char point) = 0;

    /// @brief Reads a calibration parameter.
    ///
    /// @param[in]  parameter  0 to 5.
    /// @param[out] value      The parameter.
    /// @retval ERR_SUCCESS        @p value holds the parameter.
    /// @retval ERR_INVALID_DATA   @p parameter is not 0 to 5; nothing was sent.
    /// @retval ERR_OPEN_FAILED    "/dev/front-mcu-id" could not be opened when the object was created.
    /// @retval ERR_IOCTRL_FAILED  The driver refused the request.
    /// @retval ERR_BUFFER_SIZE    The answer is not four bytes long.
    /// @note On failure @p value is unchanged.
    /// @threadsafe Always.
    virtual eErr GetConfigParam(CalibrationConfigParam parameter, unsigned short* value) = 0;

    /// @brief Sets a calibration parameter.
    ///
    /// @param[in] parameter  0 to 5.
    /// @param[in] value      0 to 65535.
    /// @retval ERR_SUCCESS        The controller has the value.
    /// @retval ERR_INVALID_DATA   @p parameter is not 0 to 5; nothing was sent.
    /// @retval ERR_OPEN_FAILED    "/dev/front-mcu-id" could not be opened when the object was created.
    /// @retval ERR_IOCTRL_FAILED  The driver refused the request.
    /// @threadsafe Between objects. Calls on one object must not overlap.
    virtual eErr SetConfigParam(CalibrationConfigParam parameter, unsigned short value) = 0;

    /// @brief Closes the device and deletes the object. The pointer is invalid afterwards.
    ///
    /// A running calibration continues in the controller.
    ///
    /// @retval ERR_SUCCESS  Always.
    /// @threadsafe Between objects.
    virtual eErr Release() = 0;

protected:
    ~TouchScreenCalib() {}
};

} // namespace Halvix

/// @brief Creates an object that calibrates the touch screen.
///
/// Succeeds even if the device cannot be opened; the operations then answer ERR_OPEN_FAILED.
///
/// @return A new object. Throws `std::bad_alloc` when out of memory. Free it with `Release()`.
/// @threadsafe Always.
HX_EXPORT Halvix::TouchScreenCalib* GetTouchScreenCalib();

#endif
