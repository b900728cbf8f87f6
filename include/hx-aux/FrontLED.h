// SPDX-License-Identifier: LicenseRef-HXAux
/// @file FrontLED.h
/// @brief The status LED on the front panel.
#ifndef HX_AUX_FRONTLED_H
#define HX_AUX_FRONTLED_H

#include "hx-aux/errors.h"

namespace Halvix {

/// @brief The standard colors: rows of @ref stdColor, shown here as they are at first.
enum HXAuxColor HX_32BIT {
    ColorRed = 0,     ///< 15, 0, 0
    ColorGreen = 1,   ///< 0, 15, 0
    ColorBlue = 2,    ///< 0, 0, 15
    ColorCyan = 3,    ///< 0, 15, 15
    ColorMagenta = 4, ///< 12, 0, 4
    ColorOrange = 5,  ///< 15, 5, 0
    ColorOther = 6,   ///< What @ref FrontLED::getColor(HXAuxColor*) answers for a color that is not in the table.
    HX_32BIT_RANGE(HXAuxColor)
};

/// @brief Color and blink pattern of the status LED on the front panel.
///
/// The pattern is a number of pulses, each an on time followed by an off time, then the idle time, repeated. The LED
/// keeps the last pattern written; the library stores nothing. All callers in a process share one object, which opens
/// "/dev/frontled" when it is created and does not retry. Pointers must not be null (not checked).
class FrontLED {
public:
    /// @brief Reads the blink pattern as frequency and duty cycle.
    ///
    /// Calculated from the on time and the off time. When both are 0 the frequency is infinite and the duty cycle 0.
    ///
    /// @param[out] frequency  Hertz. Must not be null (not checked). Untouched on failure.
    /// @param[out] dutyCycle  Per cent, truncated. Must not be null (not checked). Untouched on failure.
    /// @retval ERR_SUCCESS        Both outputs hold their values.
    /// @retval ERR_OPEN_FAILED    "/dev/frontled" could not be opened when the object was created.
    /// @retval ERR_IOCTRL_FAILED  The driver refused the request.
    /// @retval ERR_BUFFER_SIZE    The answer to the read is not four bytes long.
    /// @threadsafe Always.
    virtual eErr getSignal(double* frequency, unsigned char* dutyCycle) = 0;

    /// @brief Reads how long the LED is on in each pulse.
    ///
    /// @param[out] onTime  Units of 10 ms. Must not be null (not checked). Untouched on failure.
    /// @retval ERR_SUCCESS        @p onTime holds the value.
    /// @retval ERR_OPEN_FAILED    "/dev/frontled" could not be opened when the object was created.
    /// @retval ERR_IOCTRL_FAILED  The driver refused the request.
    /// @retval ERR_BUFFER_SIZE    The answer to the read is not four bytes long.
    /// @threadsafe Always.
    virtual eErr getOnTime(unsigned char* onTime) = 0;

    /// @brief Reads how long the LED is off after each pulse.
    ///
    /// @param[out] offTime  Units of 10 ms. Must not be null (not checked). Untouched on failure.
    /// @retval ERR_SUCCESS        @p offTime holds the value.
    /// @retval ERR_OPEN_FAILED    "/dev/frontled" could not be opened when the object was created.
    /// @retval ERR_IOCTRL_FAILED  The driver refused the request.
    /// @retval ERR_BUFFER_SIZE    The answer to the read is not four bytes long.
    /// @threadsafe Always.
    virtual eErr getOffTime(unsigned char* offTime) = 0;

    /// @brief Reads how long the LED is idle after the pulses.
    ///
    /// @param[out] idleTime  Units of 10 ms. Must not be null (not checked). Untouched on failure.
    /// @retval ERR_SUCCESS        @p idleTime holds the value.
    /// @retval ERR_OPEN_FAILED    "/dev/frontled" could not be opened when the object was created.
    /// @retval ERR_IOCTRL_FAILED  The driver refused the request.
    /// @retval ERR_BUFFER_SIZE    The answer to the read is not four bytes long.
    /// @threadsafe Always.
    virtual eErr getIdleTime(unsigned char* idleTime) = 0;

    /// @brief Reads how many pulses come before the idle time.
    ///
    /// @param[out] pulses  Count of pulses. Must not be null (not checked). Untouched on failure.
    /// @retval ERR_SUCCESS        @p pulses holds the value.
    /// @retval ERR_OPEN_FAILED    "/dev/frontled" could not be opened when the object was created.
    /// @retval ERR_IOCTRL_FAILED  The driver refused the request.
    /// @retval ERR_BUFFER_SIZE    The answer to the read is not four bytes long.
    /// @threadsafe Always.
    virtual eErr getNrOfPulses(unsigned char* pulses) = 0;

    /// @brief Reads the color.
    ///
    /// @param[out] red  0 to 15. Must not be null (not checked). Untouched on failure.
    /// @param[out] green  0 to 15. Must not be null (not checked). Untouched on failure.
    /// @param[out] blue  0 to 15. Must not be null (not checked). Untouched on failure.
    /// @retval ERR_SUCCESS        The outputs hold the color.
    /// @retval ERR_OPEN_FAILED    "/dev/frontled" could not be opened when the object was created.
    /// @retval ERR_IOCTRL_FAILED  The driver refused the request.
    /// @retval ERR_BUFFER_SIZE    The answer is not three bytes long.
    /// @threadsafe Always.
    virtual eErr getColor(unsigned char* red, unsigned char* green, unsigned char* blue) = 0;

    /// @brief Reads the color as one of the standard colors.
    ///
    /// The current table @ref stdColor is searched from its first row; the first match counts.
    ///
    /// @param[out] color  One of the six, or ColorOther for a color that is not in the table. Must not be null (not
    ///                    checked). Untouched on failure.
    /// @retval ERR_SUCCESS        @p color holds the color.
    /// @retval ERR_OPEN_FAILED    "/dev/frontled" could not be opened when the object was created.
    /// @retval ERR_IOCTRL_FAILED  The driver refused the request.
    /// @retval ERR_BUFFER_SIZE    The answer is not three bytes long.
    /// @threadsafe Always.
    virtual eErr getColor(HXAuxColor* color) = 0;

    /// @brief Reads whether the LED shows its pattern while the unit starts.
    ///
    /// @param[out] status  Enabled or disabled. Must not be null (not checked). Untouched on failure.
    /// @retval ERR_SUCCESS        @p status holds the setting.
    /// @retval ERR_OPEN_FAILED    "/dev/frontled" could not be opened when the object was created.
    /// @retval ERR_IOCTRL_FAILED  The driver refused the request.
    /// @retval ERR_BUFFER_SIZE    The answer is not one byte long.
    /// @threadsafe Always.
    virtual eErr getEnabledDuringStartup(HXStatus* status) = 0;

    /// @brief Sets the blink pattern by frequency and duty cycle.
    ///
    /// Takes effect at once, the on time first and then the off time; the idle time and the number of pulses stay. The
    /// times are cut down to units of 10 ms and then to their low eight bits, so a pattern longer than 2.55 s becomes
    /// shorter: 0.25 Hz at 75 % gives 440 ms on and 1 s off.
    ///
    /// A NaN passes the range check and switches the LED off: both times become 0.
    ///
    /// @param[in] frequency  0.2 to 50 hertz.
    /// @param[in] dutyCycle  0 to 100 per cent.
    /// @retval ERR_SUCCESS            The front panel has the new pattern.
    /// @retval ERR_INVALID_PARAMETER  @p frequency or @p dutyCycle is out of range; nothing was sent.
    /// @retval ERR_OPEN_FAILED        "/dev/frontled" could not be opened when the object was created.
    /// @retval ERR_IOCTRL_FAILED      The driver refused the request.
    /// @retval ERR_BUFFER_SIZE        The answer to the read is not four bytes long.
    /// @threadsafe Always; but if two programs change it at the same time, one may undo the other's change.
    virtual eErr setSignal(double frequency, unsigned char dutyCycle) = 0;

    /// @brief Sets how long the LED is on in each pulse.
    ///
    /// Takes effect at once. The other three parts of the pattern are read first and written back.
    ///
    /// @param[in] onTime  Units of 10 ms; every value is passed on.
    /// @retval ERR_SUCCESS        The front panel has the new pattern.
    /// @retval ERR_OPEN_FAILED    "/dev/frontled" could not be opened when the object was created.
    /// @retval ERR_IOCTRL_FAILED  The driver refused the request.
    /// @retval ERR_BUFFER_SIZE    The answer to the read is not four bytes long.
    /// @threadsafe Always; but if two programs change it at the same time, one may undo the other's change.
    virtual eErr setOnTime(unsigned char onTime) = 0;

    /// @brief Sets how long the LED is off after each pulse.
    ///
    /// Takes effect at once. The other three parts of the pattern are read first and written back.
    ///
    /// @param[in] offTime  Units of 10 ms; every value is passed on.
    /// @retval ERR_SUCCESS        The front panel has the new pattern.
    /// @retval ERR_OPEN_FAILED    "/dev/frontled" could not be opened when the object was created.
    /// @retval ERR_IOCTRL_FAILED  The driver refused the request.
    /// @retval ERR_BUFFER_SIZE    The answer to the read is not four bytes long.
    /// @threadsafe Always; but if two programs change it at the same time, one may undo the other's change.
    virtual eErr setOffTime(unsigned char offTime) = 0;

    /// @brief Sets how long the LED is idle after the pulses.
    ///
    /// Takes effect at once. The other three parts of the pattern are read first and written back.
    ///
    /// @param[in] idleTime  Units of 10 ms; every value is passed on.
    /// @retval ERR_SUCCESS        The front panel has the new pattern.
    /// @retval ERR_OPEN_FAILED    "/dev/frontled" could not be opened when the object was created.
    /// @retval ERR_IOCTRL_FAILED  The driver refused the request.
    /// @retval ERR_BUFFER_SIZE    The answer to the read is not four bytes long.
    /// @threadsafe Always; but if two programs change it at the same time, one may undo the other's change.
    virtual eErr setIdleTime(unsigned char idleTime) = 0;

    /// @brief Sets how many pulses come before the idle time.
    ///
    /// Takes effect at once. The other three parts of the pattern are read first and written back.
    ///
    /// @param[in] pulses  Count of pulses; every value is passed on.
    /// @retval ERR_SUCCESS        The front panel has the new pattern.
    /// @retval ERR_OPEN_FAILED    "/dev/frontled" could not be opened when the object was created.
    /// @retval ERR_IOCTRL_FAILED  The driver refused the request.
    /// @retval ERR_BUFFER_SIZE    The answer to the read is not four bytes long.
    /// @threadsafe Always; but if two programs change it at the same time, one may undo the other's change.
    virtual eErr setNrOfPulses(unsigned char pulses) = 0;

    /// @brief Sets the color.
    ///
    /// Takes effect at once. The range is checked before the device.
    ///
    /// @param[in] red  0 to 15.
    /// @param[in] green  0 to 15.
    /// @param[in] blue  0 to 15.
    /// @retval ERR_SUCCESS            The front panel has the color.
    /// @retval ERR_INVALID_PARAMETER  A component is above 15; nothing was sent.
    /// @retval ERR_OPEN_FAILED        "/dev/frontled" could not be opened when the object was created.
    /// @retval ERR_IOCTRL_FAILED      The driver refused the request.
    /// @threadsafe Always.
    virtual eErr setColor(unsigned char red, unsigned char green, unsigned char blue) = 0;

    /// @brief Sets one of the standard colors.
    ///
    /// Takes effect at once. Uses the color's current row of @ref stdColor.
    ///
    /// @param[in] color  0 to 5.
    /// @retval ERR_SUCCESS            The front panel has the color.
    /// @retval ERR_INVALID_PARAMETER  @p color is not 0 to 5, or a component of its row is above 15; nothing was sent.
    /// @retval ERR_OPEN_FAILED        "/dev/frontled" could not be opened when the object was created.
    /// @retval ERR_IOCTRL_FAILED      The driver refused the request.
    /// @threadsafe Always.
    virtual eErr setColor(HXAuxColor color) = 0;

    /// @brief Switches the LED off by setting its on time to 0; the rest of the pattern and the color stay.
    ///
    /// Takes effect at once.
    ///
    /// @retval ERR_SUCCESS        The LED is off.
    /// @retval ERR_OPEN_FAILED    "/dev/frontled" could not be opened when the object was created.
    /// @retval ERR_IOCTRL_FAILED  The driver refused the request.
    /// @retval ERR_BUFFER_SIZE    The answer to the read is not four bytes long.
    /// @threadsafe Always; but if two programs change it at the same time, one may undo the other's change.
    virtual eErr setOff() = 0;

    /// @brief Sets whether the LED shows its pattern while the unit starts.
    ///
    /// Kept by the front panel for the next start.
    ///
    /// @param[in] status  Enabled allows it; every other value disallows it.
    /// @retval ERR_SUCCESS        The front panel has the setting.
    /// @retval ERR_OPEN_FAILED    "/dev/frontled" could not be opened when the object was created.
    /// @retval ERR_IOCTRL_FAILED  The driver refused the request.
    /// @threadsafe Always.
    virtual eErr setEnabledDuringStartup(HXStatus status) = 0;

    /// @brief Releases the caller's reference to the shared object.
    ///
    /// The last release closes the device and deletes the object. The LED keeps what it shows. The pointer is invalid
    /// afterwards.
    /// @retval ERR_SUCCESS  Always.
    /// @threadsafe From one thread: @ref GetFrontLED and this operation do not lock the count of users.
    virtual eErr Release() = 0;

protected:
    ~FrontLED() {}
};

} // namespace Halvix

/// @brief The standard colors, six rows of red, green and blue, each 0 to 15, in the order of @ref Halvix::HXAuxColor.
///
/// A program may change it; the LED's operations read it at each call.
/// @threadsafe Not locked: change it while no other thread uses the LED's colors.
HX_EXPORT unsigned char stdColor[18];

/// @brief Returns the process's shared LED object; the first call creates it.
///
/// Each call needs its own `Release()`. Succeeds even if the device cannot be opened; the operations then answer
/// ERR_OPEN_FAILED.
///
/// @return The shared object, never null.
/// @throws std::bad_alloc  Out of memory.
/// @threadsafe From one thread: the object and the count of its users are not locked.
HX_EXPORT Halvix::FrontLED* GetFrontLED();

#endif
